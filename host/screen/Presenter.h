// Brings the picture and the layers above it to the output.
//
// Units:     pixels of the output.
// Errors:    Present answers false when nothing could be shown; the caller tries again with the next picture.
// Threads:   the user-interface thread.
// Ownership: the scene is the caller's, for the length of the call.
#pragma once

#include <vector>

#include "host/screen/Canvas.h"
#include "host/screen/Damage.h"
#include "host/screen/VideoGeometry.h"
#include "host/screen/WindowStack.h"

namespace screen {

struct Scene {
    const host::VideoFrame* frame = nullptr;    // empty: black
    VideoGeometry geometry;
    const std::vector<const Layer*>* layers = nullptr;
};

// What differs from the last Present.
struct Changes {
    bool everything = false;
    bool picture = false;
    Damage overlay;
    bool Any() const { return everything || picture || !overlay.IsEmpty(); }
};

class Presenter {
public:
    virtual ~Presenter() = default;
    virtual const char* Name() const = 0;
    virtual CascadeDims Dims() const = 0;
    virtual bool Present(const Scene& scene, const Changes& changes) = 0;
    virtual SurfacePtr Capture(const Scene& scene) = 0;    // the composed screen; null: failed
};

}    // namespace screen
