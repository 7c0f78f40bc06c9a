// The application object, its keys, its waiting and its messages, driven by the test.
#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/CascadeApp.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeInput.h"
#include "platform/CascadeWindow.h"
#include "platform/CascadeWormhole.h"
#include "platform/RemoteKeys.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

struct DispatchedKey {
    unsigned long key;
    bool down;
};
struct AppState {
    std::vector<std::string> args;
    bool terminated = false;
    bool waiting = false;
    bool waitEnded = false;
    std::deque<std::function<void()>> afterWait;
    std::vector<DispatchedKey> keys;    // not yet delivered
    std::map<unsigned long, CascadeWindow*> takenBy;    // keys that are down and that a window handled
    int activity = 0;
};
AppState g_App;

std::mutex g_MessageMutex;
std::vector<TestPlatform::PostedMessage> g_Messages;    // guarded by g_MessageMutex
bool g_bRefuseMessages = false;    // guarded by g_MessageMutex

}    // namespace

// ---- the platform

CascadeApp* CascadeApp::s_pTheApp = nullptr;

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

void CascadeApp::Terminate(int /*exitCode*/)
{
    g_App.terminated = true;
}

int CascadeApp::GetArgCount() const
{
    return static_cast<int>(g_App.args.size());
}

const char* CascadeApp::GetArg(int index) const
{
    return index >= 0 && index < GetArgCount() ? g_App.args[static_cast<size_t>(index)].c_str() : "";
}

CascadeString CascadeApp::GetProgramName() const
{
    return CascadeFSObject(GetArg(0)).GetName();
}

void CascadeApp::RegisterECPCommand(const char* /*prefix*/) { }

const char* CascadeApp::GetWormholeAddress() const
{
    return "wormhole://localhost/orvandi.nuvid";
}

bool CascadeApp::IsWaiting() const
{
    return g_App.waiting;
}

bool CascadeApp::WaitWasEnded() const
{
    return g_App.waitEnded;
}

void CascadeApp::EndWait()
{
    g_App.waitEnded = true;
}

void CascadeApp::PostAfterWait(std::function<void()> action)
{
    g_App.afterWait.push_back(std::move(action));
}

void CascadeInput::NotifyScreenActivity()
{
    ++g_App.activity;
}

void CascadeInput::DispatchKeyDown(unsigned long key)
{
    g_App.keys.push_back({key, true});
}

void CascadeInput::DispatchKeyUp(unsigned long key)
{
    g_App.keys.push_back({key, false});
}

bool CascadeWormhole::PostMessage(const char* address, uint32_t id, const void* data, size_t size)
{
    const std::lock_guard lock(g_MessageMutex);
    if (g_bRefuseMessages) {
        return false;
    }
    const auto* const bytes = static_cast<const unsigned char*>(data);
    g_Messages.push_back(
        {address == nullptr ? "" : address, id, bytes == nullptr ? std::vector<unsigned char>() : std::vector<unsigned char>(bytes, bytes + size)});
    return true;
}

// ---- the test's side

namespace TestInternals {

void ResetApp()
{
    g_App = AppState();
    const std::lock_guard lock(g_MessageMutex);
    g_Messages.clear();
    g_bRefuseMessages = false;
}

bool IsWaiting()
{
    return g_App.waiting;
}

void SetWaiting(bool waiting)
{
    g_App.waiting = waiting;
}

bool WaitWasEnded()
{
    return g_App.waitEnded;
}

}    // namespace TestInternals

namespace TestPlatform {

void Reset()
{
    TestInternals::ResetApp();
    TestInternals::ResetTimers();
    TestInternals::ResetWindows();
    TestInternals::ResetDrawing();
    TestInternals::ResetJpegs();
    TestInternals::ResetScreen();
    TestInternals::ResetStreams();
    TestInternals::ResetDecoder();
    TestInternals::ResetUPnP();
}

void SetArgs(std::vector<std::string> args)
{
    g_App.args = std::move(args);
}

bool WasTerminated()
{
    return g_App.terminated;
}

std::string Command(const char* text)
{
    CascadeString reply("Unknown command");
    if (CascadeApp::s_pTheApp != nullptr) {
        CascadeApp::s_pTheApp->OnECPCommand(text, reply);
    }
    return reply.Str();
}

void KeyDown(unsigned long key)
{
    CascadeApp* const app = CascadeApp::s_pTheApp;
    if (g_App.waiting) {
        if (app != nullptr) {
            app->OnKeyWhileWaiting(key);
        }
        return;
    }
    if (CascadeWindow* const window = FocusWindow()) {
        CascadeWindow* next = nullptr;
        const bool navigation = Remote::IsNavigation(static_cast<uint32_t>(key));
        if (navigation ? window->OnNavKey(key, next) : window->OnKeyDown(key)) {
            g_App.takenBy[key] = next != nullptr ? next : window;
            if (next != nullptr) {
                next->TakeFocus();
            }
            return;
        }
    }
    g_App.takenBy.erase(key);
    if (app != nullptr) {
        app->OnKeyDown(key);
    }
}

void KeyUp(unsigned long key)
{
    if (g_App.waiting) {
        return;
    }
    if (const auto taken = g_App.takenBy.extract(key)) {
        const std::vector<CascadeWindow*> windows = WindowsOnScreen();
        if (std::find(windows.begin(), windows.end(), taken.mapped()) != windows.end()) {
            taken.mapped()->OnKeyUp(key);
        }
        return;
    }
    CascadeWindow* const window = FocusWindow();
    if ((window == nullptr || !window->OnKeyUp(key)) && CascadeApp::s_pTheApp != nullptr) {
        CascadeApp::s_pTheApp->OnKeyUp(key);
    }
}

void PressKey(unsigned long key)
{
    KeyDown(key);
    KeyUp(key);
}

void PressKeys(const std::vector<unsigned long>& keys)
{
    for (const unsigned long key : keys) {
        PressKey(key);
    }
}

bool TypeText(const char* utf8)
{
    CascadeWindow* const window = FocusWindow();
    return window != nullptr && window->OnText(utf8);
}

int DeliverKeys()
{
    const std::vector<DispatchedKey> keys = std::exchange(g_App.keys, {});
    for (const DispatchedKey& key : keys) {
        key.down ? KeyDown(key.key) : KeyUp(key.key);
    }
    return static_cast<int>(keys.size());
}

int ScreenActivity()
{
    return g_App.activity;
}

void LeaveEvent()
{
    g_App.waitEnded = false;
    while (!g_App.waiting && !g_App.afterWait.empty()) {
        const std::function<void()> action = std::move(g_App.afterWait.front());
        g_App.afterWait.pop_front();
        action();
    }
}

std::vector<PostedMessage> Messages()
{
    const std::lock_guard lock(g_MessageMutex);
    return g_Messages;
}

void RefuseMessages(bool refuse)
{
    const std::lock_guard lock(g_MessageMutex);
    g_bRefuseMessages = refuse;
}

}    // namespace TestPlatform
