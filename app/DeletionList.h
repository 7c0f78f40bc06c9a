// What goes when the viewer deletes an item: the files of its recording from the item's own on, and the side
// file beside them. Nothing else ever goes.
//
// Units:     sizes are bytes.
// Errors:    an item that is no file of a disk (a folder, a server's) gives an empty list.
// Threads:   any; both operations block on the disk.
// Ownership: a value.
#pragma once

#include <vector>

#include "platform/CascadeString.h"

struct DeletionList {
    struct File {
        CascadeString path;
        CascadeString name;    // for the viewer
    };

    std::vector<File> files;    // in the order of the recording; the side file, which need not exist, is the last
    unsigned long long size = 0;    // of the recording

    static DeletionList Gather(const CascadeString& path);
    // Tells on standard output whether it went. What is no regular file, and no link to one, stays.
    static bool Remove(const CascadeString& path);
};
