#include "host/network/HttpStreamReader.h"

#include <algorithm>
#include <array>

#include <sys/eventfd.h>
#include <unistd.h>

namespace host {
namespace {

using namespace std::chrono_literals;

// Pauses before the tries that follow a broken connection.
constexpr std::array<std::chrono::milliseconds, 6> kPauses {50ms, 200ms, 500ms, 1000ms, 2000ms, 2000ms};
// So little ahead is sooner received than asked for anew.
constexpr uint64_t kReadThrough = 128 * 1024;
// A resource that has grown before is looked at again this often at its end, as a file would be.
constexpr int kProbesOfGrowing = 4;
constexpr auto kProbePause = 1s;

}    // namespace

HttpStreamReader::HttpStreamReader(std::string url, HttpTimeouts timeouts, HttpStreamShared& shared)
    : m_Shared(shared)
    , m_Timeouts(timeouts)
    , m_Url(std::move(url))
    , m_nWakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_Thread([this] { Run(); })
{
}

HttpStreamReader::~HttpStreamReader()
{
    {
        const std::lock_guard lock(m_Shared.mutex);
        m_Shared.abort = true;
    }
    Wake();
    m_Thread.join();
    close(m_nWakeFd);
}

void HttpStreamReader::Wake()
{
    eventfd_write(m_nWakeFd, 1);
}

void HttpStreamReader::Run()
{
    if (m_nWakeFd < 0) {
        Fail("out of file descriptors");
        return;
    }
    HttpTransfer transfer(m_Url, *this);
    m_pTransfer = &transfer;
    m_LastByte = Clock::now();
    Ask(0);
    while (TakeOrders()) {
        if (const auto result = transfer.Perform()) {
            Finish(*result);
            continue;
        }
        transfer.Wait(m_nWakeFd, m_AskAt);
        eventfd_t count = 0;
        eventfd_read(m_nWakeFd, &count);
    }
}

// False: the stream goes.
bool HttpStreamReader::TakeOrders()
{
    std::unique_lock lock(m_Shared.mutex);
    if (m_Shared.abort) {
        return false;
    }
    if (m_Shared.order != m_nOrder) {
        m_nOrder = m_Shared.order;
        const uint64_t target = m_Shared.window.End();
        const bool probe = m_Shared.orderIsProbe;
        const std::optional<uint64_t> size = m_Shared.size;
        lock.unlock();
        BeginOrder(target, probe, size);
        return true;
    }
    const bool mayFlow = m_Shared.mayFlow;
    lock.unlock();
    if (mayFlow) {
        m_pTransfer->Resume();
    }
    if (Clock::now() >= m_AskAt) {
        AskAgain(m_bProbe ? std::string() : m_Validator);
    }
    return true;
}

void HttpStreamReader::BeginOrder(uint64_t target, bool probe, std::optional<uint64_t> size)
{
    m_bProbe = probe;
    m_nProbes = 0;
    m_nTries = 0;
    m_bReplaced = false;
    m_AskAt = Clock::time_point::max();
    m_LastByte = Clock::now();
    if (!probe && size && target >= *size) {
        m_pTransfer->Stop();
        End();
        return;
    }
    const bool onItsWay = m_pTransfer->IsRunning() && m_bAnswered && m_nBodyAt <= target;
    if (onItsWay && (m_bRangesFail || target - m_nBodyAt <= kReadThrough)) {
        m_nEndAtTry = target;
        m_pTransfer->Resume();
        return;
    }
    AskAgain();
}

void HttpStreamReader::AskAgain(std::string ifRange)
{
    uint64_t from = 0;
    {
        const std::lock_guard lock(m_Shared.mutex);
        from = m_Shared.window.End();
    }
    Ask(from, std::move(ifRange));
}

void HttpStreamReader::Ask(uint64_t from, std::string ifRange)
{
    m_AskAt = Clock::time_point::max();
    m_nEndAtTry = from;
    m_Request = HttpRequest();
    if (from > 0 && !m_bRangesFail) {
        m_Request = {from, true, std::move(ifRange)};
    }
    m_bAnswered = false;
    m_Judgement = HttpJudgement();
    m_nBodyAt = m_Request.from;
    HttpPatience patience {m_Timeouts.connect, m_Timeouts.silence, m_Timeouts.silence, Clock::time_point::max()};
    if (m_bReplaced) {
        patience.answerBy = m_LastByte + m_Timeouts.silence;
    }
    if (!m_pTransfer->Start(m_Request, patience)) {
        Fail("not an http address");
    }
}

bool HttpStreamReader::OnAnswer(const HttpAnswer& answer)
{
    const std::lock_guard lock(m_Shared.mutex);
    m_bAnswered = true;
    m_Judgement = JudgeHttpAnswer(m_Request, answer, m_Shared.size);
    if (m_bProbe && m_Judgement.verdict == HttpVerdict::kTake && m_Judgement.start != m_Request.from) {
        m_Judgement.verdict = HttpVerdict::kEnd;    // not worth reading everything again
    }
    if (m_Judgement.verdict == HttpVerdict::kAskUnconditionally) {
        m_Validator = answer.Validator();
    }
    if (m_Judgement.verdict == HttpVerdict::kTake || m_Judgement.verdict == HttpVerdict::kEnd) {
        NoteSize(m_Judgement);
    }
    if (m_Judgement.verdict != HttpVerdict::kTake) {
        return false;
    }
    m_bProbe = false;    // there is more: from here on it is a stream like any other
    m_Validator = answer.Validator();
    m_nBodyAt = m_Judgement.start;
    if (m_Request.ranged && answer.status != 206) {
        m_bRangesFail = true;
        m_Shared.rangesWork = false;
    } else if (answer.status == 206 || answer.acceptsRanges) {
        m_Shared.rangesWork = true;
    }
    if (m_bReplaced || m_Shared.rangesWork) {
        m_pTransfer->SetBodyPatience(m_Timeouts.silence / 2);    // see EndSilence
    }
    if (m_Shared.state == HttpStreamShared::State::kOpening) {
        m_Shared.state = HttpStreamShared::State::kFlowing;
        m_Shared.changed.NotifyAll();
    }
    return true;
}

// With the lock held.
void HttpStreamReader::NoteSize(const HttpJudgement& judgement)
{
    if (judgement.size) {
        m_bGrown = m_bGrown || (m_Shared.size && *judgement.size > *m_Shared.size);
        m_Shared.size = judgement.size;
        m_Shared.sizeStated = true;
    }
}

HttpTransferClient::Take HttpStreamReader::OnBytes(const uint8_t* data, size_t length)
{
    const std::lock_guard lock(m_Shared.mutex);
    m_LastByte = Clock::now();
    m_bReplaced = false;
    HttpStreamWindow& window = m_Shared.window;
    if (m_nBodyAt > window.End()) {
        return Take::kStop;    // the reading side has gone back; its order is about to be taken
    }
    const auto passed = static_cast<size_t>(std::min<uint64_t>(length, window.End() - m_nBodyAt));
    const size_t fresh = length - passed;
    if (fresh > window.Room(m_Shared.readPosition)) {
        m_Shared.mayFlow = false;
        return Take::kPause;
    }
    window.Append(data + passed, fresh);
    m_nBodyAt += length;
    if (m_Shared.size && m_nBodyAt > *m_Shared.size) {
        m_Shared.size = m_nBodyAt;
    }
    if (window.End() >= m_Shared.wantedEnd) {
        m_Shared.changed.NotifyAll();
    }
    return Take::kTaken;
}

void HttpStreamReader::Finish(const HttpTransfer::Result& result)
{
    using Kind = HttpTransfer::Result::Kind;
    bool opening = false;
    {
        const std::lock_guard lock(m_Shared.mutex);
        if (m_Shared.order != m_nOrder) {
            return;    // of a transfer that no one wants any more
        }
        opening = m_Shared.state == HttpStreamShared::State::kOpening;
    }
    if (m_bAnswered && m_Judgement.verdict != HttpVerdict::kTake) {
        FinishJudged(m_Judgement.text);
    } else if (result.kind == Kind::kComplete && m_bAnswered) {
        Complete();
    } else if (m_bProbe) {
        End();
    } else if (opening || result.kind == Kind::kImpossible) {
        Fail(result.text);
    } else if (result.kind == Kind::kSilent) {
        EndSilence(result.text);
    } else {
        TryAgain(result.text);
    }
}

void HttpStreamReader::FinishJudged(const std::string& text)
{
    switch (m_Judgement.verdict) {
    case HttpVerdict::kRestartWhole:
        if (m_bProbe) {
            End();
            break;
        }
        m_bRangesFail = true;
        AskAgain();
        break;
    case HttpVerdict::kAskUnconditionally:
        AskAgain();
        break;
    case HttpVerdict::kEnd:
        if (m_bProbe && m_bGrown && ++m_nProbes < kProbesOfGrowing) {
            m_AskAt = Clock::now() + kProbePause;
        } else {
            End();
        }
        break;
    case HttpVerdict::kTryAgain:
        m_bProbe ? End() : TryAgain(text);
        break;
    case HttpVerdict::kTake:
    case HttpVerdict::kRefuse:
        m_bProbe ? End() : Fail(text);
        break;
    }
}

// The server has sent all that it announced.
void HttpStreamReader::Complete()
{
    uint64_t end = 0;
    bool more = false;
    {
        const std::lock_guard lock(m_Shared.mutex);
        end = m_Shared.window.End();
        more = m_Shared.size && m_nBodyAt < *m_Shared.size;
        if (!m_Shared.size) {
            m_Shared.size = m_nBodyAt;
        }
    }
    if (!more) {
        End();
    } else if (end > m_nEndAtTry && m_Request.ranged) {
        m_nTries = 0;
        AskAgain(m_Validator);    // a server that answers a range piece by piece
    } else {
        TryAgain("the server sends less than it states");
    }
}

void HttpStreamReader::TryAgain(const std::string& text)
{
    uint64_t end = 0;
    bool opening = false;
    {
        const std::lock_guard lock(m_Shared.mutex);
        end = m_Shared.window.End();
        opening = m_Shared.state == HttpStreamShared::State::kOpening;
    }
    if (opening) {
        Fail(text);
        return;
    }
    if (end > m_nEndAtTry) {
        m_nTries = 0;
    } else if (m_bAnswered && !m_Request.ranged && m_nTries > 0) {
        Fail(text);    // the whole resource again, broken off at the same place: that is all there is
        return;
    }
    if (m_nTries == static_cast<int>(kPauses.size()) || Clock::now() - m_LastByte >= m_Timeouts.silence) {
        Fail(text);
        return;
    }
    m_AskAt = Clock::now() + kPauses[static_cast<size_t>(m_nTries++)];
}

// A connection can die unnoticed (a router that forgot it, a change of network). Where the rest can be asked
// for, that is tried in the second half of the time that the server has.
void HttpStreamReader::EndSilence(const std::string& text)
{
    bool ranges = false;
    {
        const std::lock_guard lock(m_Shared.mutex);
        ranges = m_Shared.rangesWork;
    }
    if (m_bAnswered && !m_bReplaced && ranges) {
        m_bReplaced = true;
        AskAgain(m_Validator);
    } else {
        Fail(text);
    }
}

void HttpStreamReader::End()
{
    const std::lock_guard lock(m_Shared.mutex);
    if (m_Shared.order == m_nOrder) {
        m_Shared.state = HttpStreamShared::State::kEnded;
        m_Shared.changed.NotifyAll();
    }
}

void HttpStreamReader::Fail(const std::string& text)
{
    const std::lock_guard lock(m_Shared.mutex);
    if (m_Shared.order == m_nOrder) {
        m_Shared.state = HttpStreamShared::State::kFailed;
        m_Shared.error = text;
        m_Shared.changed.NotifyAll();
    }
}

}    // namespace host
