// Entering folders and filling the list.
#include <algorithm>
#include <cstdio>

#include "browser/BrowserLayout.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kWaitTicks = 2;    // the wait window stands so long before a folder is read
constexpr int kPatienceTicks = 3;    // before a folder that does not say whether it may be entered shows it
constexpr int kDetailTicks = 5;

constexpr const char* kFolderIcons[] = {"audio/listen-folder.png", "folder-large.png", "folder-extralarge.png"};
constexpr const char* kParentIcons[] = {"audio/listen-folder-back.png", "folder-back-large.png", "folder-back-extralarge.png"};
constexpr const char* kFileIcons[] = {"file.png", "file-large.png", "file-extralarge.png"};

// The item that the cursor stood on when a browser closed last: when it is gone (deleted, say), the next browser
// begins with what has taken its place.
struct LastItem {
    CascadeString tag;
    int index = -1;
};
LastItem g_LastItem;

CascadeString WithoutSlash(const CascadeString& folder)
{
    return folder.GetLength() > 1 && folder.Right(1) == "/" ? folder.Left(folder.GetLength() - 1) : folder;
}

}    // namespace

bool EFileBrowser::IsAtTop() const
{
    return m_curPath == "/" || m_curPath == m_Set.topFolder;
}

void EFileBrowser::SetCurrentFolder(const char* path)
{
    const CascadeString given(path);
    LeaveServer();
    AbandonJobs();
    HideWait();
    m_Place.previous = m_curPath;
    m_curPath = given.IsEmpty() || given.Compare("http://", false, false, 7) == 0 ? CascadeString("/") : given;
    if (m_curPath.Right(1) != "/") {
        m_curPath += '/';
    }
    m_Place.pattern.Empty();
    m_Place.filter = m_Set.filter;
    m_Place.iconMode = m_Set.iconMode;
    m_Config = FolderConfig();
    m_bScanPhase = false;
    m_nHungDetails = 0;
    m_Phase = Phase::kOpening;
    StartCountdown(m_nPatience, kPatienceTicks);
    RedrawTexts();
    if (m_ConfigJob.Start([folder = m_curPath](const JobStop&) { return FolderConfig::Read(folder); })) {
        WatchJobs();
    } else {
        OnConfigRead({});
    }
}

void EFileBrowser::OnConfigRead(const FolderConfig& config)
{
    m_nPatience = 0;
    m_Config = config;
    m_Place.pattern = config.pattern;
    m_Place.filter = config.filter == FolderConfig::kNotSaid ? m_Set.filter : config.filter;
    m_Place.iconMode = config.iconMode == FolderConfig::kNotSaid ? m_Set.iconMode : config.iconMode;
    if (config.password.IsEmpty()) {
        RescanFolder();
    } else {
        HideWait();
        AskPassword();
    }
}

// First shows the wait window, and is called again by the timer to scan: what is slow is seen to be under way.
void EFileBrowser::RescanFolder()
{
    if (!m_bScanPhase) {
        const bool named = KindOf(Selected()) == ItemKind::kFolder || KindOf(Selected()) == ItemKind::kFile;
        if (named && m_PendingSelection.IsEmpty() && m_PendingDevice.IsEmpty() && m_Listed && m_ListedFolder == m_curPath) {
            m_PendingSelection = m_List.GetTag(Selected());    // read again, not entered: the cursor stays
        }
        AbandonJobs();
        m_Phase = Phase::kWaiting;
        ShowWait("Reading the folder...");
        StartCountdown(m_nRescanCountdown, kWaitTicks);
        return;
    }
    m_bScanPhase = false;
    StartScan();
}

void EFileBrowser::StartScan()
{
    FolderScanRequest request;
    request.folder = m_curPath;
    request.filter = m_Place.filter;
    request.minSize = m_Set.minFileSize;
    request.pattern = m_Place.pattern;
    request.selectable = m_Set.selectable;
    m_Phase = Phase::kScanning;
    if (m_ScanJob.Start([reader = m_Reader, request](const JobStop& stop) { return reader(request, stop); })) {
        WatchJobs();
        return;
    }
    FolderListing nothing;
    nothing.state = FolderListing::kUnreadable;
    OnListing(nothing);
}

