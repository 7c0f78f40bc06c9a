#include "browser/FolderConfig.h"

#include <algorithm>
#include <string>

#include "browser/TextBytes.h"

namespace {

constexpr std::string_view kPassword = "password=";
constexpr std::string_view kPattern = "pattern=";

struct Choice {
    const char* line;
    int FolderConfig::*field;
    int value;
};
constexpr Choice kChoices[] = {
    {"icons=small", &FolderConfig::iconMode, 0},
    {"icons=smallnosize", &FolderConfig::iconMode, 1},
    {"icons=large", &FolderConfig::iconMode, 2},
    {"icons=extralarge", &FolderConfig::iconMode, 3},
    {"filter=all", &FolderConfig::filter, 0},
    {"filter=sequence", &FolderConfig::filter, 1},
    {"filter=sequencesize", &FolderConfig::filter, 2},
    {"filter=size", &FolderConfig::filter, 3},
};

bool Begins(const CascadeString& line, std::string_view key)
{
    return line.Compare(key.data(), false, false, key.size()) == 0;
}

CascadeString LowerCase(const CascadeString& text)
{
    std::string lower = text.Str();
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return CascadeString(std::move(lower));
}

}    // namespace

FolderConfig FolderConfig::Parse(std::string_view text)
{
    FolderConfig config;
    for (const std::string_view piece : TextBytes::Lines(text)) {
        const CascadeString line(piece);
        if (Begins(line, kPassword)) {
            config.password = line.From(kPassword.size());
        } else if (Begins(line, kPattern)) {
            config.pattern = LowerCase(line.From(kPattern.size()));
        } else {
            // The whole line: a blank at its end makes it another one.
            for (const Choice& choice : kChoices) {
                if (line.Compare(choice.line, false) == 0) {
                    config.*choice.field = choice.value;
                }
            }
        }
    }
    return config;
}

FolderConfig FolderConfig::Read(const CascadeString& folder)
{
    return Parse(TextBytes::ReadTextFile(folder + kFileName).Str());
}
