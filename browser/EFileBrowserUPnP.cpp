// Media servers: the ones that are found beside the folders, and walking through one.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "browser/EFileBrowser.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kDetailTicks = 5;
constexpr int kPatienceTicks = 2;    // before a server that has not answered yet shows the wait window
constexpr const char* kRootContainer = "0";    // of every server (ContentDirectory:1, 2.2.4)
constexpr const char* kPlayable = "video/mpeg";

// "H:MM:SS.F" or fewer fields, in seconds.
uint32_t SecondsOf(const char* duration)
{
    const CascadeTokenArray fields(duration, ":");
    uint32_t seconds = 0;
    uint32_t unit = 1;
    for (size_t i = fields.GetSize(); i > 0 && unit <= 3600; --i, unit *= 60) {
        seconds += static_cast<uint32_t>(std::strtoul(fields[i - 1], nullptr, 10)) * unit;
    }
    return seconds;
}

}    // namespace

// ---- entering and leaving

void EFileBrowser::ChooseDevice(int item)
{
    const CascadeString name = m_List.GetText(item, 0);
    EnterServer({m_List.GetText(item, m_List.GetColumn("UUID")), {{m_List.GetTag(item), name}}});
}

void EFileBrowser::EnterServer(const ServerLocation& location)
{
    LeaveServer();
    m_Server = location;
    m_PendingDevice.Empty();
    m_Listed.reset();
    m_LastContainer.Empty();
    if (m_Server.crumbs.empty()) {
        m_Server.crumbs.push_back({kRootContainer, "Media server"});
    }
    RescanUPnPFolder();
}

void EFileBrowser::EnterContainer(int item)
{
    m_Server.crumbs.push_back({m_List.GetTag(item), m_List.GetText(item, 0)});
    RescanUPnPFolder();
}

// From the root back to the folder that listed the server.
void EFileBrowser::GoUpInServer()
{
    if (m_Server.crumbs.size() > 1) {
        m_Server.crumbs.pop_back();
        RescanUPnPFolder();
        return;
    }
    const CascadeString uuid = m_Server.uuid;
    LeaveServer();
    m_PendingDevice = uuid;
    SetCurrentFolder(m_curPath);
}

// Also the end of looking for servers. An answer that is still on its way is not taken.
void EFileBrowser::LeaveServer()
{
    CascadeMediaServers::Unwatch(this);
    CancelAVBrowse();
    m_nBrowse = 0;
    m_BrowseResult.Empty();
    m_Server.uuid.Empty();
    ResetUPnPBreadCrumb();
    m_AwaitedDevice.Empty();
}

// ---- listing

void EFileBrowser::RescanUPnPFolder()
{
    if (!IsInServer()) {
        return;
    }
    AbandonJobs();
    m_BrowseResult.Empty();
    m_Phase = Phase::kScanning;
    StartCountdown(m_nPatience, kPatienceTicks);
    m_nBrowse = InitiateAVBrowse(m_Server.uuid, m_Server.crumbs.back().id, "*", "+upnp:class,+dc:title", 0, 0, m_BrowseResult);
}

void EFileBrowser::OnAVBrowseResult(unsigned long transaction, TransactionResult result, unsigned long matchCount, AVObjectArray& objects, bool done)
{
    if (transaction != m_nBrowse || !IsInServer()) {
        return;
    }
    if (!done) {
        m_Wait.SetText(CascadeString::Format("%zu items so far...", objects.GetSize()));
        return;
    }
    m_nBrowse = 0;
    const char* const text = TransactionResultToString(result);
    std::printf("Match Count: %ld\nError: %s\n", static_cast<long>(matchCount), text);
    const bool nothing = objects.GetSize() == 0;
    FillServerList(objects);
    if (nothing) {
        m_List.SetMessage(result == kTransactionOK ? "This folder is empty." : text);
    } else if (result != kTransactionOK) {
        ShowNotice(text);
    }
    m_Phase = Phase::kListed;
    m_nPatience = 0;
    SelectInServer();
    ShowParentDetail();
    HideWait();
    ShowPosition();
    RedrawTexts();
    m_List.Redraw();
    m_List.StartIconLoading();
}

void EFileBrowser::FillServerList(AVObjectArray& objects)
{
    m_List.Clear(false);
    m_List.SetFocused(true);
    m_Facts.clear();
    m_Facts.reserve(objects.GetSize() + 1);
    const bool root = m_Server.crumbs.size() == 1;
    const int parent = AddItem("..", root ? m_curPath : m_Server.crumbs.back().id, {0, 1, ItemKind::kParent});
    if (!root) {
        m_List.SetText(parent, m_List.GetColumn("UUID"), m_Server.uuid);
    }
    for (size_t i = 0; i < objects.GetSize(); ++i) {
        if (const std::unique_ptr<AVObject> object {objects.TakeOwnership(i)}) {
            AddObject(*object);
        }
    }
    objects.Empty();
}

