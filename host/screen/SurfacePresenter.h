// The presenter without a GPU: converts and scales straight into the memory that is shown.
//
// Only what changed is drawn: a new picture leaves the borders alone, an unchanged layer is blended only where
// the picture was drawn anew.
//
// Threads:   the user-interface thread.
// Ownership: owns its target.
#pragma once

#include <memory>

#include "host/screen/Presenter.h"
#include "host/screen/VideoScaler.h"

namespace screen {

// Memory that can be shown: 32 bits a pixel in the byte order blue, green, red, unused.
class SurfaceTarget {
public:
    struct Pixels {
        uint8_t* data = nullptr;
        int stride = 0;
        CascadeDims dims;
        bool isNew = false;    // its contents were not drawn by us
    };
    virtual ~SurfaceTarget() = default;
    virtual CascadeDims Dims() const = 0;
    virtual bool Lock(Pixels& pixels) = 0;
    virtual bool Show(const std::vector<CascadeRect>& areas) = 0;
};

// A target of nothing but memory.
class MemoryTarget : public SurfaceTarget {
public:
    explicit MemoryTarget(CascadeDims dims) { Resize(dims); }
    bool Resize(CascadeDims dims);
    CascadeDims Dims() const override;
    bool Lock(Pixels& pixels) override;
    bool Show(const std::vector<CascadeRect>&) override { return true; }

private:
    SurfacePtr m_Surface;
    bool m_bNew = true;
};

class SurfacePresenter : public Presenter {
public:
    explicit SurfacePresenter(std::unique_ptr<SurfaceTarget> target)
        : m_pTarget(std::move(target))
    {
    }
    const char* Name() const override { return "surface"; }
    CascadeDims Dims() const override { return m_pTarget->Dims(); }
    bool Present(const Scene& scene, const Changes& changes) override;
    SurfacePtr Capture(const Scene& scene) override;

private:
    bool DrawPicture(const Scene& scene, const SurfaceTarget::Pixels& pixels);

    std::unique_ptr<SurfaceTarget> m_pTarget;
    VideoScaler m_Scaler;
};

}    // namespace screen
