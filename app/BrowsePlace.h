// Where a browse begins: how high it may go, in which folder it starts, where the cursor stands.
//
// Errors:    a folder that is missing is replaced, and a text says so.
// Threads:   any; Find asks about folders through the function it is given.
// Ownership: a value.
#pragma once

#include <functional>

#include "app/Parameters.h"
#include "browser/EFileBrowser.h"

struct BrowsePlace {
    using FolderTest = std::function<bool(const CascadeString& path)>;

    CascadeString root;
    CascadeString start;    // a folder, or a container of a media server
    CascadeString cursor;    // path of the item under it; empty: the first item
    EFileBrowser::FilterType filter = EFileBrowser::kFilterSequenceSize;
    const char* message = nullptr;    // for the viewer: what was not found

    // The viewer comes back to where the last item was chosen.
    static BrowsePlace Find(const StartOptions& options, const EFileBrowser::FileInfo& lastChosen, const FolderTest& isFolder);
    static EFileBrowser::FilterType FilterOfMode(int browserMode);

    // Whether the path is a folder, as far as the disk says so at once. One that sleeps or hangs counts as
    // one: the browser has the patience, and a way out.
    static bool MayBeFolder(const CascadeString& path);
};
