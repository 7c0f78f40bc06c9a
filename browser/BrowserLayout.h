// Where everything of the browser stands on the screen.
//
// Units: logical pixels of the 1280 x 720 screen; font sizes in points. All edges are even, so that they fall on whole
//        pixels of the usual outputs. The outer margin keeps clear of what televisions cut off.
#pragma once

#include "platform/CascadeGeometry.h"

namespace BrowserLayout {

inline constexpr CascadeRect kScreen {0, 0, 1280, 720};
inline constexpr CascadeRect kHead {48, 24, 1184, 80};    // title, path and filter
inline constexpr CascadeRect kList {40, 112, 792, 532};
inline constexpr CascadeRect kDetail {848, 112, 392, 532};
inline constexpr CascadeRect kHints {48, 654, 984, 36};
inline constexpr CascadeRect kHeadLine {0, 0, kScreen.width, kList.top};
inline constexpr CascadeRect kHintLine {0, kList.top + kList.height, kScreen.width, kScreen.height - kList.top - kList.height};
inline constexpr CascadeRect kPosition {1032, 654, 200, 36};

inline constexpr int kDetailPadding = 22;
inline constexpr CascadeRect kPicture {kDetail.left + kDetailPadding, kDetail.top + kDetailPadding, kDetail.width - 2 * kDetailPadding, 196};    // 16:9

inline constexpr CascadeRect kDescription {kPicture.left, kPicture.top + kPicture.height + 70, kPicture.width, 222};    // below a heading and a fact
inline constexpr int kFolderDescription = 200;    // height at most

inline constexpr int kTitleSize = 34;
inline constexpr int kPathSize = 24;
inline constexpr int kHintSize = 20;
inline constexpr int kHeadingSize = 26;
inline constexpr int kTextSize = 22;

inline constexpr int kSizeColumn = 130;    // of the small list
inline constexpr int kSizeColumnHidden = 5;    // too narrow for a text
inline constexpr int kDurationColumn = 110;

}    // namespace BrowserLayout
