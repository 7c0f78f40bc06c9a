// What is mounted, as the kernel tells it (proc_pid_mountinfo(5)), and what of it a viewer looks for films on.
//
// Errors:  lines that are no mounts are passed over.
// Threads: any; texts only. Nothing here touches a mounted file system, which may not answer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Mount {
    std::string device;    // "8:1"
    std::string root;    // what of the file system is mounted
    std::string folder;    // where
    std::string type;    // "ext4", "nfs4", "fuse.sshfs"
    std::string source;    // "/dev/sda1", "server:/films"
};

std::vector<Mount> ParseMounts(std::string_view mountinfo);

// Disks beyond those of the system itself, removable media and network mounts, each once, in the order of mounting.
std::vector<Mount> MountsWithFilms(const std::vector<Mount>& mounts);

bool IsOnNetwork(const std::string& path, const std::vector<Mount>& mounts);

}    // namespace host
