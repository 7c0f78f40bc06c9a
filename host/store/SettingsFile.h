// The file behind the settings store: "settings.ini" in the host's folder, in the GKeyFile format.
//
// Errors:    a file that is there and cannot be read makes the store read-only; one that cannot be parsed is
//            moved aside to "settings.ini.damaged" (or .damaged-2, ...) first, and what cannot be moved makes the
//            store read-only too. So no byte of an old file is ever overwritten unread. Both are said on standard error.
// Threads:   the user-interface thread.
// Ownership: shared by all CascadeSettings that are alive, so that they see one another's values; the last
//            one writes what is still unwritten.
#pragma once

#include <memory>
#include <string>

#include <glib.h>

class SettingsFile {
public:
    static std::shared_ptr<SettingsFile> Get();

    explicit SettingsFile(std::string path);    // empty: there is no folder to keep it in
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    bool HasSection(const std::string& section) const;
    bool AddSection(const std::string& section);

    // False: the key is absent, or holds no such value.
    bool ReadText(const std::string& section, const char* key, std::string& value) const;
    bool ReadNumber(const std::string& section, const char* key, int& value) const;
    bool WriteText(const std::string& section, const char* key, const char* value);

    bool Flush();    // true too when nothing was changed

private:
    void Load();
    bool Parse(const std::string& bytes);
    bool MoveAside();
    bool CanBeWritten() const;

    struct FreeKeys {
        void operator()(GKeyFile* keys) const { g_key_file_free(keys); }
    };
    std::string m_Path;
    std::unique_ptr<GKeyFile, FreeKeys> m_pKeys;
    bool m_bReadOnly = false;
    bool m_bChanged = false;
};
