#include "platform/CascadeHTTPStream.h"

#include <algorithm>

#include "host/network/HttpStreamReader.h"

namespace {

using namespace std::chrono_literals;
using host::Clock;
using host::HttpStreamShared;
using State = HttpStreamShared::State;

constexpr std::chrono::microseconds kDefaultTimeout = 15s;
// A read waits until a piece of this size is there, so that an ended wait has taken nothing. Below what
// the window holds ahead by more than the room that makes a resting transfer flow again.
constexpr unsigned long kPiece = 1024 * 1024;
constexpr size_t kRoomToFlow = 512 * 1024;
static_assert(kPiece + kRoomToFlow < host::HttpStreamWindow::kAhead);
// Reads at the end ask the server this often whether there is more.
constexpr auto kProbeEvery = 3s;
// The thread keeps the time-outs; this only keeps a wait from being endless.
constexpr auto kWaitSlice = 1h;

}    // namespace

class CascadeHTTPStream::Impl {
public:
    bool Open(const char* url, std::string& error);
    unsigned long long Size();
    unsigned long long Position();
    bool Seek(unsigned long long position);
    unsigned long Read(unsigned long count, uint8_t* buffer);

    std::chrono::microseconds m_ConnectTimeout = kDefaultTimeout;
    std::chrono::microseconds m_SilenceTimeout = kDefaultTimeout;
    bool m_bInterrupted = false;

private:
    void Order(bool probe);
    void LetFlow();
    bool MayProbe() const;
    host::WaitResult WaitFor(std::unique_lock<std::mutex>& lock, uint64_t end);

    std::unique_ptr<HttpStreamShared> m_Shared;
    std::unique_ptr<host::HttpStreamReader> m_Reader;    // gone before what it shares
    uint64_t m_nProbedEnd = UINT64_MAX;    // the end that was asked about last
    Clock::time_point m_NextProbe;    // when it may be asked about again
};

bool CascadeHTTPStream::Impl::Open(const char* url, std::string& error)
{
    m_Reader.reset();
    m_Shared = std::make_unique<HttpStreamShared>();
    m_nProbedEnd = UINT64_MAX;
    m_Reader = std::make_unique<host::HttpStreamReader>(url, host::HttpTimeouts {m_ConnectTimeout, m_SilenceTimeout}, *m_Shared);
    bool open = false;
    {
        std::unique_lock lock(m_Shared->mutex);
        const auto answered = [this] { return m_Shared->state != State::kOpening; };
        const host::WaitResult result = m_Shared->changed.Wait(lock, answered, Clock::now() + kWaitSlice);
        open = result == host::WaitResult::kDone && m_Shared->state != State::kFailed;
        error = result == host::WaitResult::kDone ? m_Shared->error : "ended from outside";
    }
    if (!open) {
        m_Reader.reset();
        m_Shared.reset();
    }
    return open;
}

unsigned long long CascadeHTTPStream::Impl::Size()
{
    if (m_Shared == nullptr) {
        return 0;
    }
    const std::lock_guard lock(m_Shared->mutex);
    const uint64_t size = m_Shared->size.value_or(0);
    return size > m_Shared->readPosition ? size - m_Shared->readPosition : 0;
}

unsigned long long CascadeHTTPStream::Impl::Position()
{
    if (m_Shared == nullptr) {
        return 0;
    }
    const std::lock_guard lock(m_Shared->mutex);
    return m_Shared->readPosition;
}

// With the lock held: has the thread go on at the window's end.
void CascadeHTTPStream::Impl::Order(bool probe)
{
    ++m_Shared->order;
    m_Shared->orderIsProbe = probe;
    m_Shared->mayFlow = true;
    m_Shared->state = State::kFlowing;
    m_Reader->Wake();
}

// With the lock held: has a resting transfer go on once there is room worth it.
void CascadeHTTPStream::Impl::LetFlow()
{
    if (!m_Shared->mayFlow && m_Shared->window.Room(m_Shared->readPosition) >= kRoomToFlow) {
        m_Shared->mayFlow = true;
        m_Reader->Wake();
    }
}

