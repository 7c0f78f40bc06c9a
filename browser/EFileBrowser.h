// The full-screen file browser: lists a folder, lets the viewer walk through folders and choose, and tells its
// client once what was chosen.
//
// Units:     sizes are bytes, timer ticks 100 ms, pixels logical.
// Errors:    folders that cannot be read, are empty or are gone say so on the screen; nothing throws.
// Threads:   the user-interface thread. The browsed disk is only ever touched by threads of the browser's own,
//            so a share that hangs stops nothing: the viewer leaves it with Exit.
// Ownership: the client keeps the browser alive until after the callback has returned, which is the last
//            thing that the browser does; the browser deletes nothing of itself.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/CascadeArrays.h"
#include "platform/CascadeDirBrowser.h"
#include "platform/CascadeString.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"
#include "sources/FileInfo.h"

class EFileBrowser : public CascadeWindow, public CascadeTimer {
public:
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

    EFileBrowser();
    ~EFileBrowser() override;

    // Before BrowseDirectory. Folders end in "/".
    void SetGraphicsPath(const char* themeFolder);
    void SetIconGraphicsPath(const char* commonFolder);
    void SetDefaultThumbnail(const char* path);    // a picture file, for what has none of its own
    void SetDeletionAllowed(bool allowed);
    void SetHideSize(bool hide);
    void SetMinFileSize(uint32_t bytes);    // of the two filters by size
    void SetTitleSetThreshold(uint32_t bytes);    // of several larger title sets the viewer picks one; 0: the largest is taken
    void SetIconMode(int mode);    // of every folder that does not say otherwise
    void SetBackEntry(bool show);    // the top folder begins with an entry that leaves the browser
    void SetFontSize(int points);    // of the list
    void SetFilterLabel(const char* label);    // in place of the label that each filter has

    // Starts on the whole screen; always true. `startFolder` may be a media server's: "upnp:" and its UUID, then
    // "^" name "~" identifier for each container down to the one to show. The viewer gets no higher than `topFolder`.
    virtual bool BrowseDirectory(const char* title, const char* startFolder, const char* topFolder, const char* browseRoot, FilterType filter,
        CascadeDirBrowser::SelectableObjectType selectable, Callback callback, void* context);

    // Where the cursor goes: at the next listing when the browser is not on the screen yet, else at once.
    void SetSelectedFile(const char* path);
    void SetCurrentFolder(const char* path);
    void RescanFolder();
    void Dismiss();    // leaves the screen without calling back

    // Path of the first file of the largest title set in a DVD folder, which may be given itself or as the
    // folder that holds `VIDEO_TS`; empty when there is none. With a `minSize` and a list, each title set
    // larger than `minSize` is appended to the list, whose owner deletes the records. Blocks on the disk.
    static CascadeString GetDVDFeatureVTS(const char* path, unsigned long long minSize, CascadeTemplateArray<FileInfo*>* list);

    void OnMaterialize() override;
    void OnVanish() override;
    void OnPaint(CascadeBitmap& bitmap) override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long key) override;
    bool OnText(const char* utf8) override;
    void OnTimer(unsigned long id) override;
};
