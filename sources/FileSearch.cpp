#include "sources/FileSearch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/CascadeFile.h"

namespace {

constexpr std::string_view kMenuEnding = "_0.VOB";

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The file name without its extension, cut to the part that all files of the recording share.
std::string_view WithoutNumber(std::string_view name)
{
    size_t length = name.size();
    while (length >= 2 && IsDigit(name[length - 1])) {
        --length;
    }
    if (length < 2) {
        return name;    // on purpose: the first character of a name is never taken for its number, so "12" stays "12"
    }
    const char last = name[length - 1];
    return name.substr(0, last == '.' || last == '_' ? length - 1 : length);
}

// Not alphasort, which follows the locale: the order of a sequence is that of the bytes.
int CompareBytes(const dirent** a, const dirent** b)
{
    return std::strcmp((*a)->d_name, (*b)->d_name);
}

}    // namespace

constinit thread_local const char* FileSearch::g_BaseFileSearch = nullptr;
constinit thread_local size_t FileSearch::g_BaseFileSearchLen = 0;
constinit thread_local const char* FileSearch::g_BaseExtSearch = nullptr;
constinit thread_local size_t FileSearch::g_BaseExtSearchLen = 0;
constinit thread_local bool FileSearch::g_IncludeMenuVOB = false;

void FileSearch::Create(const char* name)
{
    CascadeString given(name);    // the caller's text may be one of our own
    m_Name = std::move(given);
    m_Ext.Empty();
    if (m_Name.Compare("http://", false, false, 7) == 0 || m_Name.Contains("~", true, false)) {
        // On purpose nothing is stripped here: such a name is one file.
        const size_t slash = m_Name.Str().rfind('/');
        m_Path = slash == std::string::npos ? CascadeString() : m_Name.Left(slash);
        m_Base = slash == std::string::npos ? m_Name : m_Name.From(slash + 1);
    } else {
        const CascadeFile file(m_Name);
        const CascadeString fileName = file.GetName();
        const CascadeString full = file.GetFullPath();
        std::string_view base = fileName.Str();
        m_Path = full.Left(full.GetLength() - std::min(full.GetLength(), fileName.GetLength() + 1));
        m_Ext = file.GetFilenameExtension();
        if (!m_Ext.IsEmpty()) {
            base.remove_suffix(std::min(base.size(), m_Ext.GetLength() + 1));
        }
        m_Base = CascadeString(WithoutNumber(base));
    }
    std::printf("path, base, ext %s, %s, %s\n", m_Path.Text(), m_Base.Text(), m_Ext.Text());
}

int FileSearch::FileSearchSelect(const dirent* entry)
{
    const std::string_view name = entry->d_name;
    if (g_BaseFileSearch == nullptr || g_BaseFileSearchLen == 0) {
        return 0;
    }
    const std::string_view base(g_BaseFileSearch, g_BaseFileSearchLen);
    const std::string_view ext(g_BaseExtSearch == nullptr ? "" : g_BaseExtSearch, g_BaseExtSearch == nullptr ? 0 : g_BaseExtSearchLen);
    // One character more than base and extension: normally the dot, which is not looked at.
    if (name.size() < base.size() + ext.size() + 1) {
        return 0;
    }
    // The menu file of a title set is no part of the title, unless the sequence was opened on it.
    if (!g_IncludeMenuVOB && name.size() >= kMenuEnding.size()
        && CascadeString(name.substr(name.size() - kMenuEnding.size())).Compare(kMenuEnding.data(), false) == 0) {
        return 0;
    }
    if (!name.starts_with(base) || !name.ends_with(ext)) {
        return 0;
    }
    const std::string_view middle = name.substr(base.size(), name.size() - base.size() - ext.size() - 1);
    if (middle.empty()) {
        return 1;
    }
    if (middle[0] != '.' && middle[0] != '_' && !IsDigit(middle[0])) {
        return 0;
    }
    return std::all_of(middle.begin() + 1, middle.end(), IsDigit) ? 1 : 0;
}

FileSearch::Members FileSearch::Scan() const
{
    g_BaseFileSearch = m_Base.Text();
    g_BaseFileSearchLen = m_Base.GetLength();
    g_BaseExtSearch = m_Ext.Text();
    g_BaseExtSearchLen = m_Ext.GetLength();
    g_IncludeMenuVOB = m_Name.Contains(kMenuEnding.data(), false, false);

    Members members;
    // The folder of a file in the root has no name once its "/" is cut.
    const char* folder = m_Path.IsEmpty() && m_Name.Str().starts_with('/') ? "/" : m_Path.Text();
    members.m_Folder = CascadeFSObject::IsAwake(folder) ? open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (members.m_Folder >= 0) {
        members.m_nCount = scandirat(members.m_Folder, ".", &members.m_pEntries, FileSearchSelect, CompareBytes);
    }
    g_BaseFileSearch = nullptr;    // the texts are this object's
    g_BaseExtSearch = nullptr;
    return members;
}

FileSearch::Members::Members(Members&& other) noexcept
    : m_Folder(std::exchange(other.m_Folder, -1))
    , m_nCount(std::exchange(other.m_nCount, -1))
    , m_pEntries(std::exchange(other.m_pEntries, nullptr))
{
}

FileSearch::Members::~Members()
{
    for (int i = 0; i < m_nCount; ++i) {
        std::free(m_pEntries[i]);
    }
    std::free(m_pEntries);
    if (m_Folder >= 0) {
        close(m_Folder);
    }
}

int FileSearch::Members::Find(const char* name) const
{
    for (int i = 0; i < m_nCount; ++i) {
        if (std::strcmp(Name(i), name) == 0) {
            return i;
        }
    }
    return -1;
}
