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
#include <optional>
#include <utility>
#include <vector>

#include "browser/BackgroundJob.h"
#include "browser/BrowserDetail.h"
#include "browser/BrowserItem.h"
#include "browser/BrowserSettings.h"
#include "browser/EInfoWindow.h"
#include "browser/FolderConfig.h"
#include "browser/FolderScan.h"
#include "browser/ItemDetail.h"
#include "browser/LabelWindow.h"
#include "browser/PlayLookup.h"
#include "browser/ServerLocation.h"
#include "browser/TitleSetChoice.h"
#include "platform/CascadeArrays.h"
#include "platform/CascadeMediaServers.h"
#include "platform/CascadeString.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeUPnP.h"
#include "platform/CascadeWindow.h"
#include "widgets/EKeyboardWindow.h"
#include "widgets/EListView.h"
#include "widgets/EPalette.h"
#include "widgets/EWaitWindow.h"

// The folder on the screen, or the one being entered: ends in "/", empty until there was one. One for the whole program,
// as there is one screen. The user-interface thread's: work in the background gets a copy.
extern CascadeString m_curPath;

class EFileBrowser : public CascadeWindow,
                     public CascadeTimer,
                     public CascadeUPnP,
                     public BrowserChoices,
                     private EKeyboardWindow::Client,
                     private EInfoWindow::Client,
                     private TitleSetChoice::Client {
public:
    explicit EFileBrowser(FolderReader reader = ReadFolder);
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
    void SetFilterLabel(const char* label);    // in place of the label that each filter has
    void SetChooseHint(const char* hint) { m_Set.chooseHint = hint; }    // what choosing does, for the line of hints

    // Starts on the whole screen; always true. `startFolder` may be a media server's (ServerLocation.h). The viewer
    // gets no higher than `topFolder`.
    virtual bool BrowseDirectory(const char* title, const char* startFolder, const char* topFolder, const char* browseRoot, FilterType filter,
        CascadeDirBrowser::SelectableObjectType selectable, Callback callback, void* context);

    // Where the cursor goes: at the next listing when the browser is not on the screen yet, else at once.
    void SetSelectedFile(const char* path);
    void SetCurrentFolder(const char* path);
    void RescanFolder();
    void RescanUPnPFolder();    // asks the media server for the container that is shown
    void Dismiss();    // leaves the screen without calling back
    void ShowNotice(const char* text);    // for some seconds, in place of the hints

    // Path of the first file of the largest title set in a DVD folder, which may be given itself or as the
    // folder that holds `VIDEO_TS`; empty when there is none. With a `minSize` and a list, each title set
    // larger than `minSize` is appended to the list, whose owner deletes the records. Blocks on the disk.
    static CascadeString GetDVDFeatureVTS(const char* path, unsigned long long minSize, CascadeTemplateArray<FileInfo*>* list);

    // What an information file tells, as much as fits the width of the box and the height given, which may be less than
    // its own. The file was read with the folder: nothing here asks the disk.
    static CascadeString GetAssociatedDescription(const EInfoFile& info, int height, const CascadeRect& box);

    void OnMaterialize() override;
    void OnVanish() override;
    void OnPaint(CascadeBitmap& bitmap) override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long key) override;
    bool OnText(const char* utf8) override;
    void OnTimer(unsigned long id) override;
    void OnAVBrowseResult(unsigned long transaction, TransactionResult result, unsigned long matchCount, AVObjectArray& objects, bool done) override;

