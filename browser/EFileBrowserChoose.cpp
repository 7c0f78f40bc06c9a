// Entering, going up and choosing, with the questions in between.
#include <cstdio>

#include "browser/BrowserKeys.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"

namespace {

constexpr int kPatienceTicks = 3;    // before a disk that does not answer shows the wait window

}    // namespace

void EFileBrowser::EnterFolder(int item)
{
    SetCurrentFolder(m_List.GetTag(item));
}

void EFileBrowser::GoUp()
{
    if (IsInServer()) {
        GoUpInServer();
        return;
    }
    if (IsAtTop()) {
        return;
    }
    const CascadeString parent = CascadeFSObject(m_curPath).GetParentPath();
    if (!parent.IsEmpty()) {
        SetCurrentFolder(parent);
    }
}

void EFileBrowser::OnRightKey()
{
    const ItemKind kind = KindOf(Selected());
    if (kind == ItemKind::kFolder) {
        EnterFolder(Selected());
    } else if (kind == ItemKind::kDevice) {
        ChooseDevice(Selected());
    } else if (kind == ItemKind::kContainer) {
        EnterContainer(Selected());
    }
}

void EFileBrowser::OnSelectKey()
{
    const int item = Selected();
    if (item < 0) {
        return;
    }
    switch (KindOf(item)) {
    case ItemKind::kLeave:
        Finish(kNothingChosen, {});
        break;
    case ItemKind::kParent:
        GoUp();
        break;
    case ItemKind::kDevice:
        ChooseDevice(item);
        break;
    case ItemKind::kContainer:
        EnterContainer(item);
        break;
    case ItemKind::kMedia:
        FinishWithMedia(item);
        break;
    case ItemKind::kText:
        AskPassword();
        break;
    default:
        Choose(item);
        break;
    }
}

// A folder may be a DVD, a file the image of one: the disk is asked first.
void EFileBrowser::Choose(int item)
{
    const CascadeString path = m_List.GetTag(item);
    const uint32_t threshold = m_Set.titleSetThreshold;
    const bool folder = KindOf(item) == ItemKind::kFolder;
    if (!folder && threshold == 0) {
        FinishWithItem(kItemChosen, item);
        return;
    }
    const bool started = m_LookupJob.Start(
        [path, threshold, folder](const JobStop&) { return folder ? PlayLookup::OfFolder(path, threshold) : PlayLookup::OfFile(path, threshold); });
    if (started) {
        StartCountdown(m_nPatience, kPatienceTicks);
        WatchJobs();
    }
}

void EFileBrowser::OnLookup(PlayLookup& lookup)
{
    m_nPatience = 0;
    HideWait();
    const int item = m_List.FindTag(lookup.item);
    if (lookup.mainTitle.IsEmpty() && KindOf(item) == ItemKind::kFolder) {
        EnterFolder(item);
        return;
    }
    m_Lookup = std::move(lookup);
    if (!m_Lookup->password.IsEmpty()) {
        AskPassword();
    } else {
        OfferTitleSets();
    }
}

void EFileBrowser::OfferTitleSets()
{
    if (m_Lookup->titleSets.size() > 1) {
        m_TitleSets.Show(m_Lookup->titleSets, this);
        return;
    }
    const PlayLookup lookup = *m_Lookup;
    m_Lookup.reset();
    if (lookup.mainTitle.IsEmpty()) {
        FinishWithItem(kItemChosen, m_List.FindTag(lookup.item));
    } else {
        FinishWithPath(lookup.mainTitle, lookup.item);
    }
}

void EFileBrowser::OnTitleSet(const FileInfo* chosen)
{
    if (!m_Lookup) {
        return;
    }
    const CascadeString item = m_Lookup->item;
    m_Lookup.reset();
    if (chosen == nullptr) {
        return;
    }
    const CascadeString path = chosen->path;
    std::printf("returnValue: %s\n", path.Text());
    FinishWithPath(path, item);
}

// For the folder that is being entered or, with a lookup, for the DVD that is to be played.
void EFileBrowser::AskPassword()
{
    if (!m_Lookup) {
        m_Phase = Phase::kAskingPassword;
    }
    m_Keyboard.SetText("");
    m_Keyboard.ShowDialog("Enter Password", true, this);
}

void EFileBrowser::OnKeyboardText(const CascadeString& text)
{
    const CascadeString& password = m_Lookup ? m_Lookup->password : m_Config.password;
    const bool right = text.Compare(password, true) == 0;
    if (m_Lookup) {
        if (right) {
            OfferTitleSets();
        } else {
            m_Lookup.reset();
            ShowNotice("That is not the password.");
        }
    } else if (right) {
        RescanFolder();
    } else {
        ShowTextLine("You are not authorized to view this folder.");
    }
}

void EFileBrowser::OnKeyboardCancelled()
{
    if (m_Lookup) {
        m_Lookup.reset();
    } else if (m_Listed) {
        LeaveWait();
    } else {
        ShowTextLine("You are not authorized to view this folder.");
    }
}

void EFileBrowser::OnInfoKey()
{
    const ItemKind kind = KindOf(Selected());
    if (!BrowserKeys::IsFor(kind, Remote::kInfo)) {
        return;
    }
    const CascadeString path = m_List.GetTag(Selected());
    const CascadeString picture = m_List.GetThumbnail(Selected());
    const bool folder = kind == ItemKind::kFolder;
    if (m_InfoJob.Start([path, folder, picture](const JobStop&) { return ItemDetail::Read(path, folder, picture); })) {
        StartCountdown(m_nPatience, kPatienceTicks);
        WatchJobs();
    }
}

void EFileBrowser::ShowInfo(const ItemDetail& detail)
{
    m_nPatience = 0;
    HideWait();
    m_InfoWindow.SetPicture(detail.picture);
    m_InfoWindow.SetInfo(detail.path, detail.info);
    m_InfoWindow.ShowDialog(this);
}

void EFileBrowser::OnInfoPlay()
{
    OnSelectKey();
}

void EFileBrowser::OnInfoDelete()
{
    OnDeleteKey();
}
