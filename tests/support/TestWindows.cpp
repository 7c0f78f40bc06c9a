// Windows: which are on screen, which has the focus, which asked for painting.
#include <algorithm>
#include <map>

#include "platform/CascadeWindow.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

struct Shown {
    CascadeWindow* window;
    CascadeWindow::Plane plane;
};
struct PaintState {
    int redraws = 0;
    bool needed = false;
};

std::vector<Shown> g_Shown;    // lowest first
CascadeWindow* g_pFocus = nullptr;
std::map<const CascadeWindow*, PaintState> g_Paint;

bool TakeOff(const CascadeWindow* window)
{
    return std::erase_if(g_Shown, [window](const Shown& shown) { return shown.window == window; }) > 0;
}

void MoveFocus(CascadeWindow* to)
{
    if (to == g_pFocus) {
        return;
    }
    CascadeWindow* const from = g_pFocus;
    g_pFocus = to;
    if (from != nullptr) {
        from->OnFocus(false);
    }
    if (to != nullptr && g_pFocus == to) {
        to->OnFocus(true);
    }
}

CascadeWindow* Topmost()
{
    return g_Shown.empty() ? nullptr : g_Shown.back().window;
}

}    // namespace

CascadeWindow::CascadeWindow() = default;

CascadeWindow::~CascadeWindow()
{
    TakeOff(this);
    g_Paint.erase(this);
    if (g_pFocus == this) {
        g_pFocus = nullptr;    // this one is no longer told
        MoveFocus(Topmost());
    }
}

void CascadeWindow::Materialize(Plane plane)
{
    TakeOff(this);
    const auto above = std::find_if(g_Shown.begin(), g_Shown.end(), [plane](const Shown& shown) { return shown.plane > plane; });
    g_Shown.insert(above, {this, plane});
    Redraw();
    OnMaterialize();
}

void CascadeWindow::Vanish()
{
    if (!TakeOff(this)) {
        return;
    }
    g_Paint[this].needed = false;
    if (g_pFocus == this) {
        MoveFocus(Topmost());
    }
    OnVanish();    // may delete this window
}

bool CascadeWindow::IsMaterialized() const
{
    return std::any_of(g_Shown.begin(), g_Shown.end(), [this](const Shown& shown) { return shown.window == this; });
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
    if (IsMaterialized()) {
        ++g_Paint[this].redraws;
        g_Paint[this].needed = true;
    }
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

CascadeWindow* FocusWindow()
{
    return g_pFocus;
}

int RedrawCount(const CascadeWindow& window)
{
    const auto found = g_Paint.find(&window);
    return found == g_Paint.end() ? 0 : found->second.redraws;
}

bool NeedsPaint(const CascadeWindow& window)
{
    const auto found = g_Paint.find(&window);
    return found != g_Paint.end() && found->second.needed;
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
