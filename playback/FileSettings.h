// The text of a side file: what is remembered of one recording between two plays.
//
// Units:     positions are bytes.
// Errors:    a text without the signature reads as empty; lines that are not understood are left out.
// Threads:   pure functions.
// Ownership: values.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "playback/BookmarkList.h"

struct FileState {
    int zoomMode = 0;
    std::optional<tagBookmark> resume;    // where playback stopped; none at the end of the stream
    int videoRes = 0;    // index of the output resolution's choice
    std::optional<int> audioStream;
};

struct FileSettings {
    BookmarkList chapters;
    BookmarkList bookmarks;
    FileState state;
};

// Whether the text is a side file at all: only such a file may be overwritten.
bool IsFileSettings(std::string_view text);

FileSettings ParseFileSettings(std::string_view text);
std::string FormatFileSettings(const BookmarkList& chapters, const BookmarkList& bookmarks, const FileState& state);

// The whole file, or no more than the start of one that is no side file; none when it is not there or cannot
// be read. Only regular files are read.
std::optional<std::string> ReadSettingsText(const char* path);
