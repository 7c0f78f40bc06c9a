// The application: owns the engine, the windows and the play queue, and carries out what keys, external
// commands, the timer and the engine's messages ask for.
//
// Units:     timer ticks of 100 ms unless a name says otherwise.
// Errors:    what the viewer must know is shown in the status line; diagnostics go to standard output.
// Threads:   the user-interface thread.
// Ownership: exactly one object, owned by main. Keys and commands never drive the engine on a skip or a
//            change of file; they schedule an action, which runs on a later tick.
#pragma once

#include <array>
#include <memory>

#include "app/ActionMachine.h"
#include "app/KeyWindows.h"
#include "app/MDeleteDialog.h"
#include "app/MMenu.h"
#include "app/MenuTables.h"
#include "app/MyWindow.h"
#include "app/NowPlayingMarks.h"
#include "app/Parameters.h"
#include "app/PlayQueue.h"
#include "app/RecentFiles.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeApp.h"
#include "playback/IPlaybackClient.h"
#include "playback/MDecoder.h"
#include "widgets/EDialog.h"
#include "widgets/EProgressBar.h"

extern CascadeString g_AppFolder;    // of the program, with a trailing "/"

struct CommandRow;

// The second argument of a status line: an icon number (OsdIcons.h), or the name of a picture or a text.
class IconOrText {
public:
    IconOrText(int icon = Osd::kNoIcon)
        : m_nIcon(icon)
    {
    }
    IconOrText(const char* text)
        : m_Text(text)
    {
    }
    int Icon() const { return m_nIcon; }
    const CascadeString& Text() const { return m_Text; }

private:
    int m_nIcon = Osd::kNoIcon;
    CascadeString m_Text;
};