bool CascadeHTTPStream::Impl::Seek(unsigned long long position)
{
    if (m_Shared == nullptr || position > INT64_MAX) {
        return false;
    }
    const std::lock_guard lock(m_Shared->mutex);
    HttpStreamShared& shared = *m_Shared;
    if (shared.size && position > *shared.size) {
        return false;
    }
    const bool held = shared.window.Contains(position);
    shared.readPosition = position;
    if (!held) {
        shared.window.Reset(position);
    }
    if (!held || shared.state == State::kFailed) {
        Order(false);    // also another try with a server that had failed
    } else {
        LetFlow();
    }
    return true;
}

// With the lock held. Only a resource of stated size, on a server that can send its rest, is looked at again.
bool CascadeHTTPStream::Impl::MayProbe() const
{
    return m_Shared->state == State::kEnded && m_Shared->rangesWork && m_Shared->sizeStated;
}

// With the lock held. Done: the window reaches `end`, or nothing more comes.
host::WaitResult CascadeHTTPStream::Impl::WaitFor(std::unique_lock<std::mutex>& lock, uint64_t end)
{
    HttpStreamShared& shared = *m_Shared;
    const auto ready = [&shared, end] { return shared.window.End() >= end || shared.state == State::kEnded || shared.state == State::kFailed; };
    shared.wantedEnd = end;
    bool lateEnough = Clock::now() >= m_NextProbe;
    host::WaitResult result = shared.changed.Wait(lock, ready, Clock::now() + kWaitSlice);
    while (result == host::WaitResult::kDone && shared.window.End() < end && MayProbe() && (lateEnough || shared.window.End() != m_nProbedEnd)) {
        lateEnough = false;
        m_nProbedEnd = shared.window.End();
        Order(true);
        result = shared.changed.Wait(lock, ready, Clock::now() + kWaitSlice);
        m_NextProbe = Clock::now() + kProbeEvery;
    }
    shared.wantedEnd = UINT64_MAX;
    return result;
}

unsigned long CascadeHTTPStream::Impl::Read(unsigned long count, uint8_t* buffer)
{
    m_bInterrupted = false;
    if (m_Shared == nullptr) {
        return 0;
    }
    HttpStreamShared& shared = *m_Shared;
    std::unique_lock lock(shared.mutex);
    const uint64_t start = shared.readPosition;
    unsigned long done = 0;
    while (done < count) {
        const unsigned long piece = std::min(count - done, kPiece);
        if (WaitFor(lock, shared.readPosition + piece) == host::WaitResult::kInterrupted) {
            m_bInterrupted = true;
            break;
        }
        const size_t taken = shared.window.Copy(shared.readPosition, buffer + done, piece);
        shared.readPosition += taken;
        done += taken;
        LetFlow();
        if (taken < piece) {
            break;
        }
    }
    if (!m_bInterrupted) {
        return done;
    }
    lock.unlock();
    if (done != 0) {
        (void)Seek(start);
    }
    return 0;
}

CascadeHTTPStream::CascadeHTTPStream()
    : m_pImpl(std::make_unique<Impl>())
{
}

CascadeHTTPStream::~CascadeHTTPStream() = default;

void CascadeHTTPStream::SetConnectTimeout(unsigned long microseconds)
{
    m_pImpl->m_ConnectTimeout = std::chrono::microseconds(microseconds);
}

void CascadeHTTPStream::SetReceiveTimeout(unsigned long microseconds)
{
    m_pImpl->m_SilenceTimeout = std::chrono::microseconds(microseconds);
}

bool CascadeHTTPStream::Open(const char* url)
{
    std::string error;
    const bool open = m_pImpl->Open(url == nullptr ? "" : url, error);
    // Kept for diagnostics: why there is no stream.
    if (open) {
        RemoveMetadata("error");
    } else {
        AddMetadata("error", error.c_str());
    }
    return open;
}

unsigned long long CascadeHTTPStream::GetSize()
{
    return m_pImpl->Size();
}

unsigned long long CascadeHTTPStream::GetPosition()
{
    return m_pImpl->Position();
}

bool CascadeHTTPStream::SeekToPosition(unsigned long long position)
{
    return m_pImpl->Seek(position);
}

unsigned long CascadeHTTPStream::ReadBytes(unsigned long count, void* buffer)
{
    return m_pImpl->Read(count, static_cast<uint8_t*>(buffer));
}

bool CascadeHTTPStream::WasInterrupted() const
{
    return m_pImpl->m_bInterrupted;
}
