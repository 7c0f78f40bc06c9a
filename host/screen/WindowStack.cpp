#include "host/screen/WindowStack.h"

#include <algorithm>
#include <utility>

#include "host/base/UiQueue.h"
#include "host/screen/WindowPaint.h"

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

void WindowStack::Redraw(CascadeWindow* window, const CascadeRect& part)
{
    if (Entry* const entry = Find(window)) {
        entry->parts.Unite(part);
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

Damage WindowStack::Paint(CascadeDims output)
{
    Damage damage = m_Damage;
    m_Damage = {};
    // By window, not by position: painting may put windows on the screen or take them off.
    std::vector<CascadeWindow*> asking;
    for (const auto& entry : m_Entries) {
        if (entry->needsPaint || !entry->parts.IsEmpty()) {
            asking.push_back(entry->window);
        }
    }
    for (CascadeWindow* const window : asking) {
        Entry* const entry = Find(window);
        if (entry == nullptr) {
            continue;
        }
        const bool whole = entry->needsPaint;
        const Damage parts = std::exchange(entry->parts, {});
        entry->needsPaint = false;    // a request made while painting counts for the next turn
        if (whole) {
            damage.Unite(PaintWhole(*window, output));
            continue;
        }
        for (const CascadeRect& part : parts.Rects()) {
            if (Contains(window)) {
                damage.Unite(PaintPart(*window, part, output));
            }
        }
    }
    if (!asking.empty()) {
        CollectLayers();
    }
    damage.Intersect({0, 0, output.width, output.height});
    return damage;
}

// Answers where the output looks different.
Damage WindowStack::PaintWhole(CascadeWindow& window, CascadeDims output)
{
    Layer layer = PaintOf(window, output);
    Damage damage;
    if (Entry* const entry = Find(&window)) {
        damage.Unite(entry->layer.box);
        damage.Unite(layer.box);
        entry->layer = std::move(layer);
    }
    return damage;
}

Damage WindowStack::PaintPart(CascadeWindow& window, const CascadeRect& part, CascadeDims output)
{
    const WindowPart due = OnOutput(window, part, output);
    if (due.box.IsEmpty()) {
        return {};
    }
    const Entry* const entry = Find(&window);
    CascadeRect kept = due.box;
    kept.Intersect(entry->layer.box);
    if (!(kept == due.box)) {
        return PaintWhole(window, output);    // of the window only what showed anything was kept
    }
    // Painting may take the window off the screen, and its layer with it.
    Layer layer;
    layer.pixels.reset(cairo_surface_reference(entry->layer.pixels.get()));
    layer.box = entry->layer.box;
    const CascadeRect area {due.box.left - layer.box.left, due.box.top - layer.box.top, due.box.width, due.box.height};
    PaintInto(window, due.rect, layer.pixels.get(), area, ScaleFor(output));
    Entry* const painted = Find(&window);
    if (painted == nullptr) {
        return {};
    }
    painted->layer = std::move(layer);    // as new: what was known of its pixels no longer holds
    return due.box;
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
