// The values behind the choices of the options menu.
//
// Units:   as told at the functions.
// Threads: constants.
#pragma once

#include <cstdint>
#include <iterator>

namespace OptionChoices {

// Bytes. The thresholds lie midway between the choices, so that any size shows as the nearest one.
inline constexpr uint32_t kMinFileSizes[] = {0, 10485760, 104857600, 262144000, 524288000};

constexpr int OfMinFileSize(uint32_t bytes)
{
    if (bytes == 0) {
        return 0;
    }
    return bytes <= 52428800 ? 1 : bytes <= 183500800 ? 2 : bytes > 393216000 ? 4 : 3;
}

constexpr uint32_t MinFileSize(int choice)
{
    constexpr int count = static_cast<int>(std::size(kMinFileSizes));
    return kMinFileSizes[choice >= 0 && choice < count ? choice : count - 1];
}

// The browser's numbers of its icon sizes, 0, 2 and 3, as choices 0, 1 and 2.
constexpr int OfIconSize(int iconSize)
{
    return iconSize == 2 ? 1 : iconSize == 3 ? 2 : 0;
}

constexpr int IconSize(int choice)
{
    return choice == 1 ? 2 : choice == 2 ? 3 : 0;
}

// Points.
constexpr int OfFontSize(int points)
{
    return points < 18 ? 0 : points < 30 ? 1 : 2;
}

constexpr int FontSize(int choice)
{
    return choice == 0 ? 12 : choice == 1 ? 24 : 40;
}

// Seconds; 0 is no time-out.
inline constexpr int kResumeTimeouts[] = {0, 5, 10, 30, 60};
inline constexpr int kNoChoice = -1;

constexpr int OfResumeTimeout(int seconds)
{
    for (int i = 0; i < static_cast<int>(std::size(kResumeTimeouts)); ++i) {
        if (kResumeTimeouts[i] == seconds) {
            return i;
        }
    }
    return kNoChoice;
}

constexpr int ResumeTimeout(int choice)
{
    return choice >= 0 && choice < static_cast<int>(std::size(kResumeTimeouts)) ? kResumeTimeouts[choice] : 0;
}

}    // namespace OptionChoices
