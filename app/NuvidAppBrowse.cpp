// Choosing with the file browser, and deleting.
#include <cstdio>
#include <iterator>

#include "app/BrowsePlace.h"
#include "app/MThemeSelect.h"
#include "app/NuvidApp.h"
#include "platform/RemoteKeys.h"

void NuvidApp::OpenFile()
{
    Browse(kBrowseOpen, "Open File");
}

void NuvidApp::QueueFile()
{
    if (m_Queue.IsEmpty()) {
        OpenFile();
    } else {
        Browse(kBrowseQueue, "Queue File");
    }
}

void NuvidApp::DeleteFile()
{
    Browse(kBrowseDelete, "WARNING: Delete File");
}

void NuvidApp::Browse(BrowseMode mode, const char* title)
{
    m_nBrowseMode = mode;
    m_BrowseTitle = title;
    FileBrowse();
}

bool NuvidApp::IsBrowsing() const
{
    return m_pBrowser != nullptr && m_pBrowser->IsMaterialized();
}

// Never called by the browser itself: the one before goes here.
void NuvidApp::FileBrowse()
{
    const BrowsePlace place = BrowsePlace::Find(m_Options, m_SelectedEntry, BrowsePlace::MayBeFolder);
    m_Osd.ShowMessage({}, 0);    // an old text would show through behind the browser
    m_pBrowser = std::make_unique<EFileBrowser>();
    m_pBrowser->SetGraphicsPath(g_ThemeSelect.GetThemeImagesFolder());
    m_pBrowser->SetIconGraphicsPath(g_ThemeSelect.GetCommonImagesFolder());
    m_pBrowser->SetDeletionAllowed(m_Options.browserDelete);
    m_pBrowser->SetDefaultThumbnail(g_ThemeSelect.GetCommonImagePath("Nuvid_160.png"));
    m_pBrowser->SetHideSize(m_Options.hideSize);
    m_pBrowser->SetMinFileSize(m_Options.minFileSize);
    m_pBrowser->SetTitleSetThreshold(m_Options.titleSetThreshold);
    m_pBrowser->SetIconMode(m_Options.iconSize);
    m_pBrowser->SetBackEntry(m_Options.browserWithBack);
    constexpr const char* kChooseHints[] = {"open", "add", "delete"};    // by browse mode
    static_assert(std::size(kChooseHints) == kBrowseDelete + 1);
    m_pBrowser->SetChooseHint(kChooseHints[m_nBrowseMode]);
    if (!place.cursor.IsEmpty()) {
        m_pBrowser->SetSelectedFile(place.cursor);
    }

    m_bMenuOpen = true;
    const EFileBrowser::Callback chosen = [](const EFileBrowser::FileInfo& info, EFileBrowser::CallbackReason reason, void* context) {
        static_cast<NuvidApp*>(context)->callback(info, reason);
    };
    if (!m_pBrowser->BrowseDirectory(
            m_BrowseTitle, place.start, place.root, place.root, place.filter, CascadeDirBrowser::kFilesAndFolders, chosen, this)) {
        m_bMenuOpen = false;
        std::printf("BrowseDirectory failed\n");
        Info("Invalid directories specified!", "", "Defaulting to /mnt");
        m_Options.browseRoot = "/";
        m_Options.browseFolder = "/mnt";
    } else if (place.message != nullptr) {
        Info(place.message);
    }
}

void NuvidApp::callback(const EFileBrowser::FileInfo& entry, int reason)
{
    std::printf("inReason %d\n", reason);
    m_bMenuOpen = false;
    switch (reason) {
    case EFileBrowser::kFolderChosen:
        m_SelectedEntry = entry;
        std::printf("inPath: %s\n", entry.path.Text());
        m_Options.browserMode = (m_Options.browserMode + 1) % 4;
        m_bBrowsePending = true;
        PressKey(Remote::kMenu);
        break;
    case EFileBrowser::kItemChosenForDeletion:
        m_SelectedEntry = entry;
        m_bBrowsePending = true;
        AskForDeletion();
        break;
    case EFileBrowser::kItemChosen:
    case EFileBrowser::kPathSettled:
        m_SelectedEntry = entry;
        TakeSelected();
        break;
    default:
        Info("Press [Menu] to open a file");
        break;
    }
}

void NuvidApp::TakeSelected()
{
    if (m_nBrowseMode == kBrowseQueue) {
        m_Queue.Append(m_SelectedEntry);
        Info("File added to the playlist", Osd::kNoIcon, m_SelectedEntry.path);
    } else if (m_nBrowseMode == kBrowseDelete) {
        AskForDeletion();
    } else if (m_nBrowseMode == kBrowseOpen) {
        m_Queue.Clear();
        m_CurrentEntry = m_SelectedEntry;
        m_Queue.Append(m_CurrentEntry);
        m_Sequence.Begin(SEQ_OPEN_SELECTED, 2);
        Info("Opening " + ShownName(m_CurrentEntry) + "...");
    }
}

void NuvidApp::AskForDeletion()
{
    m_bMenuOpen = true;
    m_pDeleteDialog = new MDeleteDialog(this, m_SelectedEntry);
    m_pDeleteDialog->Materialize(CascadeWindow::kPlane3);
}

// From the browser back to the browser; from the menu's delete mode on to the next, unless the viewer has had enough.
void NuvidApp::DeleteDialogDone(bool deleted)
{
    m_pDeleteDialog = nullptr;    // it is gone
    m_bMenuOpen = false;
    if (m_bBrowsePending) {
        m_bBrowsePending = false;
        FileBrowse();
    } else if (deleted) {
        DeleteFile();
    }
}
