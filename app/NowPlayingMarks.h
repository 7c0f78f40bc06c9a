// The marks of what is playing as phones and the desktop are told them. Which files a recording has, and how
// large they are, stands on the disk, which may be asleep or gone: a thread asks it, and meanwhile what was
// known last stands.
//
// Units:     bytes.
// Threads:   the user-interface thread, which is never held up for longer than a blink.
// Ownership: what was read belongs to this; the decoder is only asked.
#pragma once

#include <vector>

#include "browser/BackgroundJob.h"
#include "platform/CascadeString.h"
#include "widgets/ProgressMarks.h"

class MDecoder;

class NowPlayingMarks {
public:
    // Brings the marks up to date; `position` is in the current file.
    const ProgressMarks& Follow(MDecoder& decoder, uint64_t position);
    void Forget();    // nothing is open

private:
    using Files = std::vector<ProgressMarks::File>;
    bool ReadFiles(MDecoder& decoder, uint64_t position);

    CascadeString m_Of;    // the recording that all this belongs to; empty: none
    Files m_Files;
    BackgroundJob<Files> m_Reading;
    ProgressMarks m_Marks;
    size_t m_nMarks = 0;    // how many bookmarks and chapters it had then
};
