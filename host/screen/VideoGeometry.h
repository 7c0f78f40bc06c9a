// Which part of a picture is shown, and where.
//
// Units:   `source` is pixels of the picture; placements are pixels of the nominal output, `output` and `destination`
//          of the real one (a window that the user resized differs from what its resolution says).
// Threads: pure functions.
#pragma once

#include "host/base/VideoOutput.h"

namespace screen {

struct VideoGeometry {
    CascadeRect source;    // empty: nothing of the picture is to be seen
    CascadeRect destination;    // within the output
    friend bool operator==(const VideoGeometry&, const VideoGeometry&) = default;
};

struct VideoLayout {
    CascadeDims picture;
    double aspect = 0;    // of the whole picture as displayed; 0 or less: that of its pixels
    CascadeDims nominal;
    host::VideoPlacement placement;
    CascadeDims output;
    bool stretch = false;
};

// The picture is laid out over the full output, as large as its aspect ratio lets it be. Of that the part inside
// placement.output is kept, and goes, as large as its own shape lets it be, to the middle of placement.scale.
// With `stretch` the picture fills the output and what is kept fills placement.scale exactly.
VideoGeometry LayOutVideo(const VideoLayout& layout);

}    // namespace screen
