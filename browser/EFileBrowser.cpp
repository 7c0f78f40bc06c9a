#include "browser/EFileBrowser.h"

#include <algorithm>

#include "browser/BrowserLayout.h"
#include "platform/CascadeFile.h"

namespace {

constexpr const char* kColumns[] = {"Name", "Size", "Duration", "UUID", "Description"};

CascadeString WithSlash(CascadeString path)
{
    if (path.Right(1) != "/") {
        path += '/';
    }
    return path;
}

bool IsHttp(const CascadeString& path)
{
    return path.Compare("http://", false, false, 7) == 0;
}

}    // namespace

CascadeString m_curPath;

EFileBrowser::EFileBrowser(FolderReader reader)
    : m_Reader(std::move(reader))
{
    SetTitle("File browser");
    m_List.SetTitle("Browser list");
    m_Position.SetTitle("Browser position");
    m_Wait.SetTitle("Browser wait");
    m_List.SetRect(BrowserLayout::kList);
    m_Position.SetRect(BrowserLayout::kPosition);
    m_Position.SetFont(CascadeFont("system", BrowserLayout::kTextSize));
    for (const char* column : kColumns) {
        m_List.AddColumn(column, 0);
    }
}

EFileBrowser::~EFileBrowser()
{
    Dismiss();
}

void EFileBrowser::SetGraphicsPath(const char* themeFolder)
{
    m_Set.graphicsPath = themeFolder;
    m_Palette = EPalette::Load(themeFolder);
    m_List.SetGraphicsPath(themeFolder);
    m_Detail.SetGraphicsPath(themeFolder);
    m_Position.SetColor(m_Palette.text);
    m_Wait.SetGraphicsPath(themeFolder);
    m_Keyboard.SetGraphicsPath(themeFolder);
    m_InfoWindow.SetGraphicsPath(themeFolder);
    m_TitleSets.SetGraphicsPath(themeFolder);
}

void EFileBrowser::SetIconGraphicsPath(const char* commonFolder)
{
    m_Set.iconPath = commonFolder;
    m_Detail.SetFolderPicture(m_Set.iconPath + "folder-extralarge.png");
}

void EFileBrowser::SetDefaultThumbnail(const char* path)
{
    m_Detail.SetDefaultThumbnail(path);
}

void EFileBrowser::SetDeletionAllowed(bool allowed)
{
    m_Set.deletion = allowed;
    m_InfoWindow.SetDeletionAllowed(allowed);
}

void EFileBrowser::SetHideSize(bool hide)
{
    m_Set.hideSize = hide;
}

void EFileBrowser::SetMinFileSize(uint32_t bytes)
{
    m_Set.minFileSize = bytes;
}

void EFileBrowser::SetTitleSetThreshold(uint32_t bytes)
{
    m_Set.titleSetThreshold = bytes;
}

void EFileBrowser::SetIconMode(int mode)
{
    m_Set.iconMode = mode;
    m_Place.iconMode = mode;
}

void EFileBrowser::SetBackEntry(bool show)
{
    m_Set.backEntry = show;
}

void EFileBrowser::SetFilterLabel(const char* label)
{
    m_Set.filterLabel = label;
}

bool EFileBrowser::BrowseDirectory(const char* title, const char* startFolder, const char* topFolder, const char* browseRoot, FilterType filter,
    CascadeDirBrowser::SelectableObjectType selectable, Callback callback, void* context)
{
    m_Set.title = title;
    m_Set.browseRoot = WithSlash(browseRoot);
    m_Set.topFolder = WithSlash(topFolder);
    m_Set.startFolder = startFolder;
    m_curPath = m_Set.startFolder;
    m_Set.selectable = selectable;
    m_Set.filter = m_Place.filter = filter;
    m_Set.callback = callback;
    m_Set.context = context;
    m_Reason = kNothingChosen;
    m_Result = FileInfo();
    m_Server = ServerLocation();
    m_PendingDevice.Empty();
    if (const auto location = ServerLocation::Parse(m_Set.startFolder)) {
        m_Server = *location;
        m_PendingDevice = location->uuid;
        m_curPath = m_Set.topFolder;
    }
    m_curPath = WithSlash(m_curPath);
    SetRect(BrowserLayout::kScreen);
    Materialize(kPlane2);
    return true;
}

void EFileBrowser::SetSelectedFile(const char* path)
{
    const CascadeString wanted(path);
    if (m_Phase == Phase::kClosed) {
        m_PendingSelection = wanted;
        return;
    }
    if (IsHttp(wanted)) {
        MoveCursor(m_List.SetSelectedIndex(std::max(FindSelection(wanted), 0), true));
        return;
    }
    m_PendingSelection = wanted;
    SetCurrentFolder(CascadeFSObject(wanted).GetParentPath());
}

void EFileBrowser::OnMaterialize()
{
    TakeFocus();
    m_List.Materialize(kPlane2);
    m_Detail.Materialize(kPlane2);
    m_Position.Materialize(kPlane2);
    m_Phase = Phase::kListed;
    if (!m_PendingDevice.IsEmpty()) {
        EnterServer(ServerLocation(m_Server));
        return;
    }
    if (!m_PendingSelection.IsEmpty() && !IsHttp(m_PendingSelection)) {
        const CascadeString parent = WithSlash(CascadeFSObject(m_PendingSelection).GetParentPath());
        // The top folder itself may be what is to be selected; it is never left upwards.
        if (parent.Str().starts_with(m_Set.topFolder.Str())) {
            m_curPath = parent;
        }
    }
    const CascadeString first = m_curPath;
    m_curPath.Empty();
    SetCurrentFolder(first);
}

void EFileBrowser::Dismiss()
{
    m_Set.callback = nullptr;
    Vanish();
}

void EFileBrowser::Finish(CallbackReason reason, const FileInfo& result)
{
    m_Reason = reason;
    m_Result = result;
    Vanish();
}

void EFileBrowser::OnVanish()
{
    m_Phase = Phase::kClosed;
    LeaveServer();
    AbandonJobs();
    for (uint32_t* timer : {&m_nTickTimer, &m_nPollTimer}) {
        if (*timer != 0) {
            KillTimer(*timer);
            *timer = 0;
        }
    }
    for (CascadeWindow* window : std::initializer_list<CascadeWindow*> {&m_TitleSets, &m_InfoWindow, &m_Keyboard, &m_Wait, &m_Position, &m_Detail, &m_List}) {
        window->Vanish();
    }
    m_List.Clear(false);
    m_Facts.clear();
    m_Listed.reset();
    // The last act: the client may open another browser, or a dialog.
    const Callback callback = std::exchange(m_Set.callback, nullptr);
    if (callback != nullptr) {
        callback(m_Result, m_Reason, m_Set.context);
    }
}

const EFileBrowser::ItemFacts* EFileBrowser::Facts(int item) const
{
    return item >= 0 && item < static_cast<int>(m_Facts.size()) ? &m_Facts[static_cast<size_t>(item)] : nullptr;
}

EFileBrowser::ItemKind EFileBrowser::KindOf(int item) const
{
    const ItemFacts* const facts = Facts(item);
    return facts == nullptr ? ItemKind::kText : facts->kind;
}
