// What may be chosen with the browser, and what its client has set.
//
// Units:     sizes are bytes; folders end in "/".
// Threads:   values.
#pragma once

#include <cstdint>

#include "platform/CascadeDirBrowser.h"
#include "platform/CascadeString.h"
#include "sources/FileInfo.h"

struct BrowserChoices {
    using FileInfo = ::FileInfo;

    // Which entries of a folder are listed. The numbers are stored in settings.
    enum FilterType : int { kFilterAll = 0, kFilterSequence = 1, kFilterSequenceSize = 2, kFilterSize = 3 };

    // How the browser closed.
    enum CallbackReason : int {
        kItemChosen = 0,
        kNothingChosen = 1,
        kFolderChosen = 2,    // the viewer asked for the next filter; the path is where the cursor stood
        kItemChosenForDeletion = 3,
        kPathSettled = 4,    // in a follow-up step: a title set picked, a password given
    };

    // How entries are shown. The numbers are stored in settings.
    enum IconMode : int { kIconsSmall = 0, kIconsSmallNoSize = 1, kIconsLarge = 2, kIconsExtraLarge = 3 };

    using Callback = void (*)(const FileInfo& info, CallbackReason reason, void* context);
};

struct BrowserSettings {
    CascadeString graphicsPath;    // of the theme
    CascadeString iconPath;
    CascadeString title;
    CascadeString filterLabel;    // in place of the label that each filter has
    CascadeString chooseHint;
    CascadeString topFolder;    // the viewer gets no higher
    CascadeString browseRoot;
    CascadeString startFolder;    // as given
    CascadeDirBrowser::SelectableObjectType selectable = CascadeDirBrowser::kFilesAndFolders;
    int filter = BrowserChoices::kFilterAll;    // of folders that do not say otherwise
    int iconMode = BrowserChoices::kIconsSmall;    // likewise
    uint32_t minFileSize = 0;
    uint32_t titleSetThreshold = 0;
    bool deletion = false;
    bool hideSize = false;
    bool backEntry = false;
    BrowserChoices::Callback callback = nullptr;
    void* context = nullptr;
};
