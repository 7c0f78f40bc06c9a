#include "host/screen/WindowStack.h"

#include <algorithm>
#include <cmath>

#include "host/base/DiskCall.h"
#include "host/base/UiQueue.h"

namespace screen {

WindowStack& WindowStack::Instance()
{
    static WindowStack stack;
    return stack;
}

WindowStack::Entry* WindowStack::Find(const CascadeWindow* window) const
{
    for (const auto& entry : m_Entries) {
        if (entry->window == window) {
            return entry.get();
        }
    }
    return nullptr;
}

void WindowStack::Add(CascadeWindow* window, CascadeWindow::Plane plane)
{
    auto entry = std::make_unique<Entry>();
    entry->window = window;
    entry->plane = plane;
    entry->number = ++m_nNumber;
    const auto above = std::find_if(m_Entries.begin(), m_Entries.end(), [&](const auto& other) { return other->plane > plane; });
    m_Entries.insert(above, std::move(entry));
    CollectLayers();
    if (m_pFocus == nullptr) {
        SetFocus(window);
    }
    host::WakeUi();
}

void WindowStack::Remove(CascadeWindow* window)
{
    const auto at = std::find_if(m_Entries.begin(), m_Entries.end(), [&](const auto& entry) { return entry->window == window; });
    if (at == m_Entries.end()) {
        return;
    }
    m_Damage.Unite((*at)->layer.box);
    m_Entries.erase(at);
    CollectLayers();
    if (m_pFocus == window) {
        m_pFocus = nullptr;
        SetFocus(Heir());
    }
    host::WakeUi();
}

// The focus goes back to the topmost window that ever had it, so that a picture or a band lying on top of
// a list does not keep the keys from it.
CascadeWindow* WindowStack::Heir() const
{
    for (auto entry = m_Entries.rbegin(); entry != m_Entries.rend(); ++entry) {
        if ((*entry)->focusTurn != 0) {
            return (*entry)->window;
        }
    }
    return m_Entries.empty() ? nullptr : m_Entries.back()->window;
}

void WindowStack::SetFocus(CascadeWindow* window)
{
    if (window == m_pFocus || (window != nullptr && !Contains(window))) {
        return;
    }
    CascadeWindow* const previous = m_pFocus;
    m_pFocus = window;
    if (Entry* const entry = Find(window)) {
        entry->focusTurn = ++m_nNumber;
    }
    if (previous != nullptr && Contains(previous)) {
        previous->OnFocus(false);
    }
    // The one that lost the focus may have moved it on, or taken the other off the screen.
    if (window != nullptr && m_pFocus == window && Contains(window)) {
        window->OnFocus(true);
    }
}

bool WindowStack::IsMain(const CascadeWindow* window) const
{
    const auto first = std::min_element(m_Entries.begin(), m_Entries.end(), [](const auto& a, const auto& b) { return a->number < b->number; });
    return first != m_Entries.end() && (*first)->window == window;
}

void WindowStack::Redraw(CascadeWindow* window)
{
    if (Entry* const entry = Find(window)) {
        entry->needsPaint = true;
        host::WakeUi();
    }
}

void WindowStack::RequestRedraw(CascadeWindow* window)
{
    // A loader asks from its own thread. By the time the work runs the window may be gone; then nothing is found.
    host::PostToUi([window] { Instance().Redraw(window); });
}

void WindowStack::RedrawAll()
{
    for (const auto& entry : m_Entries) {
        entry->needsPaint = true;
    }
}

CascadeRect WindowStack::Paint(CascadeDims output)
{
    CascadeRect damage = m_Damage;
    m_Damage = {};
    // By window, not by position: painting may put windows on the screen or take them off.
    std::vector<CascadeWindow*> asking;
    for (const auto& entry : m_Entries) {
        if (entry->needsPaint) {
            asking.push_back(entry->window);
        }
    }
    for (CascadeWindow* const window : asking) {
        Entry* const before = Find(window);
        if (before == nullptr) {
            continue;
        }
        before->needsPaint = false;    // a request made while painting counts for the next turn
        Layer layer = PaintWindow(*window, output);
        if (Entry* const entry = Find(window)) {
            damage.Unite(entry->layer.box);
            damage.Unite(layer.box);
            entry->layer = std::move(layer);
        }
    }
    if (!asking.empty()) {
        CollectLayers();
    }
    damage.Intersect({0, 0, output.width, output.height});
    return damage;
}

Layer WindowStack::PaintWindow(CascadeWindow& window, CascadeDims output)
{
    CascadeRect rect = window.GetRect();
    CascadeBitmap bitmap;
    if (rect.IsEmpty() || !bitmap.Create(rect.width, rect.height)) {
        return {};
    }
    bitmap.SetOrigin({rect.left, rect.top});
    {
        const host::NoTurnScope noTurn;    // a window that asks the disk while it paints is not painted inside that
        window.OnPaint(bitmap);
    }
    auto* const painted = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
    if (painted == nullptr) {
        return {};
    }
    const CascadeDims device = DeviceDims(painted);
    const CascadeRect* const touched = TouchedArea(painted);
    const CascadeRect visible = VisibleArea(painted, touched != nullptr ? *touched : CascadeRect {0, 0, device.width, device.height});
    if (visible.IsEmpty()) {
        return {};
    }
    const double scale = ScaleFor(output);
    const CascadePoint origin = OriginOnOutput(output);
    Layer layer;
    layer.box = {origin.x + int(std::lround(rect.left * scale)) + visible.left, origin.y + int(std::lround(rect.top * scale)) + visible.top,
        visible.width, visible.height};
    layer.pixels = CreateSurface(visible.width, visible.height, 1);
    if (layer.pixels == nullptr) {
        return {};
    }
    const CairoPtr cairo(cairo_create(layer.pixels.get()));
    cairo_surface_set_device_scale(painted, 1, 1);
    cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cairo.get(), painted, -visible.left, -visible.top);
    cairo_paint(cairo.get());
    return layer;
}

void WindowStack::CollectLayers()
{
    m_Layers.clear();
    for (const auto& entry : m_Entries) {
        if (entry->layer.pixels != nullptr) {
            m_Layers.push_back(&entry->layer);
        }
    }
}

std::vector<std::string> WindowStack::Titles() const
{
    std::vector<std::string> titles;
    for (const auto& entry : m_Entries) {
        titles.push_back(entry->window->GetTitle().Str());
    }
    return titles;
}

}    // namespace screen
