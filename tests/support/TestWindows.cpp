// Windows: which are on screen, which has the focus, which asked for painting.
#include <algorithm>
#include <map>
#include <mutex>
#include <thread>

#include "platform/CascadeWindow.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

struct Shown {
    CascadeWindow* window;
    CascadeWindow::Plane plane;
    bool hadFocus = false;
};
struct PaintState {
    int redraws = 0;
    bool needed = false;
};

std::vector<Shown> g_Shown;    // lowest first
CascadeWindow* g_pFocus = nullptr;
std::map<const CascadeWindow*, PaintState> g_Paint;

std::thread::id g_TestThread;
std::mutex g_AskedMutex;
std::vector<const CascadeWindow*> g_Asked;    // for painting, by loaders; guarded by g_AskedMutex

Shown* Find(const CascadeWindow* window)
{
    const auto found = std::find_if(g_Shown.begin(), g_Shown.end(), [window](const Shown& shown) { return shown.window == window; });
    return found == g_Shown.end() ? nullptr : &*found;
}

void MoveFocus(CascadeWindow* to)
{
    if (to == g_pFocus) {
        return;
    }
    CascadeWindow* const from = g_pFocus;
    g_pFocus = to;
    if (Shown* const shown = Find(to)) {
        shown->hadFocus = true;
    }
    if (from != nullptr) {
        from->OnFocus(false);
    }
    if (to != nullptr && g_pFocus == to) {
        to->OnFocus(true);
    }
}

void AskForPainting(const CascadeWindow* window)
{
    if (Find(window) != nullptr) {
        ++g_Paint[window].redraws;
        g_Paint[window].needed = true;
    }
}

PaintState StateOf(const CascadeWindow& window)
{
    std::vector<const CascadeWindow*> asked;
    {
        const std::lock_guard lock(g_AskedMutex);
        asked.swap(g_Asked);
    }
    std::for_each(asked.begin(), asked.end(), AskForPainting);
    const auto found = g_Paint.find(&window);
    return found == g_Paint.end() ? PaintState() : found->second;
}

// The topmost window that ever had the focus, or else the topmost.
CascadeWindow* Heir()
{
    const auto heir = std::find_if(g_Shown.rbegin(), g_Shown.rend(), [](const Shown& shown) { return shown.hadFocus; });
    return heir != g_Shown.rend() ? heir->window : (g_Shown.empty() ? nullptr : g_Shown.back().window);
}

// A window that leaves the screen is not told of the focus it loses.
bool TakeOff(const CascadeWindow* window)
{
    if (std::erase_if(g_Shown, [window](const Shown& shown) { return shown.window == window; }) == 0) {
        return false;
    }
    if (g_pFocus == window) {
        g_pFocus = nullptr;
        MoveFocus(Heir());
    }
    return true;
}

}    // namespace

CascadeWindow::CascadeWindow() = default;

CascadeWindow::~CascadeWindow()
{
    TakeOff(this);
    g_Paint.erase(this);
}

void CascadeWindow::Materialize(Plane plane)
{
    if (IsMaterialized()) {
        return;
    }
    const auto above = std::find_if(g_Shown.begin(), g_Shown.end(), [plane](const Shown& shown) { return shown.plane > plane; });
    g_Shown.insert(above, {this, plane});
    Redraw();
    if (g_pFocus == nullptr) {
        MoveFocus(this);
    }
    OnMaterialize();
}

void CascadeWindow::Vanish()
{
    if (IsMaterialized()) {
        g_Paint[this].needed = false;
        TakeOff(this);
        OnVanish();    // may delete this window
    }
}

bool CascadeWindow::IsMaterialized() const
{
    return Find(this) != nullptr;
}

void CascadeWindow::SetRect(const CascadeRect& rect)
{
    if (rect != m_Rect) {
        m_Rect = rect;
        Redraw();
    }
}

void CascadeWindow::Redraw()
{
    if (std::this_thread::get_id() == g_TestThread) {
        AskForPainting(this);
        return;
    }
    const std::lock_guard lock(g_AskedMutex);
    g_Asked.push_back(this);
}

void CascadeWindow::Redraw(const CascadeRect& /*part*/)
{
    Redraw();
}

void CascadeWindow::TakeFocus()
{
    if (IsMaterialized()) {
        MoveFocus(this);
    }
}

bool CascadeWindow::HasFocus() const
{
    return g_pFocus == this;
}

void TestInternals::ResetWindows()
{
    g_Shown.clear();
    g_Paint.clear();
    g_pFocus = nullptr;
    g_TestThread = std::this_thread::get_id();
    const std::lock_guard lock(g_AskedMutex);
    g_Asked.clear();
}

namespace TestPlatform {

std::vector<CascadeWindow*> WindowsOnScreen()
{
    std::vector<CascadeWindow*> windows;
    for (const Shown& shown : g_Shown) {
        windows.push_back(shown.window);
    }
    return windows;
}

CascadeWindow* FindWindow(const std::string& title)
{
    const auto found = std::find_if(g_Shown.begin(), g_Shown.end(), [&title](const Shown& shown) { return shown.window->GetTitle() == title.c_str(); });
    return found == g_Shown.end() ? nullptr : found->window;
}

CascadeWindow* FocusWindow()
{
    return g_pFocus;
}

int RedrawCount(const CascadeWindow& window)
{
    return StateOf(window).redraws;
}

bool NeedsPaint(const CascadeWindow& window)
{
    return StateOf(window).needed;
}

std::vector<Drawing> Paint(CascadeWindow& window)
{
    const CascadeRect rect = window.GetRect();
    CascadeBitmap bitmap;
    bitmap.Create(rect.width, rect.height);
    bitmap.SetOrigin({rect.left, rect.top});
    g_Paint[&window].needed = false;
    window.OnPaint(bitmap);
    return DrawingsOn(bitmap);
}

int PaintAll()
{
    int painted = 0;
    for (CascadeWindow* const window : WindowsOnScreen()) {
        if (window->IsMaterialized() && NeedsPaint(*window)) {
            Paint(*window);
            ++painted;
        }
    }
    return painted;
}

}    // namespace TestPlatform
