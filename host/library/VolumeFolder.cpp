#include "host/library/VolumeFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace host {
namespace {

constexpr std::string_view kMark = "/.";    // before a target that begins with a slash
constexpr int kMostEntries = 20000;

class Descriptor {
public:
    explicit Descriptor(int fd)
        : m_Fd(fd)
    {
    }
    ~Descriptor()
    {
        if (m_Fd >= 0) {
            close(m_Fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int operator*() const { return m_Fd; }
    bool IsOpen() const { return m_Fd >= 0; }

private:
    const int m_Fd;
};

using Links = std::vector<VolumeLink>;

std::string TargetOf(int folder, const std::string& name)
{
    std::array<char, PATH_MAX> target;
    const ssize_t length = readlinkat(folder, name.c_str(), target.data(), target.size());
    return length > 0 && size_t(length) < target.size() ? std::string(target.data(), size_t(length)) : "";
}

// What is in the folder: links of ours, and the names of the rest.
struct Contents {
    Links ours;
    std::set<std::string> others;
};

std::optional<Contents> Read(int folder)
{
    DIR* const dir = fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir == nullptr) {
        return std::nullopt;
    }
    Contents contents;
    for (int i = 0; i < kMostEntries; ++i) {
        const dirent* const entry = readdir(dir);
        if (entry == nullptr) {
            break;
        }
        const std::string name = entry->d_name;
        const std::string target = TargetOf(folder, name);
        if (target.starts_with(std::string(kMark) + '/')) {
            contents.ours.push_back({name, target.substr(kMark.size())});
        } else if (name != "." && name != "..") {
            contents.others.insert(name);
        }
    }
    closedir(dir);
    return contents;
}

bool Contains(const Links& links, const VolumeLink& link)
{
    return std::find(links.begin(), links.end(), link) != links.end();
}

void Change(int folder, const Links& from, const Links& to)
{
    for (const VolumeLink& link : from) {
        if (!Contains(to, link)) {
            unlinkat(folder, link.name.c_str(), 0);
        }
    }
    for (const VolumeLink& link : to) {
        if (!Contains(from, link)) {
            [[maybe_unused]] const int made = symlinkat((std::string(kMark) + link.target).c_str(), folder, link.name.c_str());
        }
    }
}

}    // namespace

VolumeFolder::VolumeFolder(std::string path)
    : m_Path(std::move(path))
{
    while (m_Path.size() > 1 && m_Path.back() == '/') {    // behind which a link would be followed
        m_Path.pop_back();
    }
}

VolumeFolder::Result VolumeFolder::Show(const std::vector<VolumeLink>& volumes) const
{
    mkdir(m_Path.c_str(), 0755);    // what is there then, however it came there, is looked at
    const Descriptor folder(open(m_Path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status { };
    if (!folder.IsOpen() || fstat(*folder, &status) != 0 || status.st_uid != geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Result::kNotOurs;
    }
    if (flock(*folder, LOCK_EX | LOCK_NB) != 0) {
        return Result::kBusy;
    }
    const std::optional<Contents> contents = Read(*folder);
    if (!contents || (contents->ours.empty() && !contents->others.empty())) {
        return Result::kNotOurs;
    }
    Change(*folder, contents->ours, NameVolumes(volumes, contents->ours, contents->others));
    return Result::kShown;
}

}    // namespace host
