// The status icons: their numbers in status lines and their pictures in the common images folder.
//
// Threads: constants.
#pragma once

namespace Osd {

// Icon numbers of a status line. The numbers are fixed: 256 plus the index of the picture.
enum Icon : int {
    kNoIcon = 0,
    kPlay = 256,
    kPause = 257,
    kFastForward = 258,
    kFastForward3Min = 259,
    kFastForward30Sec = 260,
    kRewind = 261,
    kRewind30Sec = 262,
    kRewind10Sec = 263,
    kZoomFirst = 264,    // zoom mode 0; the modes follow each other
};

inline constexpr const char* kIconFiles[] = {
    "play.png",
    "pause.png",
    "ff.png",
    "ff3min.png",
    "ff30sec.png",
    "rew.png",
    "rew30sec.png",
    "rew10sec.png",
    "zoom0.png",
    "zoom1.png",
    "zoom2.png",
    "zoom3.png",
    "zoom4.png",
    "zoom5.png",
    "zoom6.png",
};
inline constexpr int kIconCount = sizeof kIconFiles / sizeof kIconFiles[0];
inline constexpr int kNoIconIndex = -1;

// Index of an icon's picture, or kNoIconIndex for a number that is no icon.
constexpr int IconIndex(int icon)
{
    return icon >= kPlay && icon < kPlay + kIconCount ? icon - kPlay : kNoIconIndex;
}

// The icon of a zoom mode; a mode without a picture shows that of mode 0.
constexpr int ZoomIcon(int zoomMode)
{
    const int icon = kZoomFirst + zoomMode;
    return icon >= kZoomFirst && IconIndex(icon) != kNoIconIndex ? icon : int {kZoomFirst};
}

}    // namespace Osd
