#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "host/base/DiskCall.h"
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

// Bytes read at `position`; fewer only at the end, after an error or, with RWF_NOWAIT in `flags`, before what is
// not in memory.
unsigned long ReadAt(int fd, unsigned char* to, unsigned long count, unsigned long long position, int flags)
{
    unsigned long done = 0;
    while (done < count) {
        const iovec rest = {to + done, count - done};
        const ssize_t got = preadv2(fd, &rest, 1, static_cast<off_t>(position + done), flags);
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

// Shared with the calls to the disk that were given up.
struct CascadeFileStream::File {
    int fd = -1;
    std::atomic<unsigned long long> size{0};    // when it was asked last
    std::atomic<int> hanging{0};    // calls that were given up and have not come back

    ~File()
    {
        if (fd >= 0) {
            close(fd);
        }
    }
};

namespace {

using SharedFile = std::shared_ptr<CascadeFileStream::File>;

// False: the wait was ended, and the call runs on without us.
bool CallFor(const SharedFile& file, std::function<void(CascadeFileStream::File&)> work)
{
    ++file->hanging;
    const auto call = [file, work = std::move(work)] {
        work(*file);
        --file->hanging;
    };
    return host::CallDisk(call) == host::WaitResult::kDone;
}

// What is in memory is read here, what the disk has to bring where a wait can be ended. False: it was ended.
bool Read(const SharedFile& file, unsigned char* to, unsigned long count, unsigned long long position, unsigned long& done)
{
    done = 0;
    if (!host::CanEndWait()) {
        done = ReadAt(file->fd, to, count, position, 0);
        return true;
    }
    errno = 0;
    done = ReadAt(file->fd, to, count, position, RWF_NOWAIT);
    if (done == count || errno == 0) {
        return true;
    }
    struct Answer {
        std::vector<unsigned char> bytes;
        unsigned long count = 0;
    };
    const auto rest = std::make_shared<Answer>();
    rest->bytes.resize(count - done);
    const bool ended = !CallFor(file, [rest, from = position + done](CascadeFileStream::File& of) {
        rest->count = ReadAt(of.fd, rest->bytes.data(), rest->bytes.size(), from, 0);
    });
    if (ended) {
        return false;
    }
    std::copy_n(rest->bytes.data(), rest->count, to + done);
    done += rest->count;
    return true;
}

}    // namespace

CascadeFileStream::CascadeFileStream() = default;

CascadeFileStream::~CascadeFileStream() = default;

bool CascadeFileStream::Open(const CascadeFile& file)
{
    const auto opened = std::make_shared<File>();
    const bool ended = !CallFor(opened, [path = file.GetPath()](File& as) {
        as.fd = OpenReadable(path);
        as.size = as.fd < 0 ? 0 : SizeOf(as.fd);
    });
    if (ended || opened->fd < 0) {
        return false;
    }
    Close();
    m_pFile = opened;
    m_nSizeAtOpen = opened->size;
    return true;
}

void CascadeFileStream::Close()
{
    m_pFile.reset();
    m_nPosition = 0;
    m_nSizeAtOpen = 0;
    m_bInterrupted = false;
}

// While a server does not answer, the size is the one it told last.
unsigned long long CascadeFileStream::GetSize()
{
    if (m_pFile == nullptr) {
        return 0;
    }
    if (m_pFile->hanging == 0) {
        CallFor(m_pFile, [](File& of) { of.size = SizeOf(of.fd); });
    }
    return m_pFile->size;
}

unsigned long long CascadeFileStream::GetPosition()
{
    return m_nPosition;
}

bool CascadeFileStream::SeekToPosition(unsigned long long position)
{
    if (m_pFile == nullptr || (position > m_pFile->size && position > GetSize())) {
        return false;
    }
    m_nPosition = position;
    return true;
}

unsigned long CascadeFileStream::ReadBytes(unsigned long count, void* buffer)
{
    m_bInterrupted = false;
    if (m_pFile == nullptr) {
        return 0;
    }
    auto* const to = static_cast<unsigned char*>(buffer);
    const unsigned long long position = m_nPosition;
    unsigned long done = 0;
    m_bInterrupted = !Read(m_pFile, to, count, position, done);
    if (!m_bInterrupted && done < count && (position + done > m_nSizeAtOpen || MayBeGrowing())) {
        m_bInterrupted = !AwaitGrowth(to, count, position, done);
    }
    if (m_bInterrupted) {
        return 0;
    }
    m_nPosition = position + done;
    return done;
}

// Only the decoder's feed waits for a file that has not grown yet.
bool CascadeFileStream::MayBeGrowing() const
{
    return host::InterruptToken::Current() != nullptr && WasWrittenLately(m_pFile->fd);
}

// False: the wait was ended.
bool CascadeFileStream::AwaitGrowth(unsigned char* to, unsigned long count, unsigned long long position, unsigned long& done)
{
    const auto deadline = host::Clock::now() + kGrowthWait;
    while (done < count && host::Clock::now() < deadline) {
        unsigned long more = 0;
        if (Rest(std::min(deadline, host::Clock::now() + kGrowthPoll)) == host::WaitResult::kInterrupted
            || !Read(m_pFile, to + done, count - done, position + done, more)) {
            return false;
        }
        done += more;
    }
    if (done < count) {
        m_nSizeAtOpen = position + done;    // the recording is over: its end is not waited for twice
    }
    return true;
}
