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
#include <utility>

namespace host {
namespace {

// Name and target of every link that we made, each with a zero behind it.
constexpr const char* kRecord = ".nuvid-volumes";
constexpr const char* kNewRecord = ".nuvid-volumes.new";
constexpr size_t kMostRecordBytes = 1 << 20;
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

bool WriteRecord(int folder, const Links& links)
{
    std::string bytes;
    for (const VolumeLink& link : links) {
        bytes += link.name + '\0' + link.target + '\0';
    }
    unlinkat(folder, kNewRecord, 0);    // of a player that was killed
    const Descriptor file(openat(folder, kNewRecord, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return file.IsOpen() && write(*file, bytes.data(), bytes.size()) == ssize_t(bytes.size()) && renameat(folder, kNewRecord, folder, kRecord) == 0;
}

// Nothing: there is no record of ours.
std::optional<Links> ReadRecord(int folder)
{
    const Descriptor file(openat(folder, kRecord, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status { };
    if (!file.IsOpen() || fstat(*file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
        return std::nullopt;
    }
    std::string bytes(std::min(size_t(status.st_size), kMostRecordBytes), '\0');
    const ssize_t count = read(*file, bytes.data(), bytes.size());
    bytes.resize(size_t(std::max<ssize_t>(count, 0)));
    Links links;
    size_t position = 0;
    while (true) {
        const size_t nameEnd = bytes.find('\0', position);
        const size_t targetEnd = nameEnd == std::string::npos ? nameEnd : bytes.find('\0', nameEnd + 1);
        if (targetEnd == std::string::npos) {
            return links;
        }
        links.push_back({bytes.substr(position, nameEnd - position), bytes.substr(nameEnd + 1, targetEnd - nameEnd - 1)});
        position = targetEnd + 1;
    }
}

std::optional<std::set<std::string>> NamesIn(int folder)
{
    DIR* const dir = fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir == nullptr) {
        return std::nullopt;
    }
    std::set<std::string> names;
    for (int i = 0; i < kMostEntries; ++i) {
        const dirent* const entry = readdir(dir);
        if (entry == nullptr) {
            break;
        }
        names.insert(entry->d_name);
    }
    closedir(dir);
    return names;
}

bool Contains(const Links& links, const VolumeLink& link)
{
    return std::find(links.begin(), links.end(), link) != links.end();
}

// From the links that are there to those that are wanted. What the record says is never less than what is there, so
// that no link is forgotten when the program is killed on the way.
void Change(int folder, const Links& from, const Links& to)
{
    Links all = from;
    std::copy_if(to.begin(), to.end(), std::back_inserter(all), [&](const VolumeLink& link) { return !Contains(from, link); });
    if (!WriteRecord(folder, all)) {
        return;
    }
    for (const VolumeLink& link : from) {
        if (!Contains(to, link)) {
            unlinkat(folder, link.name.c_str(), 0);
        }
    }
    Links made;
    for (const VolumeLink& link : to) {
        if (Contains(from, link) || symlinkat(link.target.c_str(), folder, link.name.c_str()) == 0) {
            made.push_back(link);
        }
    }
    WriteRecord(folder, made);
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
    const bool isNew = mkdir(m_Path.c_str(), 0755) == 0;
    const Descriptor folder(open(m_Path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status { };
    if (!folder.IsOpen() || fstat(*folder, &status) != 0 || status.st_uid != geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Result::kNotOurs;
    }
    // Before the lock: without a record no other player touches the folder.
    if (isNew && !WriteRecord(*folder, {})) {
        return Result::kNotOurs;
    }
    if (flock(*folder, LOCK_EX | LOCK_NB) != 0) {
        return Result::kBusy;
    }
    const std::optional<Links> record = ReadRecord(*folder);
    std::optional<std::set<std::string>> others = NamesIn(*folder);
    if (!record || !others) {
        return Result::kNotOurs;
    }
    Links current;
    for (const VolumeLink& link : *record) {
        if (TargetOf(*folder, link.name) == link.target && others->erase(link.name) > 0) {
            current.push_back(link);
        }
    }
    const Links named = NameVolumes(volumes, current, *others);
    const bool isRight
        = named.size() == current.size() && std::all_of(named.begin(), named.end(), [&](const VolumeLink& link) { return Contains(current, link); });
    if (!isRight) {
        Change(*folder, current, named);
    }
    return Result::kShown;
}

}    // namespace host
