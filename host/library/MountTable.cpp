#include "host/library/MountTable.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace host {
namespace {

constexpr size_t kMostMounts = 4096;

constexpr std::string_view kDiskTypes[]
    = {"apfs", "bcachefs", "btrfs", "exfat", "ext2", "ext3", "ext4", "f2fs", "fuse.exfat", "fuse.mergerfs", "fuse.ntfs", "fuse.ntfs-3g", "fuseblk",
        "hfs", "hfsplus", "iso9660", "jfs", "msdos", "nilfs2", "ntfs", "ntfs3", "reiserfs", "udf", "ufs", "vfat", "xfs", "zfs"};
constexpr std::string_view kNetworkTypes[] = {"9p", "afs", "ceph", "cifs", "davfs", "fuse.ceph", "fuse.curlftpfs", "fuse.davfs", "fuse.davfs2",
    "fuse.glusterfs", "fuse.rclone", "fuse.s3fs", "fuse.smbnetfs", "fuse.sshfs", "glusterfs", "ncpfs", "nfs", "nfs4", "smb3", "smbfs", "virtiofs"};

// Where the system keeps its own file systems: these folders and what is below them.
constexpr std::string_view kSystemFolders[] = {"/bin", "/boot", "/dev", "/efi", "/etc", "/gnu", "/lib", "/lib32", "/lib64", "/nix", "/opt", "/ostree",
    "/proc", "/run", "/sbin", "/snap", "/sys", "/sysroot", "/tmp", "/usr", "/var"};
// Below those, what desktops and administrators mount for people.
constexpr std::string_view kPeoplesFolders[] = {"/media", "/mnt", "/run/media", "/srv"};
constexpr std::string_view kHomes = "/home";
constexpr std::string_view kRootsHome = "/root";

template <typename Table> bool Contains(const Table& table, std::string_view word)
{
    return std::find(std::begin(table), std::end(table), word) != std::end(table);
}

bool IsAtOrBelow(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/' || folder == "/");
}

bool IsForPeople(std::string_view folder)
{
    const auto holds = [folder](std::string_view parent) { return IsAtOrBelow(folder, parent); };
    if (std::any_of(std::begin(kPeoplesFolders), std::end(kPeoplesFolders), holds)) {
        return true;
    }
    if (folder == "/" || std::any_of(std::begin(kSystemFolders), std::end(kSystemFolders), holds)) {
        return false;
    }
    // A disk of homes, or of one home, is the system's; what somebody mounts inside a home is for films.
    const size_t depth = static_cast<size_t>(std::count(folder.begin(), folder.end(), '/'));
    return folder != kRootsHome && (!IsAtOrBelow(folder, kHomes) || depth > 2);
}

bool IsOctal(char c)
{
    return c >= '0' && c <= '7';
}

// Blanks, line ends and backslashes are written as "\" and three octal digits.
std::string Unescaped(const std::string& text)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '\\' && text.size() - i > 3 && IsOctal(text[i + 1]) && IsOctal(text[i + 2]) && IsOctal(text[i + 3]);
        plain += escape ? char((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + text[i + 3] - '0') : text[i];
        i += escape ? 3 : 0;
    }
    return plain;
}

bool ParseLine(const std::string& line, Mount& mount)
{
    std::istringstream words(line);
    std::array<std::string, 6> first;    // mount, parent, device, root, folder, options
    for (std::string& word : first) {
        words >> word;
    }
    std::string word;
    while (words >> word && word != "-") {    // optional fields
    }
    if (!(words >> mount.type >> mount.source)) {
        return false;
    }
    mount.device = first[2];
    mount.root = Unescaped(first[3]);
    mount.folder = Unescaped(first[4]);
    mount.source = Unescaped(mount.source);
    return mount.folder.starts_with('/');
}

}    // namespace

std::vector<Mount> ParseMounts(std::string_view mountinfo)
{
    std::vector<Mount> mounts;
    std::istringstream lines {std::string(mountinfo)};
    std::string line;
    while (mounts.size() < kMostMounts && std::getline(lines, line)) {
        Mount mount;
        if (ParseLine(line, mount)) {
            mounts.push_back(std::move(mount));
        }
    }
    return mounts;
}

std::vector<Mount> MountsWithFilms(const std::vector<Mount>& mounts)
{
    std::vector<Mount> chosen;
    for (auto mount = mounts.begin(); mount != mounts.end(); ++mount) {
        const bool isHidden = std::any_of(mount + 1, mounts.end(), [&](const Mount& later) { return later.folder == mount->folder; });
        const bool isNetwork = Contains(kNetworkTypes, mount->type);
        if (isHidden || !(isNetwork || Contains(kDiskTypes, mount->type)) || !IsForPeople(mount->folder)) {
            continue;
        }
        const bool isSeen = std::any_of(
            chosen.begin(), chosen.end(), [&](const Mount& other) { return other.device == mount->device && other.root == mount->root; });
        if (!isSeen) {
            chosen.push_back(*mount);
        }
    }
    return chosen;
}

bool IsOnNetwork(const std::string& path, const std::vector<Mount>& mounts)
{
    const Mount* nearest = nullptr;
    for (const Mount& mount : mounts) {
        if (IsAtOrBelow(path, mount.folder) && (nearest == nullptr || mount.folder.size() >= nearest->folder.size())) {
            nearest = &mount;
        }
    }
    return nearest != nullptr && Contains(kNetworkTypes, nearest->type);
}

}    // namespace host
