// What each key of the remote control does in the file browser.
//
// Threads: constants; the handlers run on the user-interface thread.
#pragma once

#include <cstdint>

#include "browser/BrowserItem.h"
#include "browser/EFileBrowser.h"
#include "platform/RemoteKeys.h"
#include "widgets/KeyRows.h"

struct BrowserKeys {
    struct Row {
        uint32_t key;
        const char* meaning;    // for the viewer; docs/remote.md says the same
        const char* cap;    // on the line of hints: the key, and in a word what it does; null: not there
        const char* hint;
        bool endsWait;    // heard while a folder is being read
        void (EFileBrowser::*onDown)();
    };

    static constexpr Row kRows[] = {
        {Remote::kUp, "moves up; held: faster and faster", nullptr, nullptr, false, &EFileBrowser::OnUpKey},
        {Remote::kDown, "moves down; held: faster and faster", nullptr, nullptr, false, &EFileBrowser::OnDownKey},
        {Remote::kNextChapter, "one page up", nullptr, nullptr, false, &EFileBrowser::OnPageUpKey},
        {Remote::kPrevChapter, "one page down", nullptr, nullptr, false, &EFileBrowser::OnPageDownKey},
        {Remote::kSelect, "enters a folder, chooses a file; a DVD folder is played", "Select", "open", false, &EFileBrowser::OnSelectKey},
        {Remote::kPlay, "the same as Select", nullptr, nullptr, false, &EFileBrowser::OnPlayKey},
        {Remote::kLeft, "goes up to the folder above", "\xE2\x97\x80", "up", false, &EFileBrowser::OnLeftKey},
        {Remote::kRight, "enters a folder, also that of a DVD", nullptr, nullptr, false, &EFileBrowser::OnRightKey},
        {Remote::kInfo, "shows what is known of the item", "Info", "about", false, &EFileBrowser::OnInfoKey},
        {Remote::kMenu, "next filter", "Menu", "filter", false, &EFileBrowser::OnFilterKey},
        {Remote::kZoom, "next size of the list", "Zoom", "view", false, &EFileBrowser::OnViewKey},
        {Remote::kStop, "deletes a file, after a question", "Stop", "delete", false, &EFileBrowser::OnDeleteKey},
        {Remote::kExit, "leaves the browser; while a folder is being read: goes back to the one before", "Exit", "close", true, &EFileBrowser::OnExitKey},
    };

    static constexpr const Row* Find(unsigned long key) { return FindKeyRow(kRows, key); }

    // Whether the key does anything with an item of that kind.
    static constexpr bool IsFor(BrowserItemKind kind, unsigned long key)
    {
        const bool file = kind == BrowserItemKind::kFile;
        return (key != Remote::kInfo || file || kind == BrowserItemKind::kFolder) && (key != Remote::kStop || file);
    }
    // The same keys, so that the same hints are shown.
    static constexpr bool AreAlike(BrowserItemKind one, BrowserItemKind other)
    {
        return IsFor(one, Remote::kInfo) == IsFor(other, Remote::kInfo) && IsFor(one, Remote::kStop) == IsFor(other, Remote::kStop);
    }
};
static_assert(KeysAreUnique(BrowserKeys::kRows));
