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

CascadeString LowerCase(const CascadeString& text)
{
    std::string lower = text.Str();
    // ASCII only, as names are compared everywhere.
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return CascadeString(std::move(lower));
}

// The name that all members of a numbered sequence share; the same cut as FileSearch::Create makes.
std::string_view WithoutNumber(std::string_view name)
{
    const size_t last = name.find_last_not_of("0123456789");
    if (last == std::string_view::npos || last == 0 || name.size() < 2) {
        // On purpose: the first character of a name is never taken for its number, so "a1" stays "a1".
        return name;
    }
    return name.substr(0, name[last] == '.' || name[last] == '_' ? last : last + 1);
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
    const CascadeString name = entry.GetName();
    if (name.Contains("thumbs.db", false) || name.Compare("folder.cfg", false) == 0) {
        return false;
    }
    // One question to the disk for kind and size.
    struct stat status { };
    const bool known = stat(entry.GetFullPath(), &status) == 0;
    if (known && S_ISDIR(status.st_mode)) {
        return false;
    }
    if (CascadeFile(entry.GetPath()).GetFilenameExtension().Compare("Nuvidlist", false) == 0) {
        return true;    // playlists are always listed
    }
    if (m_pPatterns && !PatternMatch(entry)) {
        return false;
    }
    if (known) {
        const int64_t size = status.st_size;
        if (size < 0 || (size < kAlwaysLargeEnough && static_cast<unsigned long>(size) < m_nMinSize)) {
            return false;
        }
    }
    return !m_bCollapse || IsFirstOfSequence(entry);
}

bool AllSelector::PatternMatch(CascadeFSObject& entry) const
{
    if (!m_pPatterns) {
        return false;
    }
    const CascadeString name = LowerCase(entry.GetName());
    for (size_t i = 0; i < m_pPatterns->GetSize(); ++i) {
        if (fnmatch((*m_pPatterns)[i], name, 0) == 0) {
            return true;
        }
    }
    return false;
}

bool AllSelector::IsFirstOfSequence(const CascadeFSObject& entry)
{
    const CascadeString fullPath = entry.GetFullPath();
    const CascadeString name = entry.GetName();
    const CascadeString extension = CascadeFile(entry.GetPath()).GetFilenameExtension();
    if (extension.Compare("nuvid", false) == 0) {
        return false;    // the player's own side files
    }
    const CascadeString folder = fullPath.Left(fullPath.GetLength() - std::min(fullPath.GetLength(), name.GetLength() + 1));
    std::string_view stem = name.Str();
    if (!extension.IsEmpty()) {
        stem.remove_suffix(extension.GetLength() + 1);
    }
    CascadeString base(WithoutNumber(stem));
    if (folder == m_LastFolder && extension.Compare(m_LastExtension, false) == 0 && base == m_LastBase && !(fullPath == m_LastFullPath)) {
        return false;
    }
    m_LastBase = std::move(base);
    m_LastExtension = extension;
    m_LastFolder = folder;
    m_LastFullPath = fullPath;
    return true;
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
