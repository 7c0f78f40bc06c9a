// What each key of the remote control does while no menu is open.
//
// Threads: constants; the handlers run on the user-interface thread.
#pragma once

#include <cstdint>

#include "app/KeyWindows.h"
#include "app/NuvidApp.h"
#include "platform/RemoteKeys.h"
#include "widgets/KeyRows.h"

struct KeyTable {
    struct Row {
        uint32_t key;
        const char* meaning;    // for the viewer; docs/remote.md says the same
        bool needsOpenFile;    // without one nothing happens and nothing is shown
        bool endsWait;    // heard while the user-interface thread waits for a server
        uint8_t resets;    // windows that the key closes, after it has acted
        void (NuvidApp::*onDown)();
    };

    static constexpr uint8_t kPrevBookmark = KeyWindows::Bit(KeyWindows::kPrevBookmark);
    static constexpr uint8_t kPrevChapter = KeyWindows::Bit(KeyWindows::kPrevChapter);

    // The skips, by their index: what is printed, shown and asked for. All of them close both "previous" windows.
    enum Skip { kForwardKey, kBackKey, kFastShort, kFastLong, kRewindShort, kRewindLong };
    struct SkipRow {
        const char* line;
        const char* text;
        Osd::Icon icon;
        SequenceState state;
        int seconds;
    };
    // On purpose a long press goes six minutes forward, but three back.
    static constexpr SkipRow kSkips[] = {
        {"Got FF 30s\n", "FF 30 sec", Osd::kFastForward30Sec, SEQ_SKIP_FORWARD, 30},
        {"Got REW 10s\n", "REW 10 sec", Osd::kRewind10Sec, SEQ_SKIP_BACK, 10},
        {"Got FF 3m\n", "FF 3 min", Osd::kFastForward3Min, SEQ_SKIP_FORWARD, 180},
        {"Got FF 6m\n", "FF 6 min", Osd::kFastForward, SEQ_SKIP_FORWARD, 360},
        {"Got REW 30sec\n", "REW 30 sec", Osd::kRewind30Sec, SEQ_SKIP_BACK, 30},
        {"Got REW 3m\n", "REW 3 min", Osd::kRewind, SEQ_SKIP_BACK, 180},
    };

    static constexpr Row kRows[] = {
        {Remote::kPause, "pauses, or plays again", false, false, 0, &NuvidApp::OnPauseKey},
        {Remote::kPlayPause, "pauses, or plays again", false, false, 0, &NuvidApp::OnPauseKey},
        {Remote::kPlay, "plays", false, false, 0, &NuvidApp::OnPlayKey},
        {Remote::kStop, "stops and closes the file", false, true, 0, &NuvidApp::OnStopKey},
        {Remote::kExit, "quits", false, true, 0, &NuvidApp::OnExitKey},
        {Remote::kPower, "pauses", false, true, 0, &NuvidApp::OnPowerKey},
        {Remote::kPowerAlternate, "pauses", false, true, 0, &NuvidApp::OnPowerKey},
        {Remote::kRewind, "back 30 seconds; held: 3 minutes", false, false, 0, &NuvidApp::OnRewindKey},
        {Remote::kFastForward, "forward 3 minutes; held: 6 minutes", false, false, 0, &NuvidApp::OnFastForwardKey},
        {Remote::kRight, "forward 30 seconds", false, false, 0, &NuvidApp::OnSkipKey<kForwardKey>},
        {Remote::kLeft, "back 10 seconds", false, false, 0, &NuvidApp::OnSkipKey<kBackKey>},
        {Remote::kUp, "next bookmark", true, false, 0, &NuvidApp::OnNextBookmarkKey},
        {Remote::kDown, "previous bookmark; again within 2.7 s: one further back", true, false, 0, &NuvidApp::OnPrevBookmarkKey},
        {Remote::kNextChapter, "next chapter", true, false, kPrevChapter | kPrevBookmark, &NuvidApp::OnNextChapterKey},
        {Remote::kPrevChapter, "start of the chapter; again within 2.7 s: the one before", true, false, kPrevBookmark, &NuvidApp::OnPrevChapterKey},
        {Remote::kSelect, "sets a bookmark; again within 2.5 s: deletes it", true, false, 0, &NuvidApp::OnBookmarkKey},
        {Remote::kMenu, "opens the main menu", false, false, kPrevChapter | kPrevBookmark, &NuvidApp::OnMenuKey},
        {Remote::kZoom, "shows the zoom mode; again within 2.5 s: next mode", false, false, 0, &NuvidApp::OnZoomKey},
        {Remote::kInfo, "shows name, position, sound and bit rate; again within 2.5 s: playback options", false, false, 0, &NuvidApp::OnInfoKey},
    };

    static constexpr const Row* Find(unsigned long key) { return FindKeyRow(kRows, key); }
};
static_assert(KeysAreUnique(KeyTable::kRows));
