// The windows on screen: their order, the focus, and the pictures that they painted.
//
// Units:     window rectangles are logical pixels; layers are pixels of the output.
// Threads:   the user-interface thread, but RequestRedraw, which may be called from any.
// Ownership: windows belong to the application. A window that is gone is never called again, whatever it did
//            to itself or to others inside one of its own calls.
#pragma once

#include <string>
#include <vector>

#include "host/screen/Canvas.h"
#include "host/screen/Damage.h"
#include "host/screen/LayerRuns.h"
#include "platform/CascadeWindow.h"

namespace screen {

// One window's picture: only the part of it that shows anything is kept.
struct Layer {
    SurfacePtr pixels;
    CascadeRect box;    // on the output
    // Kept by who blends it.
    mutable bool prepared = false;
    mutable LayerRuns runs;
};

class WindowStack {
public:
    static WindowStack& Instance();

    void Add(CascadeWindow* window, CascadeWindow::Plane plane);
    void Remove(CascadeWindow* window);    // hands the focus on
    bool Contains(const CascadeWindow* window) const { return Find(window) != nullptr; }

    void Redraw(CascadeWindow* window);
    void Redraw(CascadeWindow* window, const CascadeRect& part);    // no more than that, in screen coordinates
    void RequestRedraw(CascadeWindow* window);    // any thread
    void RedrawAll();

    CascadeWindow* Focus() const { return m_pFocus; }
    void SetFocus(CascadeWindow* window);
    // The application's own window: the one that came first of those on screen.
    bool IsMain(const CascadeWindow* window) const;

    // Paints what asked for it, and answers the part of the output that looks different now.
    Damage Paint(CascadeDims output);
    const std::vector<const Layer*>& Layers() const { return m_Layers; }    // lowest first
    std::vector<std::string> Titles() const;    // lowest first

private:
    struct Entry {
        CascadeWindow* window = nullptr;
        int plane = 0;
        unsigned long number = 0;    // ascending in the order of appearance
        unsigned long focusTurn = 0;    // when it had the focus last; 0: never
        bool needsPaint = true;
        Damage parts;    // that need painting where the whole does not
        Layer layer;
    };
    Entry* Find(const CascadeWindow* window) const;    // null: not on screen
    CascadeWindow* Heir() const;
    Damage PaintWhole(CascadeWindow& window, CascadeDims output);
    Damage PaintPart(CascadeWindow& window, const CascadeRect& part, CascadeDims output);
    void CollectLayers();

    std::vector<std::unique_ptr<Entry>> m_Entries;    // lowest first
    std::vector<const Layer*> m_Layers;
    Damage m_Damage;    // of windows that left
    CascadeWindow* m_pFocus = nullptr;
    unsigned long m_nNumber = 0;
};

}    // namespace screen