void EFileBrowser::AddObject(const AVObject& object)
{
    CascadeString tag = object.isItem ? CascadeString() : object.id;
    CascadeString duration;
    unsigned long long size = 0;
    for (const AVResource& resource : object.resources) {
        if (!object.isItem) {
            break;
        }
        if (tag.IsEmpty() && resource.protocolInfo.Contains(kPlayable, false)) {
            tag = resource.url;
        }
        size = size == 0 ? resource.size : size;
        duration = duration.IsEmpty() ? resource.duration : duration;
    }
    const int item = AddItem(object.title, tag, {size, 1, object.isItem ? ItemKind::kMedia : ItemKind::kContainer});
    m_List.SetText(item, m_List.GetColumn("UUID"), m_Server.uuid);
    if (size != 0) {
        m_List.SetText(item, m_List.GetColumn("Size"), EUtils::GetFileSizeKBString(size));
    }
    if (!duration.IsEmpty()) {
        m_List.SetText(item, m_List.GetColumn("Duration"), duration);
    }
}

void EFileBrowser::SelectInServer()
{
    int found = -1;
    if (!m_PendingSelection.IsEmpty()) {
        found = m_List.FindTag(m_PendingSelection);
        m_PendingSelection.Empty();
    } else if (!m_LastContainer.IsEmpty()) {
        found = m_List.FindTag(m_LastContainer);
    }
    m_LastContainer = m_Server.crumbs.back().id;
    m_List.SetSelectedIndex(std::max(found, 0), true);
    StartCountdown(m_nDetailCountdown, kDetailTicks);
}

// ---- what is known of an item, and choosing it

void EFileBrowser::ShowMediaDetail(int item)
{
    BrowserDetail::Content content;
    content.heading = m_List.GetText(item, 0);
    if (KindOf(item) != ItemKind::kMedia) {
        content.facts.push_back(KindOf(item) == ItemKind::kDevice ? "Media server" : "Folder");
        content.isFolder = true;
        m_Detail.Show(content);
        return;
    }
    const CascadeString duration = m_List.GetText(item, m_List.GetColumn("Duration"));
    if (!duration.IsEmpty()) {
        const uint32_t seconds = SecondsOf(duration);
        content.facts.push_back(CascadeString::Format("%u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60));
    }
    if (!m_Set.hideSize && Facts(item)->totalSize != 0) {
        content.facts.push_back(EUtils::GetPlainSizeString(Facts(item)->totalSize));
    }
    if (*m_List.GetTag(item) == '\0') {
        content.text = "The server offers no MPEG stream of this item.";
    }
    m_Detail.Show(content);
}

void EFileBrowser::ShowServerDetail()
{
    BrowserDetail::Content content;
    content.heading = m_Server.crumbs.back().name;
    content.isFolder = true;
    m_Detail.Show(content);
}

void EFileBrowser::FinishWithMedia(int item)
{
    FileInfo result;
    result.path = m_List.GetTag(item);
    result.title = m_List.GetText(item, 0);
    result.location = m_Server.Text();
    result.duration = SecondsOf(m_List.GetText(item, m_List.GetColumn("Duration")));
    Finish(kItemChosen, result);
}

// ---- servers that are found while a folder is shown

void EFileBrowser::MountListCallback(const CascadeString& name, const CascadeString& uuid, CascadeMediaServers::Change change, void* context)
{
    auto* const browser = static_cast<EFileBrowser*>(context);
    if (change == CascadeMediaServers::kAppeared) {
        browser->MountDevice(name, uuid);
    } else {
        browser->UnmountDevice(uuid);
    }
}

void EFileBrowser::MountDevice(const CascadeString& name, const CascadeString& uuid)
{
    const int column = m_List.GetColumn("UUID");
    if (m_Phase != Phase::kListed || IsInServer() || m_List.FindText(column, uuid) >= 0) {
        std::printf("Not mounting UPnP Device: %s\n", name.Text());
        return;
    }
    std::printf("Mounting UPnP Device: %s\n", name.Text());
    const int item = AddItem(name, kRootContainer, {0, 1, ItemKind::kDevice});
    m_List.SetText(item, column, uuid);
    m_List.SetMessage("");
    const bool awaited = !m_AwaitedDevice.IsEmpty() && m_AwaitedDevice.Compare(uuid, false) == 0;
    if (awaited || Selected() < 0) {
        MoveCursor(m_List.SetSelectedIndex(item, true));
    }
    ShowPosition();
    m_List.Redraw();
}

void EFileBrowser::UnmountDevice(const CascadeString& uuid)
{
    const int item = m_List.FindText(m_List.GetColumn("UUID"), uuid);
    if (m_Phase != Phase::kListed || IsInServer() || KindOf(item) != ItemKind::kDevice) {
        return;
    }
    if (item == Selected()) {
        StartCountdown(m_nDetailCountdown, kDetailTicks);
    }
    m_List.RemoveItem(item);
    m_Facts.erase(m_Facts.begin() + item);
    ShowPosition();
    m_List.Redraw();
}
