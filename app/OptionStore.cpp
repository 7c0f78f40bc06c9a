#include "app/OptionStore.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/MThemeSelect.h"
#include "app/OptionChoices.h"
#include "app/TextFile.h"
#include "app/TextLines.h"
#include "platform/CascadeSettings.h"

namespace {

constexpr char kSection[] = "orvandi.nuvid.settings";
constexpr int kAbsent = -1;

constexpr char kLegacyFile[] = "Nuvid.settings";
constexpr std::string_view kLegacySignature = "#Nuvid File.";
constexpr size_t kLongestLegacyLine = 349;
constexpr size_t kLargestLegacyFile = 1 << 16;    // bytes: it has about ten lines

// The numbers, in the order in which they are written. Sizes beyond two gigabytes are stored as negative
// numbers and come back as they were.
struct NumberRow {
    const char* key;
    int (*get)(const StartOptions& options);
    void (*set)(StartOptions& options, int value);
    bool inLegacyFile;
};
constexpr NumberRow kNumbers[] = {
    {"BrowserMode", [](const StartOptions& options) { return options.browserModeDefault; },
        [](StartOptions& options, int value) { options.browserMode = options.browserModeDefault = value; }, true},
    {"IconSize", [](const StartOptions& options) { return OptionChoices::OfIconSize(options.iconSize); },
        [](StartOptions& options, int value) { options.iconSize = OptionChoices::IconSize(value); }, false},
    {"FontSize", [](const StartOptions& options) { return options.fontSize; }, [](StartOptions& options, int value) { options.fontSize = value; },
        true},
    {"ResumeTimeout", [](const StartOptions& options) { return options.resumeTimeout; },
        [](StartOptions& options, int value) { options.resumeTimeout = value; }, true},
    {"MinFileSize", [](const StartOptions& options) { return static_cast<int>(options.minFileSize); },
        [](StartOptions& options, int value) { options.minFileSize = static_cast<uint32_t>(value); }, true},
};

CascadeString RecentKey(size_t slot)
{
    return CascadeString::Format("Recent%zu", slot);
}

void ReadStore(const CascadeSettings& settings, StartOptions& options, RecentFiles& recent)
{
    for (const NumberRow& row : kNumbers) {
        const int value = settings.ReadIntegerValue(row.key, kAbsent);
        if (value != kAbsent) {
            row.set(options, value);
        }
    }
    const CascadeString theme = settings.ReadStringValue("Theme", "");
    if (!theme.IsEmpty()) {
        g_ThemeSelect.SetTheme(theme);
    }
    size_t next = 0;
    for (size_t i = 0; i < RecentFiles::kSlots; ++i) {
        const CascadeString path = settings.ReadStringValue(RecentKey(i), "");
        if (!path.IsEmpty()) {
            recent.Set(next++, path);
        }
    }
}

// What follows a key at the start of the line; false for another line.
bool Follows(std::string_view line, std::string_view key, std::string& value)
{
    if (line.substr(0, key.size()) != key || line.substr(key.size(), 1) != "=") {
        return false;
    }
    value = line.substr(key.size() + 1);
    return true;
}

}    // namespace

void OptionStore::Load(const char* appFolder, StartOptions& options, RecentFiles& recent)
{
    const CascadeSettings settings(kSection);
    if (settings.SectionExists()) {
        ReadStore(settings, options, recent);
        return;
    }
    std::string text;
    if (TextFile::Read(CascadeString(appFolder) + kLegacyFile, kLargestLegacyFile, text)) {
        ParseLegacy(text, options, recent);
    }
}

void OptionStore::ParseLegacy(std::string_view text, StartOptions& options, RecentFiles& recent)
{
    TextLines lines(text, kLongestLegacyLine);
    std::string_view line;
    if (!lines.Next(line) || line.substr(0, kLegacySignature.size()) != kLegacySignature) {
        return;
    }
    size_t next = 0;
    std::string value;
    while (lines.Next(line)) {
        const std::string_view content = TextLines::WithoutEnd(line);
        for (const NumberRow& row : kNumbers) {
            if (row.inLegacyFile && Follows(content, row.key, value)) {
                row.set(options, static_cast<int>(std::strtol(value.c_str(), nullptr, 10)));
            }
        }
        if (next < RecentFiles::kSlots && Follows(content, "Recent", value)) {
            recent.Set(next++, value);
        } else if (Follows(content, "Theme", value)) {
            g_ThemeSelect.SetTheme(value.c_str());
        }
    }
}

void OptionStore::Save(const StartOptions& options, const RecentFiles& recent)
{
    CascadeSettings settings(kSection);
    if (!settings.SectionExists()) {
        settings.CreateSection();
    }
    if (!settings.SectionExists()) {
        std::printf("Unable to open CascadeSettings section for writing\n");
        return;
    }
    for (const NumberRow& row : kNumbers) {
        settings.WriteIntegerValue(row.key, row.get(options));
    }
    settings.WriteStringValue("Theme", g_ThemeSelect.GetThemeName());
    for (size_t i = 0; i < RecentFiles::kSlots; ++i) {
        settings.WriteStringValue(RecentKey(i), recent[i]);
    }
}
