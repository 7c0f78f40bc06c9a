// Reads a folder for the browser: what is listed of it, in which order, and what the listing itself tells about
// the entries.
//
// Units:     bytes.
// Errors:    `state` says why there is nothing; an entry whose status cannot be read has size 0.
// Threads:   any; blocks on the disk: one question an entry. Gives up between two entries once `stop` is set.
//            Links to shares whose server has gone hold it up for a moment only (LinkTargets.h).
// Ownership: values.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "browser/BackgroundJob.h"
#include "browser/EInfoFile.h"
#include "platform/CascadeDirBrowser.h"
#include "platform/CascadeString.h"

struct FolderEntry {
    enum Kind : uint8_t { kFolder, kFile, kDevice };

    CascadeString name;
    CascadeString extra;    // of a device its UUID; of a file the name of the picture beside it; empty: none
    uint64_t size = 0;    // of the file itself
    uint64_t totalSize = 0;    // with the numbered files that are folded into it
    uint32_t parts = 1;    // files that the entry stands for
    Kind kind = kFile;
    bool hasSideFile = false;    // the player remembers something of it
};

struct FolderScanRequest {
    CascadeString folder;    // with a trailing "/"
    int filter = 0;    // EFileBrowser::FilterType; other numbers list files as `selectable` says
    uint32_t minSize = 0;    // of the two filters by size
    CascadeString pattern;    // FolderConfig::pattern
    CascadeDirBrowser::SelectableObjectType selectable = CascadeDirBrowser::kFilesAndFolders;
};

struct FolderListing {
    enum State { kRead, kGone, kUnreadable };

    State state = kRead;
    std::vector<FolderEntry> entries;    // as they are listed
    size_t hiddenFiles = 0;    // that the filter keeps back, without those folded into another
    bool holdsDevices = false;
    EInfoFile info;    // of the folder itself
    CascadeString nearestParent;    // of a folder that is gone: the lowest folder above it that is there, with a trailing "/"
};

using FolderReader = std::function<FolderListing(const FolderScanRequest& request, const JobStop& stop)>;

FolderListing ReadFolder(const FolderScanRequest& request, const JobStop& stop);

// The order of entries: folders first, then by name, whatever the case of ASCII letters. 0: neither comes first.
int CustomSort(const FolderEntry& a, const FolderEntry& b);
