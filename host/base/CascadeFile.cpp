#include "platform/CascadeFile.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/base/DiskCall.h"

namespace {

std::string_view WithoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

bool IsFolder(const char* path)
{
    struct stat status { };
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

}    // namespace

bool CascadeFSObject::IsAwake(const char* path, uint32_t patienceMs)
{
    if (path == nullptr || !host::CanEndWait()) {
        return true;
    }
    const auto ask = [path = CascadeString(path)] {
        // A listing is what a folder is asked for next; without one its attributes may come from memory.
        if (const std::unique_ptr<DIR, CloseFolder> folder(IsFolder(path) ? opendir(path) : nullptr); folder) {
            readdir(folder.get());
        }
    };
    return (patienceMs == 0 ? host::CallDisk(ask) : host::CallDisk(ask, std::chrono::milliseconds(patienceMs))) == host::WaitResult::kDone;
}

bool CascadeFSObject::Exists(const char* path)
{
    struct stat status { };
    return path != nullptr && IsAwake(path) && stat(path, &status) == 0;
}

bool CascadeFSObject::IsDirectory() const
{
    return IsAwake(m_Path) && IsFolder(m_Path);
}

CascadeString CascadeFSObject::GetName() const
{
    const std::string_view path = WithoutTrailingSlashes(m_Path.Str());
    const size_t slash = path.rfind('/');
    return CascadeString(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

CascadeString CascadeFSObject::GetFullPath() const
{
    std::string_view path = WithoutTrailingSlashes(m_Path.Str());
    if (path.empty() || path.front() == '/') {
        return CascadeString(path);
    }
    while (path.substr(0, 2) == "./") {
        path.remove_prefix(2);
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    }
    std::error_code error;
    std::string full = std::filesystem::current_path(error).string();
    if (error) {
        return CascadeString(path);
    }
    if (!path.empty() && path != ".") {
        if (full.back() != '/') {
            full += '/';
        }
        full += path;
    }
    return CascadeString(std::move(full));
}

CascadeString CascadeFSObject::GetParentPath() const
{
    std::string_view path = WithoutTrailingSlashes(m_Path.Str());
    CascadeString full;
    if (path.find('/') == std::string_view::npos) {
        full = GetFullPath();
        path = full.Str();
    }
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos || path == "/") {
        return {};
    }
    return CascadeString(WithoutTrailingSlashes(path.substr(0, std::max<size_t>(slash, 1))));
}

CascadeString CascadeFile::GetFilenameExtension() const
{
    const CascadeString name = GetName();
    const size_t dot = name.Str().rfind('.');
    return dot == std::string::npos ? CascadeString() : name.From(dot + 1);
}

CascadeDirScanner::CascadeDirScanner(const char* folder, CascadeFSObject::Selector* selector)
    : m_Folder(folder)
{
    const std::unique_ptr<DIR, CloseFolder> entries(CascadeFSObject::IsAwake(m_Folder) ? opendir(m_Folder) : nullptr);
    if (!entries) {
        return;
    }
    std::vector<std::pair<std::string, signed char>> found;
    while (const dirent* entry = readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        const bool told = entry->d_type != DT_UNKNOWN && entry->d_type != DT_LNK;
        found.emplace_back(name, static_cast<signed char>(told ? (entry->d_type == DT_DIR ? 1 : 0) : -1));
    }
    std::sort(found.begin(), found.end());    // std::string compares bytes as unsigned
    const std::string prefix = m_Folder.Str().ends_with('/') ? m_Folder.Str() : m_Folder.Str() + '/';
    for (auto& [name, kind] : found) {
        if (selector != nullptr) {
            CascadeFSObject object((prefix + name).c_str());
            if (!selector->Match(object)) {
                continue;
            }
        }
        m_Names.emplace_back(std::move(name));
        m_Kinds.push_back(kind);
    }
}

bool CascadeDirScanner::EntryIsDirectory(size_t index) const
{
    const signed char kind = m_Kinds.at(index);
    return kind >= 0 ? kind == 1 : IsFolder(m_Folder + "/" + m_Names[index]);
}
