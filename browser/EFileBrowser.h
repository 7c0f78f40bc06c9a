// The file browser; so far the choice of a DVD folder's main title set, and the types that the browser
// shares with the application.
//
// Units:     sizes are bytes.
// Errors:    an empty text where nothing is found; nothing is printed.
// Threads:   the user-interface thread; the lookup blocks on the disk.
// Ownership: see GetDVDFeatureVTS.
#pragma once

#include "platform/CascadeArrays.h"
#include "platform/CascadeString.h"
#include "sources/FileInfo.h"

class EFileBrowser {
public:
    using FileInfo = ::FileInfo;

    // Which entries of a folder are listed. The numbers are stored in settings.
    enum FilterType : int { kFilterAll = 0, kFilterSequence = 1, kFilterSequenceSize = 2, kFilterSize = 3 };

    // How the browser closed.
    enum CallbackReason : int {
        kItemChosen = 0,
        kNothingChosen = 1,
        kFolderChosen = 2,
        kItemChosenForDeletion = 3,
        kPathSettled = 4,    // in a follow-up step: a title set picked, a password given
    };

    // Path of the first file of the largest title set in a DVD folder, which may be given itself or as the
    // folder that holds `VIDEO_TS`; empty when there is none. With a `minSize` and a list, each title set
    // larger than `minSize` is appended to the list, whose owner deletes the records.
    static CascadeString GetDVDFeatureVTS(const char* path, unsigned long long minSize, CascadeTemplateArray<FileInfo*>* list);
};
