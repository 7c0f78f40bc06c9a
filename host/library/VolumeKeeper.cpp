#include "host/library/VolumeKeeper.h"

#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "host/library/VolumeFolder.h"

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr const char* kMounts = "/proc/self/mountinfo";
constexpr const char* kLabels = "/dev/disk/by-label";
constexpr size_t kMostMountBytes = 4 << 20;
constexpr int kSettleMs = 200;    // mounts come in groups
constexpr int kRetryMs = 1000;    // while another player is at the folder
constexpr auto kLastStep = 300ms;

std::string ReadWhole(int fd)
{
    std::string text;
    char block[16384];
    ssize_t count = 0;
    lseek(fd, 0, SEEK_SET);
    while (text.size() < kMostMountBytes && (count = read(fd, block, sizeof block)) > 0) {
        text.append(block, size_t(count));
    }
    return text;
}

bool IsFolder(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string Text(const char* text)
{
    return text == nullptr ? "" : text;
}

VolumeFolder::Result ShowMounts(const VolumeFolder& folder, const std::string& mountinfo)
{
    return folder.Show(
        WantedVolumes(ParseMounts(mountinfo), VolumeLabels(kLabels), Text(g_get_user_special_dir(G_USER_DIRECTORY_VIDEOS)), Text(g_get_home_dir())));
}

// Until the end is told (true) or so long; -1: until a mount too.
bool WaitForEnd(int endFd, int mountsFd, int milliseconds)
{
    pollfd waiting[] = {{endFd, POLLIN, 0}, {mountsFd, POLLPRI, 0}};    // proc_pid_mounts(5): a change is urgent data
    poll(waiting, mountsFd < 0 ? 1 : 2, milliseconds);
    return (waiting[0].revents & POLLIN) != 0;
}

}    // namespace

std::vector<VolumeLink> WantedVolumes(
    const std::vector<Mount>& mounts, const std::map<std::string, std::string>& labels, const std::string& videos, const std::string& home)
{
    std::vector<VolumeLink> wanted;
    // A folder on the network is not looked at. The home folder itself in the place of a special one means "none".
    const bool hasVideos = !videos.empty() && videos != home && (IsOnNetwork(videos, mounts) || IsFolder(videos));
    if (hasVideos) {
        wanted.push_back({"Videos", videos});
    } else if (!home.empty() && home != "/") {
        wanted.push_back({"Home", home});
    }
    for (const Mount& mount : MountsWithFilms(mounts)) {
        const auto label = labels.find(mount.source);
        const auto isKnown = [&](const VolumeLink& link) { return link.target == mount.folder; };
        if (std::none_of(wanted.begin(), wanted.end(), isKnown)) {
            wanted.push_back({label != labels.end() ? label->second : mount.folder.substr(mount.folder.rfind('/') + 1), mount.folder});
        }
    }
    return wanted;
}

struct VolumeKeeper::Signal {
    const int endFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const int mountsFd = open(kMounts, O_RDONLY | O_CLOEXEC);
    ~Signal()
    {
        close(endFd);
        close(mountsFd);
    }
};

bool VolumeKeeper::Start(const std::string& path)
{
    m_pSignal = std::make_shared<Signal>();
    if (m_pSignal->endFd < 0 || m_pSignal->mountsFd < 0) {
        return false;
    }
    return m_Thread.Start("nuvid-volumes", [signal = m_pSignal, path] {
        const VolumeFolder folder(path);
        bool told = false;
        bool ending = false;
        while (!ending) {
            const VolumeFolder::Result result = ShowMounts(folder, ReadWhole(signal->mountsFd));
            if (result == VolumeFolder::Result::kNotOurs && !told) {
                std::fprintf(stderr, "The folder of volumes, %s, cannot be made or is somebody else's, and is left as it is\n", path.c_str());
                told = true;
            }
            const bool again = result == VolumeFolder::Result::kBusy;
            ending = WaitForEnd(signal->endFd, again ? -1 : signal->mountsFd, again ? kRetryMs : -1)
                || (!again && WaitForEnd(signal->endFd, -1, kSettleMs));
        }
    });
}

void VolumeKeeper::Stop()
{
    if (m_Thread.IsStarted()) {
        eventfd_write(m_pSignal->endFd, 1);
        m_Thread.Finish(kLastStep);
    }
    m_pSignal = nullptr;
}

}    // namespace host
