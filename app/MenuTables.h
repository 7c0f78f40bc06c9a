// The menus: their sizes, items and choices.
//
// Units:   logical pixels.
// Threads: constants.
#pragma once

#include <cstddef>
#include <iterator>

#include "app/MMenu.h"
#include "app/RecentFiles.h"

namespace Menus {

enum Menu { kMain, kAdvanced, kRecent, kOptions, kPlayback, kCount };

// The numbers are fixed.
enum Id : unsigned long {
    kOpenFile = 0,
    kQueueFile = 1,
    kRecentFiles = 2,
    kAdvancedMenu = 3,
    kQuit = 4,    // no item carries it
    kOptionsMenu = 256,
    kDeleteFile = 257,
    kSavePlaylist = 258,
    kBack = 259,
    kBrowserFilter = 512,
    kMinFileSize = 513,
    kIconSize = 514,
    kFontSize = 515,
    kTheme = 516,
    kResumeTimeout = 517,
    kOptionsDone = 518,
    kFirstRecent = 768,    // and the slots that follow
    kProgram = 1024,
    kAudioStream = 1026,
    kVideoResolution = 1027,
    kPlaybackDone = 1028,
};

// A button, or with choices a spinner.
struct ItemRow {
    Id id;
    const char* text;
    int current = 0;
    const char* choices[5] = {};
    constexpr int ChoiceCount() const
    {
        int count = 0;
        while (count < 5 && choices[count] != nullptr) {
            ++count;
        }
        return count;
    }
};

inline constexpr ItemRow kMainItems[] = {
    {kOpenFile, "Open File"},
    {kQueueFile, "Queue File"},
    {kRecentFiles, "Recent Files"},
    {kOptionsMenu, "Options"},
    {kAdvancedMenu, "Advanced"},
};

inline constexpr ItemRow kAdvancedItems[] = {
    {kDeleteFile, "Delete File"},
    {kSavePlaylist, "Save Playlist"},
    {kBack, "Back"},
};

inline constexpr ItemRow kRecentItems[] = {
    {Id {kFirstRecent}, RecentFiles::kEmpty},
    {Id {kFirstRecent + 1}, RecentFiles::kEmpty},
    {Id {kFirstRecent + 2}, RecentFiles::kEmpty},
    {Id {kFirstRecent + 3}, RecentFiles::kEmpty},
    {Id {kFirstRecent + 4}, RecentFiles::kEmpty},
};
static_assert(std::size(kRecentItems) == RecentFiles::kSlots);

// On purpose the resume time-out stands above the theme, although its number is the higher one.
inline constexpr ItemRow kOptionItems[] = {
    {kBrowserFilter, "Default browser filter", 0, {"Size + Seq", "Seq", "Size", "All"}},
    {kMinFileSize, "Minimum file size to show", 0, {"0 MB (All)", "10 MB", "100 MB", "250 MB", "500 MB"}},
    {kIconSize, "Browser icon size", 0, {"Small", "Large", "Extra Large"}},
    {kFontSize, "On screen display font", 2, {"12", "24", "40"}},
    {kResumeTimeout, "Resume dialog timeout", 0, {"Infinite", "5 seconds", "10 seconds", "30 seconds", "1 minute"}},
    {kTheme, "Graphics theme", 0, {"Cascade"}},
    {kOptionsDone, "Done"},
};

inline constexpr ItemRow kPlaybackItems[] = {
    {kProgram, "Program", 0, {"Program 1"}},
    {kAudioStream, "Audio stream", 0, {"Audio 1"}},
    {kVideoResolution, "Video resolution", 0, {"Default", "Default", "Default"}},
    {kPlaybackDone, "Done"},
};

struct MenuRow {
    const char* title;
    int width;
    int height;
    int buttonWidth;
    const ItemRow* items;
    size_t itemCount;
};

inline constexpr MenuRow kRows[] = {
    {"Nuvid v3.6b\nby the Nuvid authors  (Aug  2 2006)", 700, 445, MMenu::kDefaultButtonWidth, kMainItems, std::size(kMainItems)},
    {"Nuvid Advanced Menu", 700, 445, MMenu::kDefaultButtonWidth, kAdvancedItems, std::size(kAdvancedItems)},
    {"Nuvid Recent Files", 700, 445, 635, kRecentItems, std::size(kRecentItems)},
    {"Nuvid Options", 700, 515, MMenu::kDefaultButtonWidth, kOptionItems, std::size(kOptionItems)},
    {"Nuvid Playback Options", 700, 352, 490, kPlaybackItems, std::size(kPlaybackItems)},
};
static_assert(std::size(kRows) == kCount);

inline constexpr int kRecentTextWidth = 580;    // a longer path loses its beginning

}    // namespace Menus