private:
    friend struct BrowserKeys;

    // Everywhere but in kListed the keys do nothing but leave.
    enum class Phase { kClosed, kOpening, kWaiting, kScanning, kAskingPassword, kListed };

    using ItemKind = BrowserItemKind;
    using ItemFacts = BrowserItemFacts;
    using Place = BrowserPlace;

    // Entering and scanning (EFileBrowserScan.cpp).
    void OnConfigRead(const FolderConfig& config);
    void StartScan();
    void OnListing(FolderListing& listing);
    void FollowVanishedFolder(const FolderListing& listing);
    void FillList(const FolderListing& listing);
    int AddItem(const char* name, const char* tag, const ItemFacts& facts);
    void AddLeadingItems();
    void AddEntry(const FolderEntry& entry);
    void SetEmptyMessage(const FolderListing& listing);
    int ChooseCursor();
    int FindSelection(const CascadeString& tag) const;
    void ShowTextLine(const char* text);
    void ApplyIconMode();
    void LeaveWait();
    void CatalogDevices(const FolderListing& listing);
    bool IsAtTop() const;

    // Choosing (EFileBrowserChoose.cpp).
    void EnterFolder(int item);
    void GoUp();
    void Choose(int item);
    void OnLookup(PlayLookup& lookup);
    void OfferTitleSets();
    void AskPassword();
    void OnKeyboardText(const CascadeString& text) override;
    void OnKeyboardCancelled() override;
    void OnTitleSet(const FileInfo* chosen) override;
    void OnInfoPlay() override;
    void OnInfoDelete() override;
    void ShowInfo(const ItemDetail& detail);
    void Finish(CallbackReason reason, const FileInfo& result);
    void FinishWithItem(CallbackReason reason, int item);
    void FinishWithPath(const CascadeString& path, const CascadeString& location);

    // Media servers (EFileBrowserUPnP.cpp).
    bool IsInServer() const { return !m_Server.uuid.IsEmpty(); }
    void ChooseDevice(int item);
    void EnterServer(const ServerLocation& location);
    void EnterContainer(int item);
    void GoUpInServer();
    void LeaveServer();
    void ResetUPnPBreadCrumb() { m_Server.crumbs.clear(); }
    void FillServerList(AVObjectArray& objects);
    void AddObject(const AVObject& object);
    void SelectInServer();
    void FinishWithMedia(int item);
    void ShowMediaDetail(int item);
    void ShowServerDetail();
    static void MountListCallback(const CascadeString& name, const CascadeString& uuid, CascadeMediaServers::Change change, void* context);
    void MountDevice(const CascadeString& name, const CascadeString& uuid);
    void UnmountDevice(const CascadeString& uuid);

    // Keys (EFileBrowserKeys.cpp); BrowserKeys.h says which key does what.
    bool PerformKey(unsigned long key);
    void OnUpKey() { MoveCursor(m_List.Step(-1)); }
    void OnDownKey() { MoveCursor(m_List.Step(1)); }
    void OnPageUpKey() { MoveCursor(m_List.Page(-1)); }
    void OnPageDownKey() { MoveCursor(m_List.Page(1)); }
    void OnLeftKey() { GoUp(); }
    void OnRightKey();
    void OnSelectKey();
    void OnPlayKey() { OnSelectKey(); }
    void OnInfoKey();
    void OnFilterKey();
    void OnViewKey();
    void OnDeleteKey();
    void OnExitKey();
    void MoveCursor(bool moved);

    // Detail pane and time (EFileBrowserDetail.cpp).
    void StartCountdown(int& countdown, int ticks);
    void WatchJobs();
    void Tick();
    void Poll();
    void AskDetail();
    void ShowDetail(const ItemDetail& detail);
    void ShowParentDetail();
    void ShowWait(const char* text);
    void HideWait();
    void AbandonJobs();

    // Looks (EFileBrowserDraw.cpp).
    void ShowPosition();
    CascadeString PathText() const;
    const char* FilterLabel() const;
    void PaintHead(CascadeBitmap& bitmap) const;
    void PaintHints(CascadeBitmap& bitmap);
    void RedrawTexts();

    int Selected() const { return m_List.GetSelectedIndex(); }
    const ItemFacts* Facts(int item) const;
    ItemKind KindOf(int item) const;

    FolderReader m_Reader;
    BrowserSettings m_Set;

    // Where the browser is.
    Phase m_Phase = Phase::kClosed;
    Place m_Place;    // how m_curPath is shown
    std::optional<Place> m_Listed;    // what the list shows
    CascadeString m_ListedFolder;
    FolderConfig m_Config;    // of m_curPath
    EInfoFile m_FolderInfo;    // of what the list shows
    std::vector<ItemFacts> m_Facts;    // by item
    CascadeString m_PendingSelection;    // tag to select after the next listing
    CascadeString m_PendingDevice;    // UUID of the media server to select after the next listing
    CallbackReason m_Reason = kNothingChosen;
    FileInfo m_Result;

    // Media servers.
    ServerLocation m_Server;    // the server and container shown; no UUID: a folder is shown
    CascadeString m_ServerName;    // as the list had it; empty after a start inside the server
    AVObjectArray m_BrowseResult;
    unsigned long m_nBrowse = 0;    // the request whose answer is waited for; 0: none
    CascadeString m_LastContainer;    // identifier of the one listed last
    CascadeString m_AwaitedDevice;    // UUID of the server just left, which has not been found again yet

    // Work on the browsed disk.
    BackgroundJob<FolderConfig> m_ConfigJob;
    BackgroundJob<FolderListing> m_ScanJob;
    BackgroundJob<ItemDetail> m_DetailJob;
    BackgroundJob<ItemDetail> m_InfoJob;
    BackgroundJob<PlayLookup> m_LookupJob;
    std::optional<PlayLookup> m_Lookup;    // waits for a password or a title set
    bool m_bDetailWanted = false;    // once the running detail job is done
    uint32_t m_nDetailAskedAt = 0;    // ms of uptime
    int m_nHungDetails = 0;    // detail jobs of this folder that never came back

    // Time. Countdowns are in ticks; 0: not running.
    uint32_t m_nTickTimer = 0;
    uint32_t m_nPollTimer = 0;
    bool m_bScanPhase = false;    // the next RescanFolder scans; before, it only shows the wait window
    int m_nRescanCountdown = 0;
    int m_nDetailCountdown = 0;
    int m_nNoticeCountdown = 0;
    int m_nPatience = 0;    // until a job that has not come back shows the wait window
    CascadeString m_Typed;    // to jump to a name
    uint32_t m_nTypedAt = 0;    // ms of uptime
    ItemKind m_HintsFor = ItemKind::kText;    // the kind of item that the hints on the screen are for

    EPalette m_Palette;
    CascadeString m_Notice;
    EListView m_List;
    BrowserDetail m_Detail;
    LabelWindow m_Position;
    EWaitWindow m_Wait;
    EKeyboardWindow m_Keyboard;
    EInfoWindow m_InfoWindow;
    TitleSetChoice m_TitleSets;
};
