// Composes the screen in small, beside what goes to the output and without disturbing it.
//
// Units:     pixels of the output and of the small picture.
// Errors:    null: no memory, or an output without pixels.
// Threads:   the user-interface thread.
// Ownership: keeps its converter for the next picture; the scene is the caller's.
#pragma once

#include <memory>

#include "host/base/ScreenFeed.h"
#include "host/screen/Presenter.h"
#include "host/screen/VideoScaler.h"

namespace screen {

class ScreenFeed {
public:
    // As large as an output of that shape may be in the feed.
    static CascadeDims DimsFor(CascadeDims output);

    // `scene.geometry` is laid out for DimsFor(output); the layers are where they are on the output.
    std::shared_ptr<host::FeedPicture> Compose(const Scene& scene, CascadeDims output);

private:
    VideoScaler m_Scaler;
};

}    // namespace screen