void EFileBrowser::OnListing(FolderListing& listing)
{
    if (listing.state == FolderListing::kGone && !IsAtTop()) {
        FollowVanishedFolder(listing);
        return;
    }
    m_Phase = Phase::kListed;
    m_FolderInfo = std::move(listing.info);
    m_FolderInfo.description = GetAssociatedDescription(m_FolderInfo, BrowserLayout::kFolderDescription, BrowserLayout::kDescription);
    FillList(listing);
    m_Listed = m_Place;
    m_ListedFolder = m_curPath;
    if (m_List.GetItemCount() > 0) {
        m_List.SetSelectedIndex(ChooseCursor(), true);
        StartCountdown(m_nDetailCountdown, kDetailTicks);
    }
    m_Listed->previous = m_Place.previous;
    m_PendingSelection.Empty();
    ShowParentDetail();
    CatalogDevices(listing);
    HideWait();
    ShowPosition();
    RedrawTexts();
    m_List.Redraw();
    m_List.StartIconLoading();
}

void EFileBrowser::FollowVanishedFolder(const FolderListing& listing)
{
    const bool within = listing.nearestParent.Str().starts_with(m_Set.topFolder.Str());
    ShowNotice("That folder is no longer there.");
    SetCurrentFolder(within ? listing.nearestParent : m_Set.topFolder);
}

void EFileBrowser::ApplyIconMode()
{
    static constexpr int kListModes[] = {EListView::kSmall, EListView::kSmall, EListView::kLarge, EListView::kExtraLarge};
    const int mode = std::clamp(m_Place.iconMode, 0, static_cast<int>(std::size(kListModes)) - 1);
    const bool sizes = mode != kIconsSmallNoSize && !m_Set.hideSize;
    m_List.SetListMode(kListModes[mode]);
    m_List.SetColumnWidth(m_List.GetColumn("Size"), sizes ? BrowserLayout::kSizeColumn : BrowserLayout::kSizeColumnHidden);
}

void EFileBrowser::FillList(const FolderListing& listing)
{
    m_List.Clear(false);
    m_Facts.clear();
    m_Facts.reserve(listing.entries.size() + 2);
    ApplyIconMode();
    AddLeadingItems();
    const int leading = m_List.GetItemCount();
    for (const FolderEntry& entry : listing.entries) {
        AddEntry(entry);
    }
    if (m_List.GetItemCount() == leading) {
        SetEmptyMessage(listing);
    }
}

int EFileBrowser::AddItem(const char* name, const char* tag, const ItemFacts& facts)
{
    const int item = m_List.AddItem(name);
    m_List.SetTag(item, tag);
    const bool back = facts.kind == ItemKind::kParent || facts.kind == ItemKind::kLeave;
    const bool file = facts.kind == ItemKind::kFile || facts.kind == ItemKind::kMedia;
    const auto& icons = back ? kParentIcons : (file ? kFileIcons : kFolderIcons);
    // The small icons of folders are the platform's own.
    const CascadeString small = file ? m_Set.iconPath + icons[0] : CascadeString(CascadeGraphicsFolder()) + icons[0];
    m_List.SetIcons(item, small, m_Set.iconPath + icons[1], m_Set.iconPath + icons[2]);
    m_Facts.push_back(facts);
    return item;
}

void EFileBrowser::AddLeadingItems()
{
    if (!IsAtTop()) {
        const CascadeString parent = CascadeFSObject(m_curPath).GetParentPath();
        if (!parent.IsEmpty()) {
            AddItem("..", parent, {0, 1, ItemKind::kParent});
        }
    } else if (m_Set.backEntry) {
        AddItem("Back", "", {0, 1, ItemKind::kLeave});
    }
}

void EFileBrowser::AddEntry(const FolderEntry& entry)
{
    if (entry.kind == FolderEntry::kDevice) {
        const int item = AddItem(entry.name, "0", {0, 1, ItemKind::kDevice});
        m_List.SetText(item, m_List.GetColumn("UUID"), entry.extra);
        return;
    }
    const CascadeString path = m_curPath + entry.name;
    if (entry.kind == FolderEntry::kFolder) {
        AddItem(entry.name, path, {0, 1, ItemKind::kFolder});
        return;
    }
    const int item = AddItem(entry.name, path, {entry.totalSize, entry.parts, ItemKind::kFile});
    m_List.SetText(item, m_List.GetColumn("Size"), EUtils::GetFileSizeKBString(entry.size));
    if (!entry.extra.IsEmpty()) {
        m_List.SetThumbnail(item, m_curPath + entry.extra);
    }
    if (entry.hasSideFile) {
        m_List.SetMark(item, true);
    }
}

