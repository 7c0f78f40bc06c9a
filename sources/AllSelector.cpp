#include "sources/AllSelector.h"

#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kRegexSpecials = "+()^$.{}[]|\\";
constexpr int64_t kAlwaysLargeEnough = int64_t {1} << 32;    // a minimum is a 32-bit number wherever it is kept

// ASCII only, as names are compared everywhere.
char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

CascadeString LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
    return CascadeString(std::move(lower));
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

// What no viewer wants to see: another system's pictures, wherever its name occurs, and the folder's own settings.
bool IsSystemFile(std::string_view name)
{
    constexpr std::string_view kPictures = "thumbs.db";
    const auto same = [](char x, char y) { return Lower(x) == Lower(y); };
    return std::search(name.begin(), name.end(), kPictures.begin(), kPictures.end(), same) != name.end() || EqualsIgnoringCase(name, "folder.cfg");
}

// Text after the last dot; empty without one.
std::string_view ExtensionOf(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

}    // namespace

AllSelector::AllSelector(SelectorTypeFilter filter, unsigned long minSize, bool collapse, const char* patterns)
    : m_Filter(filter)
    , m_nMinSize(minSize)
    , m_bCollapse(collapse)
{
    if (patterns != nullptr && *patterns != '\0') {
        m_pPatterns = std::make_unique<CascadeTokenArray>(patterns, ";");
    }
}

bool AllSelector::Match(CascadeFSObject& entry)
{
    if ((m_Filter & kDirectories) != 0) {
        return entry.IsDirectory();
    }
    if ((m_Filter & kFiles) == 0) {
        return false;
    }
    // One question to the disk for kind and size.
    const CascadeString fullPath = entry.GetFullPath();
    const CascadeString name = entry.GetName();
    struct stat status { };
    const bool known = stat(fullPath, &status) == 0;
    const int64_t size = status.st_size;
    const CascadeString folder = fullPath.Left(fullPath.GetLength() - std::min(fullPath.GetLength(), name.GetLength() + 1));
    return MatchKnown(folder, name.Str(), known && S_ISDIR(status.st_mode), known ? &size : nullptr);
}

bool AllSelector::MatchKnown(const CascadeString& folder, std::string_view name, bool isDirectory, const int64_t* size)
{
    if ((m_Filter & kDirectories) != 0) {
        return isDirectory;
    }
    if ((m_Filter & kFiles) == 0 || isDirectory || IsSystemFile(name)) {
        return false;
    }
    const std::string_view extension = ExtensionOf(name);
    if (EqualsIgnoringCase(extension, "Nuvidlist")) {
        return true;    // playlists are always listed
    }
    if (m_pPatterns && !MatchesPatterns(name)) {
        return false;
    }
    if (size != nullptr && (*size < 0 || (*size < kAlwaysLargeEnough && static_cast<unsigned long>(*size) < m_nMinSize))) {
        return false;
    }
    return !m_bCollapse || IsFirstOfSequence(folder, name, extension);
}

bool AllSelector::PatternMatch(CascadeFSObject& entry) const
{
    return MatchesPatterns(entry.GetName().Str());
}

bool AllSelector::MatchesPatterns(std::string_view name) const
{
    if (!m_pPatterns) {
        return false;
    }
    const CascadeString lower = LowerCase(name);
    for (size_t i = 0; i < m_pPatterns->GetSize(); ++i) {
        if (fnmatch((*m_pPatterns)[i], lower, 0) == 0) {
            return true;
        }
    }
    return false;
}

bool AllSelector::IsFirstOfSequence(const CascadeString& folder, std::string_view name, std::string_view extension)
{
    if (EqualsIgnoringCase(extension, "nuvid")) {
        return false;    // the player's own side files
    }
    std::string_view stem = name;
    if (!extension.empty()) {
        stem.remove_suffix(extension.size() + 1);
    }
    const std::string_view base = SequenceBase(stem);
    if (folder == m_LastFolder && EqualsIgnoringCase(extension, m_LastExtension) && base == m_LastBase && name != m_LastName) {
        return false;
    }
    m_LastBase = base;
    m_LastExtension = extension;
    m_LastFolder = folder;
    m_LastName = name;
    return true;
}

// The same cut as FileSearch::Create makes.
std::string_view AllSelector::SequenceBase(std::string_view stem)
{
    const size_t last = stem.find_last_not_of("0123456789");
    if (last == std::string_view::npos || last == 0 || stem.size() < 2) {
        // On purpose: the first character of a name is never taken for its number, so "a1" stays "a1".
        return stem;
    }
    return stem.substr(0, stem[last] == '.' || stem[last] == '_' ? last : last + 1);
}

CascadeString AllSelector::PatternToRegex(const char* pattern)
{
    std::string regex;
    for (const char c : std::string_view(pattern == nullptr ? "" : pattern)) {
        if (c == '*') {
            regex += ".*";
        } else if (c == '?') {
            regex += '.';
        } else {
            if (kRegexSpecials.find(c) != std::string_view::npos) {
                regex += '\\';
            }
            regex += c;
        }
    }
    return CascadeString(std::move(regex));
}
