#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <random>

namespace {

constexpr int kMostLinks = 40;    // as many as the kernel follows
constexpr int kNameAttempts = 16;

std::string FolderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Where a chain of links ends, so that the link stays a link. The end itself need not exist. An errno, or 0.
int FollowLinks(std::string& path)
{
    char target[PATH_MAX];
    for (int i = 0; i < kMostLinks; ++i) {
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length < 0) {
            return errno == EINVAL || errno == ENOENT ? 0 : errno;
        }
        if (static_cast<size_t>(length) == sizeof target) {
            return ENAMETOOLONG;
        }
        const std::string next(target, static_cast<size_t>(length));
        path = next.starts_with('/') ? next : FolderOf(path) + '/' + next;
    }
    return ELOOP;
}

// A new file beside `path`, readable by nobody else yet where an old file's mode is to be copied.
int CreateBeside(const std::string& path, mode_t mode, std::string& created)
{
    std::random_device random;
    for (int i = 0; i < kNameAttempts; ++i) {
        char name[40];
        std::snprintf(name, sizeof name, "/.nuvid-%08x%08x.tmp", random(), random());
        created = FolderOf(path) + name;
        const int fd = open(created.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// The name in its folder reaches the medium too. A folder or file system that does not know how is no
// error: the new file is there.
void FlushFolder(const std::string& folder)
{
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

}    // namespace

AtomicFile::AtomicFile(const char* path)
    : m_Path(path == nullptr ? "" : path)
{
}

AtomicFile::~AtomicFile()
{
    if (m_Fd >= 0) {
        close(m_Fd);
        unlink(m_TemporaryPath.c_str());
    }
}

bool AtomicFile::Open()
{
    if (m_Fd >= 0 || m_Path.empty()) {
        m_nError = EINVAL;
        return false;
    }
    m_nError = FollowLinks(m_Path);
    if (m_nError != 0) {
        return false;
    }
    struct stat old { };
    const bool replaces = lstat(m_Path.c_str(), &old) == 0;
    if (replaces && !S_ISREG(old.st_mode)) {
        m_nError = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;    // a device or a pipe is not replaced by a file
        return false;
    }
    // A file that its owner has protected is not replaced behind the protection's back.
    if (replaces && faccessat(AT_FDCWD, m_Path.c_str(), W_OK, AT_EACCESS) != 0) {
        m_nError = errno;
        return false;
    }
    m_Fd = CreateBeside(m_Path, replaces ? 0600 : 0666, m_TemporaryPath);
    if (m_Fd < 0) {
        m_nError = errno;
        return false;
    }
    if (replaces) {
        // As far as the user and the file system may; owner before mode, which a change of owner can cut.
        [[maybe_unused]] const int owned = fchown(m_Fd, old.st_uid, old.st_gid);
        fchmod(m_Fd, old.st_mode & 0777);
    }
    return true;
}

bool AtomicFile::Write(std::string_view bytes)
{
    if (m_Fd < 0 || m_nError != 0) {
        return false;
    }
    while (!bytes.empty()) {
        const ssize_t written = write(m_Fd, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        } else if (errno != EINTR) {
            m_nError = errno;
            return false;
        }
    }
    return true;
}

bool AtomicFile::Commit()
{
    if (m_Fd < 0) {
        if (m_nError == 0) {
            m_nError = EBADF;
        }
        return false;
    }
    if (m_nError == 0 && fsync(m_Fd) != 0) {
        m_nError = errno;
    }
    if (close(m_Fd) != 0 && m_nError == 0) {    // some network file systems tell a full disk only now
        m_nError = errno;
    }
    m_Fd = -1;
    if (m_nError == 0 && rename(m_TemporaryPath.c_str(), m_Path.c_str()) != 0) {
        m_nError = errno;
    }
    if (m_nError != 0) {
        unlink(m_TemporaryPath.c_str());
        return false;
    }
    FlushFolder(FolderOf(m_Path));
    return true;
}