class NuvidApp : public CascadeApp,
                 public IPlaybackClient,
                 public IMMenu_CB,
                 public EDialog::Client,
                 public IDeleteDialogCB,
                 private MyWindow::Client,
                 private ISequenceActions,
                 private ParameterParser::Client {
public:
    NuvidApp();
    ~NuvidApp() override;

    // Events of the platform.
    void OnAppInit() override;
    void OnAppExit() override;
    void OnKeyDown(unsigned long key) override;
    void OnKeyUp(unsigned long key) override;
    void OnKeyWhileWaiting(unsigned long key) override;
    void OnWormholeMessage(const CascadeMessage& message) override;
    void OnECPCommand(const CascadeString& command, CascadeString& reply) override;
    void OnNowPlaying(CascadeNowPlaying& now) override;
    void OnSkipWanted(int seconds) override;
    void OnOpenWanted(const CascadeString& path) override;

    void Quit();

    // Menus and dialogs.
    void OnMenu(unsigned long id) override;
    void OnDialogResult(const CascadeString& dialogName, const CascadeString& button) override;

    // Playing. OpenFile opens at once and blocks; false: "File open failed" is on the screen. A playlist
    // replaces the queue, and its first item that opens is played.
    bool OpenFile(const EFileBrowser::FileInfo& entry, bool addToRecent);
    bool OpenFile(const char* path, bool addToRecent);
    void OpenFile();    // lets the viewer choose
    bool CloseFile(const char* path) override;    // null: whatever is open; else only when it is open. Whether it closed
    void callback(const EFileBrowser::FileInfo& entry, int reason);    // the browser has closed
    void DeleteDialogDone(bool deleted) override;

    void Info(const char* text, const IconOrText& second = {}, const char* line3 = "", const char* line4 = "", bool withProgress = false);

    // For the engine.
    void ShowText(const char* text) override { Info(text); }
    bool NextFile() override;
    bool PrevFile() override;
    bool AskForResume() override;

private:
    friend struct KeyTable;
    friend struct CommandTable;
    friend struct MenuActions;

    enum BrowseMode { kBrowseOpen = 0, kBrowseQueue = 1, kBrowseDelete = 2 };

    // Start (NuvidAppStart.cpp).
    void FindAppFolder();
    void SetVideoRes(unsigned index, int value) override;
    void AddFile(const char* path, const CascadeString& title) override;

    // Playing (NuvidAppPlay.cpp).
    void TimerSeq() override;
    bool IsVideoRunning() const override { return m_Decoder.IsVideoRunning(); }
    void OpenSelected() override;
    bool OpenListEntry() override;
    void SkipForward(int seconds) override;
    void SkipBack(int seconds) override;
    void Reselect() override;
    void Reopen() override;
    void EndOfFileReached() override;
    void JumpToNextChapter() override;
    void JumpToPrevChapter(bool repeated) override;
    void JumpToNextBookmark() override;
    void JumpToPrevBookmark(bool repeated) override;
    bool OpenEntryAtCursor(bool addToRecent);
    bool OpenPlaylist(const char* path);
    bool LoadFilelist(const char* path);
    static const CascadeString& ShownName(const EFileBrowser::FileInfo& entry);
    void EndOfQueue();
    void TellBuffering();
    void ShowProgress();

    // Keys (NuvidAppKeys.cpp); KeyTable.h says which key does what.
    void PerformKey(unsigned long key);
    template <int skip> void OnSkipKey() { RequestSkip(skip); }
    void RequestSkip(int skip);    // index of kSkips, KeyTable.h
    void OnPauseKey();
    void OnPlayKey();
    void OnStopKey();
    void OnExitKey() { Quit(); }
    void OnPowerKey();
    void OnRewindKey();
    void OnFastForwardKey();
    void OnNextBookmarkKey();
    void OnPrevBookmarkKey();
    void OnNextChapterKey();
    void OnPrevChapterKey();
    void OnBookmarkKey();
    void OnMenuKey();
    void OnZoomKey();
    void OnInfoKey();

    // Menus (NuvidAppMenus.cpp); MenuTables.h says what is in them.
    void BuildMenus();
    void ShowMenu(Menus::Menu menu);
    void DismissWindows();
    bool IsAnythingAsked() const;
    void ShowAdvancedMenu();
    void ShowRecentFileMenu();
    void OpenRecent(size_t slot);
    void SavePlaylist();
    void BackToMainMenu();
    static void PressKey(unsigned long key);    // arrives as an event of its own
    void Options();
    void SetOptions();
    void OptionsDone();
    void VidOptions();
    void PlaybackOptionsDone();

    // Choosing and deleting (NuvidAppBrowse.cpp).
    void Browse(BrowseMode mode, const char* title);
    void FileBrowse();
    bool IsBrowsing() const;
    void TakeSelected();
    void AskForDeletion();
    void QueueFile();
    void DeleteFile();

    // External commands (NuvidAppCommands.cpp); CommandTable.h says which command does what.
    void OnSkipCommand(const char* text, Osd::Icon icon, SequenceState state, const char* seconds);
    void OnPathCommand(BrowseMode mode, const CascadeString& path);
    void PostponeCommand(const CommandRow& row, const CascadeString& rest);
    void OnQuitCommand(const CascadeString&, CascadeString&) { Quit(); }
    void OnForwardCommand(const CascadeString& rest, CascadeString& reply);
    void OnBackCommand(const CascadeString& rest, CascadeString& reply);
    void OnOpenCommand(const CascadeString& rest, CascadeString& reply);
    void OnQueueCommand(const CascadeString& rest, CascadeString& reply);
    void OnStatusQuery(const CascadeString& rest, CascadeString& reply);
    void OnFileNameQuery(const CascadeString& rest, CascadeString& reply);
    void OnFileProgressQuery(const CascadeString& rest, CascadeString& reply);
    void OnTotalProgressQuery(const CascadeString& rest, CascadeString& reply);
    void OnZoomQuery(const CascadeString& rest, CascadeString& reply);
    void OnPing(const CascadeString& rest, CascadeString& reply);

    MDecoder m_Decoder;
    MyWindow m_Osd;
    EProgressBar m_Progress;
    ActionMachine m_Sequence;
    bool m_bMenuOpen = false;    // a menu, a dialog or the browser has the focus: keys are not heard
    std::array<MMenu, Menus::kCount> m_Menus;
    EDialog m_ResumeDialog;
    StartOptions m_Options;
    KeyWindows m_Windows;
    FastKey m_FastForward;
    FastKey m_Rewind;
    PlayQueue m_Queue;
    int m_nPlaylistDepth = 0;    // playlists that are being opened inside each other
    RecentFiles m_Recent;
    std::unique_ptr<EFileBrowser> m_pBrowser;    // the last one, on the screen or not
    MDeleteDialog* m_pDeleteDialog = nullptr;    // owns itself; null when it is not on the screen
    bool m_bBrowsePending = false;    // the browser comes back after the menu key or the deletion
    int m_nBrowseMode = kBrowseOpen;    // what a chosen file is for
    uint32_t m_nStarvingTicks = 0;    // how long the picture has stopped for lack of data
    CascadeString m_BrowseTitle;
    EFileBrowser::FileInfo m_SelectedEntry;    // the last one chosen
    EFileBrowser::FileInfo m_CurrentEntry;    // the one being opened or played
    NowPlayingMarks m_Marks;    // for phones and the desktop
};
