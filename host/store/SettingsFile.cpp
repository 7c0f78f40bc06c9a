#include "host/store/SettingsFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "host/base/HostOptions.h"
#include "platform/AtomicFile.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeStream.h"

namespace {

constexpr unsigned long long kLargestFile = 1 << 20;    // a settings file is a few hundred bytes
constexpr int kMostDamaged = 100;    // files moved aside that are kept

constexpr auto kFlags = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

// What GKeyFile takes as a group or key without a word of complaint, and a bit less.
bool IsName(std::string_view name)
{
    if (name.empty() || name.front() == ' ' || name.back() == ' ' || name.front() == '#'
        || !g_utf8_validate(name.data(), static_cast<gssize>(name.size()), nullptr)) {
        return false;
    }
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F' || c == '=' || c == '[' || c == ']') {
            return false;
        }
    }
    return true;
}

// The escapes of desktop entries (freedesktop.org, 1.5, chapter 4). The library's own reader would refuse texts
// that are not UTF-8, and a path may hold any byte.
std::string Unescape(std::string_view text)
{
    constexpr std::string_view kEscapes = "sntr\\";
    constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t escape = text[i] == '\\' && i + 1 < text.size() ? kEscapes.find(text[i + 1]) : std::string_view::npos;
        if (escape == std::string_view::npos) {
            plain += text[i];
        } else {
            plain += kMeanings[escape];
            ++i;
        }
    }
    return plain;
}

bool ReadWhole(const std::string& path, std::string& bytes)
{
    CascadeFileStream stream;
    if (!stream.Open(CascadeFile(path.c_str()))) {
        return false;
    }
    // A byte more than is taken shows that there is more.
    const unsigned long long size = std::min(stream.GetSize(), kLargestFile + 1);
    bytes.resize(static_cast<size_t>(size));
    return stream.ReadBytes(bytes.size(), bytes.data()) == bytes.size();
}

}    // namespace

std::shared_ptr<SettingsFile> SettingsFile::Get()
{
    static std::weak_ptr<SettingsFile> shared;
    std::shared_ptr<SettingsFile> file = shared.lock();
    if (!file) {
        const std::string folder = host::HostFolder(false);
        file = std::make_shared<SettingsFile>(folder.empty() ? "" : folder + "/settings.ini");
        shared = file;
    }
    return file;
}

SettingsFile::SettingsFile(std::string path)
    : m_Path(std::move(path))
    , m_pKeys(g_key_file_new())
{
    Load();
}

SettingsFile::~SettingsFile()
{
    Flush();
}

void SettingsFile::Load()
{
    std::string bytes;
    if (m_Path.empty()) {
        m_bReadOnly = true;
    } else if (ReadWhole(m_Path, bytes)) {
        if (!Parse(bytes)) {
            m_pKeys.reset(g_key_file_new());
            m_bReadOnly = !MoveAside();
        }
    } else if (access(m_Path.c_str(), F_OK) == 0 || errno != ENOENT) {
        m_bReadOnly = true;
        std::fprintf(stderr, "%s cannot be read; settings are not kept\n", m_Path.c_str());
    }
}

// A file of NUL bytes is what a power cut leaves on some file systems; the parser would take it for empty.
bool SettingsFile::Parse(const std::string& bytes)
{
    if (bytes.size() > kLargestFile || bytes.find('\0') != std::string::npos) {
        return false;
    }
    return bytes.empty() || g_key_file_load_from_data(m_pKeys.get(), bytes.data(), bytes.size(), kFlags, nullptr);
}

bool SettingsFile::MoveAside()
{
    for (int i = 1; i <= kMostDamaged; ++i) {
        const std::string aside = m_Path + ".damaged" + (i == 1 ? "" : "-" + std::to_string(i));
        if (!CascadeFSObject::Exists(aside.c_str()) && rename(m_Path.c_str(), aside.c_str()) == 0) {
            std::fprintf(stderr, "%s is damaged; it was moved to %s\n", m_Path.c_str(), aside.c_str());
            return true;
        }
    }
    std::fprintf(stderr, "%s is damaged and cannot be moved aside; settings are not kept\n", m_Path.c_str());
    return false;
}

bool SettingsFile::CanBeWritten() const
{
    const size_t slash = m_Path.rfind('/');
    return !m_bReadOnly && faccessat(AT_FDCWD, m_Path.substr(0, slash).c_str(), W_OK, AT_EACCESS) == 0;
}

bool SettingsFile::HasSection(const std::string& section) const
{
    return IsName(section) && g_key_file_has_group(m_pKeys.get(), section.c_str());
}

bool SettingsFile::AddSection(const std::string& section)
{
    if (HasSection(section)) {
        return true;
    }
    if (!IsName(section) || !CanBeWritten()) {
        return false;
    }
    // The format knows no empty group: it is made by a key that goes again.
    g_key_file_set_value(m_pKeys.get(), section.c_str(), "new", "");
    g_key_file_remove_key(m_pKeys.get(), section.c_str(), "new", nullptr);
    m_bChanged = true;
    return true;
}

bool SettingsFile::ReadText(const std::string& section, const char* key, std::string& value) const
{
    if (!HasSection(section) || key == nullptr || !IsName(key)) {
        return false;
    }
    const Text text(g_key_file_get_value(m_pKeys.get(), section.c_str(), key, nullptr));
    if (text) {
        value = Unescape(text.get());
    }
    return text != nullptr;
}

bool SettingsFile::ReadNumber(const std::string& section, const char* key, int& value) const
{
    if (!HasSection(section) || key == nullptr || !IsName(key)) {
        return false;
    }
    GError* error = nullptr;
    const int number = g_key_file_get_integer(m_pKeys.get(), section.c_str(), key, &error);
    if (error != nullptr) {
        g_error_free(error);
        return false;
    }
    value = number;
    return true;
}

bool SettingsFile::WriteText(const std::string& section, const char* key, const char* value)
{
    if (!HasSection(section) || key == nullptr || !IsName(key) || !CanBeWritten()) {
        return false;
    }
    g_key_file_set_string(m_pKeys.get(), section.c_str(), key, value == nullptr ? "" : value);
    m_bChanged = true;
    return true;
}

bool SettingsFile::Flush()
{
    if (!m_bChanged) {
        return true;
    }
    gsize length = 0;
    const Text bytes(g_key_file_to_data(m_pKeys.get(), &length, nullptr));
    AtomicFile file(m_Path.c_str());
    if (!bytes || m_bReadOnly || !file.Open() || !file.Write({bytes.get(), length}) || !file.Commit()) {
        std::fprintf(stderr, "Unable to write %s: %s\n", m_Path.c_str(), std::strerror(file.Error()));
        return false;
    }
    m_bChanged = false;
    return true;
}
