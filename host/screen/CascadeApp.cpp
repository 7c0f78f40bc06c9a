#include "platform/CascadeApp.h"

#include <cstdio>
#include <string>
#include <vector>

#include <climits>
#include <malloc.h>
#include <unistd.h>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/base/UiQueue.h"
#include "host/screen/HostLoop.h"
#include "host/screen/ProcessClock.h"
#include "host/screen/TimerQueue.h"
#include "host/screen/Version.h"

using screen::Event;
using screen::EventQueue;
using screen::HostLoop;
using screen::MillisecondsSinceProcessStart;
using screen::TimerQueue;

CascadeApp* CascadeApp::s_pTheApp = nullptr;

namespace {

constexpr int kBadOption = 2;
// What a command that its owner does not know is answered with.
constexpr const char* kUnknownCommand = "Unknown command";

struct RunState {
    std::vector<std::string> args;
    int exitCode = 0;
    bool terminated = false;
};

RunState& State()
{
    static RunState state;
    return state;
}

// A picture or a window's surface takes megabytes and comes and goes. Left to itself the allocator begins to
// keep such blocks in its heap, where they stay resident and have to be cleared by hand.
void KeepMemorySmall()
{
    mallopt(M_MMAP_THRESHOLD, 512 * 1024);
    mallopt(M_TRIM_THRESHOLD, 512 * 1024);
}

// The program as the kernel knows it: a bare name that the shell found on its path gets its folder.
std::string ProgramPath(const std::string& given)
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 && length < ssize_t(sizeof path) ? std::string(path, size_t(length)) : given;
}

}    // namespace

CascadeApp::CascadeApp()
{
    s_pTheApp = this;
}

CascadeApp::~CascadeApp()
{
    if (s_pTheApp == this) {
        s_pTheApp = nullptr;
    }
}

int CascadeApp::Run(int argc, char** argv)
{
    host::ParsedCommandLine parsed = host::ParseHostOptions(argc, argv);
    if (!parsed.error.empty()) {
        std::fprintf(stderr, "%s\n", parsed.error.c_str());
        return kBadOption;
    }
    if (parsed.options.help || parsed.options.version) {
        std::fputs(parsed.options.help ? host::HostHelpText() : screen::kVersionText, stdout);
        return 0;
    }
    KeepMemorySmall();
    host::SetCurrentHostOptions(parsed.options);
    State() = {};
    State().args = std::move(parsed.rest);
    if (State().args.empty()) {
        State().args.emplace_back();
    }
    State().args[0] = ProgramPath(State().args[0]);

    HostLoop loop;
    loop.Start(host::CurrentHostOptions());
    host::StartRemoteServices();    // without these the player plays all the same; they have said why
    host::StartNetworkServices();
    host::StartDesktopServices();
    TimerQueue::Instance().CountFrom(host::Clock::now() - std::chrono::milliseconds(MillisecondsSinceProcessStart()));
    OnAppInit();
    TimerQueue::Instance().CountFrom(std::nullopt);
    host::ClearUiWaitEnd();
    if (!State().terminated) {
        host::StartLibraryServices();
        loop.Run();
    }
    OnAppExit();
    host::StopLibraryServices();
    host::StopDesktopServices();
    host::StopNetworkServices();
    host::StopRemoteServices();
    loop.Stop();
    return State().exitCode;
}

void CascadeApp::Terminate(int exitCode)
{
    State().exitCode = exitCode;
    State().terminated = true;
    if (HostLoop* const loop = HostLoop::Current()) {
        loop->End();
    }
}

int CascadeApp::GetArgCount() const
{
    return int(State().args.size());
}

const char* CascadeApp::GetArg(int index) const
{
    return index >= 0 && index < GetArgCount() ? State().args[size_t(index)].c_str() : "";
}

CascadeString CascadeApp::GetProgramName() const
{
    const std::string path = GetArg(0);
    return path.substr(path.rfind('/') + 1);
}

void CascadeApp::RegisterECPCommand(const char* prefix)
{
    host::ClaimCommandPrefix(prefix, [](const std::string& command) {
        CascadeString reply(kUnknownCommand);
        if (s_pTheApp != nullptr) {
            s_pTheApp->OnECPCommand(command, reply);
        }
        return reply.Str();
    });
}

const char* CascadeApp::GetWormholeAddress() const
{
    return screen::kWormholeAddress;
}

bool CascadeApp::IsWaiting() const
{
    return host::UiWaitDepth() > 0;
}
bool CascadeApp::WaitWasEnded() const
{
    return host::UiWaitWasEnded();
}
void CascadeApp::EndWait()
{
    host::EndUiWait();
}

void CascadeApp::PostAfterWait(std::function<void()> action)
{
    Event event;
    event.kind = Event::Kind::kAction;
    event.action = std::move(action);
    EventQueue::Instance().Push(std::move(event));
}
