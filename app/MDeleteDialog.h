// Asks before a recording is deleted: lists every file that will go, deletes exactly those on Select.
//
// Units:     logical pixels.
// Errors:    a file that does not go is told on standard output; the others go all the same.
// Threads:   the user-interface thread. The disk is touched by threads of the dialog's own, so a share that
//            hangs stops nothing; the viewer leaves with Exit, also while files are being deleted.
// Ownership: made with new; deletes itself when it leaves the screen. The client is not owned and outlives it.
#pragma once

#include "app/DeletionList.h"
#include "browser/BackgroundJob.h"
#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"
#include "sources/FileInfo.h"

class IDeleteDialogCB {
public:
    virtual ~IDeleteDialogCB() = default;
    // The dialog has left the screen and is gone; `deleted`: the viewer wanted it. Not told when the owner calls Vanish.
    virtual void DeleteDialogDone(bool deleted) = 0;
    // Before a file is deleted: whoever plays it lets go of it.
    virtual bool CloseFile(const char* path) = 0;
};

class MDeleteDialog : public CascadeWindow, public CascadeTimer {
public:
    MDeleteDialog(IDeleteDialogCB* client, const FileInfo& entry);

    void Materialize(Plane plane) override;    // in the middle of the screen
    void OnPaint(CascadeBitmap& bitmap) override;    // the first time also gathers what will go
    void OnMaterialize() override;
    void OnVanish() override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long /*key*/) override { return true; }
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    void OnTimer(unsigned long id) override;

private:
    enum class Stage { kNew, kGathering, kAsking, kDeleting };

    void Gather();
    void TakeList();
    void Delete();
    void Finish(bool deleted);    // the end of this object
    void PaintList(CascadeBitmap& bitmap, CascadeRect line, size_t rows) const;
    const char* Notice() const;    // in place of the list; null: there is one

    IDeleteDialogCB* m_pClient;
    CascadeString m_Path;
    Stage m_Stage = Stage::kNew;
    DeletionList m_List;
    BackgroundJob<DeletionList> m_Gathering;
    BackgroundJob<bool> m_Deleting;
    size_t m_nFirst = 0;    // of the files that are shown
    size_t m_nRows = 1;    // how many there is room for
    CascadeFont m_TitleFont;
    CascadeFont m_Font;
};
