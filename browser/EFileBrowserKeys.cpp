// Keys and typed characters.
#include "browser/BrowserKeys.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeTime.h"

namespace {

constexpr int kDetailTicks = 5;    // the detail pane follows when the cursor has stood so long
constexpr int kIconModes = 4;
constexpr uint32_t kTypingMs = 1000;    // between two characters of one name

}    // namespace

bool EFileBrowser::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    return PerformKey(key);
}

// Every key is the browser's while it is open.
bool EFileBrowser::OnKeyDown(unsigned long key)
{
    return PerformKey(key);
}

bool EFileBrowser::OnKeyUp(unsigned long /*key*/)
{
    m_List.StepReleased();
    return true;
}

bool EFileBrowser::PerformKey(unsigned long key)
{
    const BrowserKeys::Row* const row = BrowserKeys::Find(key);
    const bool busy = m_Phase != Phase::kListed || m_LookupJob.IsRunning() || m_InfoJob.IsRunning();
    if (row != nullptr && (!busy || row->endsWait)) {
        (this->*row->onDown)();
    }
    return true;
}

void EFileBrowser::MoveCursor(bool moved)
{
    if (moved) {
        m_AwaitedDevice.Empty();
        ShowPosition();
        StartCountdown(m_nDetailCountdown, kDetailTicks);
    }
}

// The characters of a name, typed one after another; a pause begins a new name. A blank begins none: that key
// belongs to playing.
bool EFileBrowser::OnText(const char* utf8)
{
    if (m_Phase != Phase::kListed) {
        return true;
    }
    const uint32_t now = CascadeTime::GetUptimeMilliseconds();
    if (now - m_nTypedAt > kTypingMs) {
        m_Typed.Empty();
    }
    if (static_cast<unsigned char>(*utf8) < ' ' || (*utf8 == ' ' && m_Typed.IsEmpty())) {
        return false;
    }
    m_Typed += utf8;
    m_nTypedAt = now;
    MoveCursor(m_List.JumpTo(m_Typed));
    return true;
}

void EFileBrowser::OnFilterKey()
{
    if (IsInServer()) {
        ShowNotice("Filters are for folders.");
        return;
    }
    FinishWithItem(kFolderChosen, Selected());
}

void EFileBrowser::OnViewKey()
{
    m_Place.iconMode = (m_Place.iconMode + 1) % kIconModes;
    m_Set.iconMode = m_Place.iconMode;
    if (m_Listed) {
        m_Listed->iconMode = m_Place.iconMode;
    }
    const int selected = Selected();
    ApplyIconMode();
    m_List.SetSelectedIndex(selected, true);
    m_List.Redraw();
}

void EFileBrowser::OnDeleteKey()
{
    if (!m_Set.deletion) {
        ShowNotice("Deleting is switched off.");
    } else if (!BrowserKeys::IsFor(KindOf(Selected()), Remote::kStop)) {
        ShowNotice("Only files can be deleted.");
    } else {
        FinishWithItem(kItemChosenForDeletion, Selected());
    }
}

void EFileBrowser::OnExitKey()
{
    if (m_Phase != Phase::kListed) {
        LeaveWait();
    } else if (m_LookupJob.IsRunning() || m_InfoJob.IsRunning()) {
        m_LookupJob.Abandon();
        m_InfoJob.Abandon();
        HideWait();
    } else {
        Finish(kNothingChosen, {});
    }
}
