#include "host/screen/HostLoop.h"

#include "host/base/HostHooks.h"
#include "host/screen/SignalWatch.h"
#include "host/screen/TimerQueue.h"
#include "host/screen/WindowStack.h"
#include "platform/CascadeApp.h"
#include "platform/RemoteKeys.h"

namespace screen {

using host::Clock;

namespace {

// After the last sign of activity; the player gives one every two seconds while it plays.
constexpr auto kStayAwake = std::chrono::seconds(10);

HostLoop* g_pLoop = nullptr;
std::atomic<bool> g_bListening {false};

}    // namespace

HostLoop::HostLoop()
    : m_AwakeUntil(Clock::time_point::max())
{
}
HostLoop::~HostLoop()
{
    Stop();
}

HostLoop* HostLoop::Current()
{
    return g_pLoop;
}
bool HostLoop::IsListening()
{
    return g_bListening;
}

void HostLoop::Start(const host::HostOptions& options)
{
    m_pSignals = std::make_unique<SignalWatch>([this](int) { host::PostToUi([this] { OnCloseWanted(); }); });
    m_pScreen = std::make_unique<Screen>(OpenDisplay(options), options.stretch);
    m_bEnded = false;
    g_pLoop = this;
    host::SetUiLoop(this);
    g_bListening = true;
    InstallHooks();
}

void HostLoop::Stop()
{
    if (g_pLoop != this) {
        return;
    }
    g_bListening = false;
    m_pSignals.reset();
    host::SetUiLoop(nullptr);
    g_pLoop = nullptr;
    EventQueue::Instance().Clear();
    host::Hooks().takeScreenshot = nullptr;
    host::Hooks().windowTitles = nullptr;
    host::Hooks().screenStats = nullptr;
    host::Hooks().screenFeed = nullptr;
    host::Hooks().repeatKey = nullptr;
    host::Hooks().typeText = nullptr;
    m_pScreen.reset();
}

void HostLoop::InstallHooks()
{
    host::Hooks().takeScreenshot = [this] { return m_pScreen->TakeScreenshot(); };
    host::Hooks().windowTitles = [] { return WindowStack::Instance().Titles(); };
    host::Hooks().screenStats = [this] { return m_pScreen->Stats(); };
    host::Hooks().screenFeed = [this](uint64_t seen) { return m_pScreen->Feed(seen); };
    host::Hooks().repeatKey = [](uint32_t key) {
        Event event;
        event.kind = Event::Kind::kKeyDown;
        event.key = key;
        event.repeat = true;
        EventQueue::Instance().Push(std::move(event));
    };
    host::Hooks().typeText = [](const std::string& utf8) {
        Event event;
        event.kind = Event::Kind::kText;
        event.text = utf8;
        EventQueue::Instance().Push(std::move(event));
    };
}

void HostLoop::Wake()
{
    m_pScreen->GetDisplay().Wake();
}

void HostLoop::End()
{
    m_bEnded = true;
    if (host::UiWaitDepth() > 0) {
        host::EndUiWait();
    }
    host::WakeUi();
}

void HostLoop::KeepScreenAwake()
{
    if (m_AwakeUntil == Clock::time_point::max()) {
        m_pScreen->GetDisplay().LetScreenSleep(false);
    }
    m_AwakeUntil = Clock::now() + kStayAwake;
}

// Not by way of the Exit key, which may only close a menu: who closes the window, or sends a signal, means
// the program. The application saves and closes everything in OnAppExit.
void HostLoop::OnCloseWanted()
{
    End();
}

void HostLoop::TakeInput()
{
    DisplayEvents events;
    m_pScreen->GetDisplay().TakeEvents(events);
    for (Event& event : events.input) {
        EventQueue::Instance().Push(std::move(event));
    }
    if (events.closeWanted) {
        OnCloseWanted();
    }
    if (events.exposed) {
        m_pScreen->Expose();
    }
}

void HostLoop::DeliverEvents()
{
    for (Event& event : m_HeldBack) {
        m_Keys.Deliver(event);
        host::ClearUiWaitEnd();
    }
    m_HeldBack.clear();
    // What the events queue anew is for the next turn, so that a flood of messages does not stop the picture.
    Event event;
    for (size_t left = EventQueue::Instance().Size(); left > 0 && !m_bEnded && EventQueue::Instance().Take(event); --left) {
        if (event.kind == Event::Kind::kAction) {
            event.action();
        } else if (event.kind == Event::Kind::kMessage) {
            if (CascadeApp::s_pTheApp != nullptr) {
                CascadeApp::s_pTheApp->OnWormholeMessage(event.message);
            }
        } else {
            m_Keys.Deliver(event);
        }
        event = {};
        host::ClearUiWaitEnd();
    }
}

void HostLoop::DeliverInputWhileWaiting()
{
    Event event;
    while (EventQueue::Instance().TakeInput(event)) {
        if (!m_Keys.DeliverWhileWaiting(event)) {
            m_HeldBack.push_back(std::move(event));
        }
    }
}

void HostLoop::Sleep(Clock::time_point until)
{
    if (m_AwakeUntil != Clock::time_point::max()) {
        if (Clock::now() >= m_AwakeUntil) {
            m_pScreen->GetDisplay().LetScreenSleep(true);
            m_AwakeUntil = Clock::time_point::max();
        }
        until = std::min(until, m_AwakeUntil);
    }
    m_pScreen->GetDisplay().Wait(until);
}

void HostLoop::TurnOnce(Clock::time_point until)
{
    m_pScreen->CountTurn();
    TakeInput();
    DeliverEvents();
    host::DrainUiQueue();
    host::ClearUiWaitEnd();
    if (!m_bEnded) {
        TimerQueue::Instance().RunDue(Clock::now(), [this] {
            host::ClearUiWaitEnd();
            return !m_bEnded;
        });
    }
    if (!m_bEnded) {
        const Clock::time_point nextPicture = m_pScreen->Turn();
        Sleep(std::min({until, nextPicture, TimerQueue::Instance().NextDue()}));
    }
}

void HostLoop::TurnWhileWaiting(Clock::time_point until)
{
    m_pScreen->CountTurn();
    TakeInput();
    DeliverInputWhileWaiting();
    host::DrainUiQueue();
    const Clock::time_point nextPicture = m_pScreen->Turn();
    if (!host::UiWaitWasEnded() && !host::UiWaitNotified()) {
        Sleep(std::min(until, nextPicture));
    }
}

void HostLoop::Run()
{
    while (!m_bEnded) {
        TurnOnce(Clock::time_point::max());
    }
}

}    // namespace screen