void EFileBrowser::SetEmptyMessage(const FolderListing& listing)
{
    if (listing.state == FolderListing::kUnreadable) {
        m_List.SetMessage("This folder cannot be read.");
    } else if (listing.state == FolderListing::kGone) {
        m_List.SetMessage("This folder is no longer there.");
    } else if (listing.hiddenFiles > 0) {
        m_List.SetMessage(listing.hiddenFiles == 1 ? "The filter hides the one file here." :
                                                     CascadeString::Format("The filter hides all %zu files here.", listing.hiddenFiles));
    } else {
        m_List.SetMessage("This folder is empty.");
    }
}

int EFileBrowser::FindSelection(const CascadeString& tag) const
{
    const int found = m_List.FindTag(tag);
    const size_t tilde = tag.Str().rfind('~');
    // A title set of a DVD image stands for its image.
    return found < 0 && tilde != std::string::npos ? m_List.FindTag(tag.Left(tilde)) : found;
}

int EFileBrowser::ChooseCursor()
{
    int found = -1;
    if (!m_PendingSelection.IsEmpty()) {
        found = FindSelection(m_PendingSelection);
        if (found < 0 && m_PendingSelection == g_LastItem.tag) {
            found = std::min(g_LastItem.index, m_List.GetItemCount() - 1);
        }
        m_PendingSelection.Empty();
    } else if (!m_PendingDevice.IsEmpty()) {
        found = m_List.FindText(m_List.GetColumn("UUID"), m_PendingDevice);
        m_AwaitedDevice = found < 0 ? m_PendingDevice : CascadeString();
        m_PendingDevice.Empty();
    } else if (m_curPath.GetLength() < m_Place.previous.GetLength()) {
        found = m_List.FindTag(WithoutSlash(m_Place.previous));
        m_Place.previous = m_curPath;
    }
    return std::max(found, 0);
}

void EFileBrowser::ShowTextLine(const char* text)
{
    m_List.Clear(false);
    m_Facts.clear();
    AddItem(text, "", {0, 1, ItemKind::kText});
    m_List.SetSelectedIndex(0, true);
    m_Listed = m_Place;
    m_ListedFolder = m_curPath;
    m_FolderInfo = EInfoFile();
    m_Phase = Phase::kListed;
    ShowParentDetail();
    ShowPosition();
    m_List.Redraw();
    RedrawTexts();
}

// The viewer does not want to wait for a folder any longer. What it was to replace is still on the list.
void EFileBrowser::LeaveWait()
{
    if (IsInServer()) {
        CancelAVBrowse();    // its answer lists what has come
        return;
    }
    AbandonJobs();
    HideWait();
    m_PendingSelection.Empty();
    if (m_Listed) {
        m_Place = *m_Listed;
        m_curPath = m_ListedFolder;
        m_Phase = Phase::kListed;
        RedrawTexts();
    } else if (m_curPath != m_Set.topFolder) {
        m_PendingDevice.Empty();
        SetCurrentFolder(m_Set.topFolder);
    } else {
        Finish(kNothingChosen, {});
    }
}

void EFileBrowser::CatalogDevices(const FolderListing& listing)
{
    const bool start = m_curPath == m_Set.startFolder || m_curPath == m_Set.startFolder + "/";
    if (!listing.holdsDevices && (m_curPath == m_Set.topFolder || start)) {
        std::printf("should be cataloging...\n");
        CascadeMediaServers::Watch(MountListCallback, this);
    }
}

void EFileBrowser::FinishWithItem(CallbackReason reason, int item)
{
    FileInfo result;
    const ItemKind kind = KindOf(item);
    const bool named = kind == ItemKind::kFolder || kind == ItemKind::kFile;
    result.path = named ? CascadeString(m_List.GetTag(item)) : m_curPath + "..";
    result.location = result.path;
    g_LastItem = {result.path, item};
    Finish(reason, result);
}

void EFileBrowser::FinishWithPath(const CascadeString& path, const CascadeString& location)
{
    FileInfo result;
    result.path = path;
    result.location = location;
    g_LastItem = {location, Selected()};
    Finish(kPathSettled, result);
}
