#include "host/screen/SignalWatch.h"

#include <unistd.h>

namespace screen {
namespace {

constexpr int kStopWatching = SIGUSR2;    // sent to the watching thread alone, by its owner
constexpr int kLastWarning = 3;

bool IsIgnored(int signal)
{
    struct sigaction action { };
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}    // namespace

SignalWatch::SignalWatch(std::function<void(int)> onSignal)
    : m_OnSignal(std::move(onSignal))
{
    sigemptyset(&m_Watched);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (!IsIgnored(signal)) {    // as nohup asks
            sigaddset(&m_Watched, signal);
        }
    }
    sigaddset(&m_Watched, kStopWatching);
    pthread_sigmask(SIG_BLOCK, &m_Watched, &m_Before);
    std::signal(SIGPIPE, SIG_IGN);    // a closed connection is an error of its write
    m_Thread = std::thread([this] { Watch(); });
}

SignalWatch::~SignalWatch()
{
    pthread_kill(m_Thread.native_handle(), kStopWatching);
    m_Thread.join();
    pthread_sigmask(SIG_SETMASK, &m_Before, nullptr);
}

void SignalWatch::Watch()
{
    int count = 0;
    int signal = 0;
    while (sigwait(&m_Watched, &signal) == 0 && signal != kStopWatching) {
        if (++count == kLastWarning) {
            _exit(128 + signal);
        }
        m_OnSignal(count);
    }
}

}    // namespace screen
