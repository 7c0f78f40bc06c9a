// Keeps the folder of volumes as the system's mounts are, as long as it runs.
//
// Units:     a mount shows about a fifth of a second after it was made.
// Errors:    a folder that belongs to someone else is told on standard error, once, and left alone.
// Threads:   Start and Stop by one thread; the work is done by a thread of lowest priority, which asks only the kernel
//            and local disks: a network mount is linked to without being looked at.
// Ownership: owns the thread; the links stay when it ends.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/library/BackgroundThread.h"
#include "host/library/MountTable.h"
#include "host/library/VolumeNames.h"

namespace host {

class VolumeKeeper {
public:
    VolumeKeeper() = default;
    ~VolumeKeeper() { Stop(); }

    bool Start(const std::string& folder);    // false: out of descriptors or threads
    void Stop();

private:
    struct Signal;    // tells the thread to end; shared with it
    std::shared_ptr<Signal> m_pSignal;
    BackgroundThread m_Thread;
};

// What the folder is to show: the user's films first, then the mounts, named by the labels of their disks or by where
// they are mounted. `videos` is the user's folder for films; when it is empty or not there, the home folder stands in.
std::vector<VolumeLink> WantedVolumes(
    const std::vector<Mount>& mounts, const std::map<std::string, std::string>& labels, const std::string& videos, const std::string& home);

}    // namespace host
