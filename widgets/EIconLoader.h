// The icons and thumbnails of a list's rows: small pictures from files, read in the background and kept.
//
// Units:     logical pixels; an icon is square, with a picture of another shape in its middle.
// Errors:    a file that is no picture stays without one and is not tried again until Refresh.
// Threads:   the user-interface thread; a loader reads.
// Ownership: owns the pictures; what Find answers is valid until the next call of Find or Refresh.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/CascadeBitmap.h"
#include "widgets/ELoader.h"

class EIconLoader {
public:
    explicit EIconLoader(CascadeWindow& window);    // is redrawn when icons have come

    // Null: not there yet, or not to be had. Then LoadWanted reads it.
    const CascadeBitmap* Find(const char* path, int size);
    void LoadWanted();    // after painting: what was not there
    void Refresh();    // tries again what failed; all is read anew when the screen has another resolution
    void Stop();

private:
    using Key = std::pair<std::string, int>;    // path and size
    struct Batch;

    void TakeLoaded();

    std::map<Key, CascadeBitmap> m_Icons;    // an empty one: could not be had
    std::vector<Key> m_Wanted;
    std::shared_ptr<Batch> m_pBatch;    // that is being read; shared with the loader
    unsigned m_nResolution = 0;
    ELoader m_Loader;
};
