#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <mutex>

#include "host/base/UiQueue.h"
#include "platform/CascadeStream.h"

namespace {

constexpr auto kGrowthWait = std::chrono::seconds(3);
// Asked again rather than watched: change notices do not come from network shares.
constexpr auto kGrowthPoll = std::chrono::milliseconds(50);

bool IsReadable(const struct stat& status)
{
    return S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
}

// The kind is asked before the open, because opening a device can already do something, and again after
// it, because the name may have become another thing meanwhile. Not blocking, so that no pipe can hang it.
int OpenReadable(const char* path)
{
    struct stat status { };
    if (stat(path, &status) != 0 || !IsReadable(status)) {
        return -1;
    }
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return -1;
    }
    if (fstat(fd, &status) != 0 || !IsReadable(status) || fcntl(fd, F_SETFL, 0) != 0) {
        close(fd);
        return -1;
    }
    posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    return fd;
}

// Of a file or a block device, as it is now; 0 when it cannot be told. Moves the descriptor's own offset,
// which nothing uses.
unsigned long long SizeOf(int fd)
{
    const off_t end = lseek(fd, 0, SEEK_END);
    return end < 0 ? 0 : static_cast<unsigned long long>(end);
}

// A file that was written this lately may be a recording under way. Of a server whose clock is another one,
// a time that is a little ahead counts as well.
bool WasWrittenLately(int fd)
{
    struct stat status { };
    struct timespec now { };
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || clock_gettime(CLOCK_REALTIME, &now) != 0) {
        return false;
    }
    return std::chrono::abs(std::chrono::seconds(now.tv_sec - status.st_mtim.tv_sec)) <= kGrowthWait;
}

// Bytes read at `position`; fewer only at the end or after an error.
unsigned long ReadAt(int fd, unsigned char* to, unsigned long count, unsigned long long position)
{
    unsigned long done = 0;
    while (done < count) {
        const ssize_t got = pread(fd, to + done, count - done, static_cast<off_t>(position + done));
        if (got > 0) {
            done += static_cast<unsigned long>(got);
        } else if (got == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

host::WaitResult Rest(host::Clock::time_point until)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    return host::Waiter().Wait(
        lock, [] { return false; }, until);
}

}    // namespace

CascadeFileStream::~CascadeFileStream()
{
    Close();
}

bool CascadeFileStream::Open(const CascadeFile& file)
{
    const int fd = OpenReadable(file.GetPath());
    if (fd < 0) {
        return false;
    }
    Close();
    m_Fd = fd;
    m_nSizeAtOpen = SizeOf(fd);
    return true;
}

void CascadeFileStream::Close()
{
    if (m_Fd >= 0) {
        close(m_Fd);
        m_Fd = -1;
    }
    m_nPosition = 0;
    m_nSizeAtOpen = 0;
    m_bInterrupted = false;
}

unsigned long long CascadeFileStream::GetSize()
{
    return m_Fd < 0 ? 0 : SizeOf(m_Fd);
}

unsigned long long CascadeFileStream::GetPosition()
{
    return m_nPosition;
}

bool CascadeFileStream::SeekToPosition(unsigned long long position)
{
    if (m_Fd < 0 || position > SizeOf(m_Fd)) {
        return false;
    }
    m_nPosition = position;
    return true;
}

unsigned long CascadeFileStream::ReadBytes(unsigned long count, void* buffer)
{
    m_bInterrupted = false;
    if (m_Fd < 0) {
        return 0;
    }
    auto* const to = static_cast<unsigned char*>(buffer);
    const unsigned long long position = m_nPosition;
    unsigned long done = ReadAt(m_Fd, to, count, position);
    if (done < count && (position + done > m_nSizeAtOpen || (host::InterruptToken::Current() != nullptr && WasWrittenLately(m_Fd)))) {
        const auto deadline = host::Clock::now() + kGrowthWait;
        while (done < count && host::Clock::now() < deadline) {
            if (Rest(std::min(deadline, host::Clock::now() + kGrowthPoll)) == host::WaitResult::kInterrupted) {
                m_bInterrupted = true;
                return 0;
            }
            done += ReadAt(m_Fd, to + done, count - done, position + done);
        }
        if (done < count) {
            m_nSizeAtOpen = position + done;    // the recording is over: its end is not waited for twice
        }
    }
    m_nPosition = position + done;
    return done;
}
