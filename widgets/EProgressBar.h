// The band across the bottom of the screen that shows for a while where playback stands in the whole
// recording, with its chapters (or the ends of its files) and its bookmarks.
//
// Units:     milliseconds; logical pixels.
// Threads:   the user-interface thread. Display blocks on the disk: one status per file of the recording.
// Ownership: the decoder is not owned and outlives the band.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"
#include "widgets/ProgressMarks.h"

class MDecoder;

class EProgressBar : public CascadeWindow, public CascadeTimer {
public:
    EProgressBar();

    // Shows the band for a time, which must be a multiple of 100; nothing while no file is open.
    void Display(MDecoder* decoder, unsigned long timeMs);

    // Where the marks of what is open are. Blocks on the disk, as Display does.
    static ProgressMarks MarksOf(MDecoder& decoder);
    // The same with the files of a recording on the disk known already; streams do without.
    static ProgressMarks MarksOf(MDecoder& decoder, std::vector<ProgressMarks::File> files);
    static std::vector<ProgressMarks::File> FilesOf(const char* name);    // blocks; any thread

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnTimer(unsigned long id) override;

private:
    void PaintMarks(CascadeBitmap& bitmap, const CascadeRect& bar) const;
    void PaintTexts(CascadeBitmap& bitmap, const CascadeRect& bar, uint64_t position, double share) const;
    static void PaintDisc(CascadeBitmap& bitmap, CascadePoint middle, int size, CascadeColor color);
    static std::vector<int> Places(const std::vector<double>& percents, int width);
    CascadeString TimeText(uint64_t bytes) const;

    static uint32_t s_nTicks;    // of all bands together

    CascadeFont m_Font;
    uint32_t m_nTimer = 0;
    uint32_t m_nRemainingMs = 0;
    MDecoder* m_pDecoder = nullptr;
    ProgressMarks m_Marks;
};
