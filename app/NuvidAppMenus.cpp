// The menus, and what their items do.
#include <cstdio>
#include <ctime>
#include <utility>

#include "app/MThemeSelect.h"
#include "app/MenuTables.h"
#include "app/NuvidApp.h"
#include "app/OptionChoices.h"
#include "app/Playlist.h"
#include "platform/CascadeInput.h"
#include "platform/RemoteKeys.h"
#include "widgets/EUtils.h"

// What each button does; the recent files are a range of their own.
struct MenuActions {
    struct Row {
        unsigned long id;
        void (NuvidApp::*act)();
    };
    static constexpr Row kRows[] = {
        {Menus::kOpenFile, &NuvidApp::OpenFile},
        {Menus::kQueueFile, &NuvidApp::QueueFile},
        {Menus::kRecentFiles, &NuvidApp::ShowRecentFileMenu},
        {Menus::kAdvancedMenu, &NuvidApp::ShowAdvancedMenu},
        {Menus::kQuit, &NuvidApp::Quit},
        {Menus::kOptionsMenu, &NuvidApp::Options},
        {Menus::kDeleteFile, &NuvidApp::DeleteFile},
        {Menus::kSavePlaylist, &NuvidApp::SavePlaylist},
        {Menus::kBack, &NuvidApp::BackToMainMenu},
        {Menus::kOptionsDone, &NuvidApp::OptionsDone},
        {Menus::kPlaybackDone, &NuvidApp::PlaybackOptionsDone},
    };
};

void NuvidApp::BuildMenus()
{
    for (size_t i = 0; i < m_Menus.size(); ++i) {
        const Menus::MenuRow& row = Menus::kRows[i];
        MMenu& menu = m_Menus[i];
        menu.SetTitle(row.title);
        menu.SetHandler(this);
        menu.SetButtonSize(row.buttonWidth);
        CascadeRect rect = {0, 0, row.width, row.height};
        EUtils::CenterRectInScreen(rect);
        menu.SetRect(rect);
        for (size_t j = 0; j < row.itemCount; ++j) {
            const Menus::ItemRow& item = row.items[j];
            if (item.ChoiceCount() == 0) {
                menu.AddItem(item.id, item.text);
            } else {
                menu.AddSpinner(item.id, item.text, item.current, item.choices, item.ChoiceCount());
            }
        }
    }
}

void NuvidApp::ShowMenu(Menus::Menu menu)
{
    m_bMenuOpen = true;
    m_Menus[menu].Materialize(CascadeWindow::kPlane2);
}

// A file that is opened from outside takes the place of whatever is being asked; nobody is told of a result.
void NuvidApp::DismissWindows()
{
    for (MMenu& menu : m_Menus) {
        menu.Vanish();
    }
    m_ResumeDialog.Vanish();
    if (m_pBrowser != nullptr) {
        m_pBrowser->Dismiss();
    }
    if (MDeleteDialog* const dialog = std::exchange(m_pDeleteDialog, nullptr)) {
        dialog->Vanish();
    }
    m_bBrowsePending = false;
    m_bMenuOpen = false;
}

bool NuvidApp::IsAnythingAsked() const
{
    for (const MMenu& menu : m_Menus) {
        if (menu.IsMaterialized()) {
            return true;
        }
    }
    return m_ResumeDialog.IsMaterialized() || m_pDeleteDialog != nullptr || IsBrowsing();
}

void NuvidApp::OnMenu(unsigned long id)
{
    m_bMenuOpen = false;
    m_Osd.Redraw();
    if (id == IMMenu_CB::kCancelled) {
        m_Osd.TakeFocus();
        return;
    }
    if (id >= Menus::kFirstRecent && id < Menus::kFirstRecent + RecentFiles::kSlots) {
        OpenRecent(id - Menus::kFirstRecent);
        return;
    }
    for (const MenuActions::Row& row : MenuActions::kRows) {
        if (row.id == id) {
            (this->*row.act)();
            return;
        }
    }
}

// ---- the main and the advanced menu

void NuvidApp::ShowAdvancedMenu()
{
    ShowMenu(Menus::kAdvanced);
}

// The key finds the main window with the focus again, and opens the main menu.
void NuvidApp::BackToMainMenu()
{
    PressKey(Remote::kMenu);
}

void NuvidApp::PressKey(unsigned long key)
{
    CascadeInput::DispatchKeyDown(key);
    CascadeInput::DispatchKeyUp(key);
}

// ---- playlists and recent files

void NuvidApp::SavePlaylist()
{
    if (m_Queue.IsEmpty()) {
        Info("No files to save!");
        return;
    }
    const std::vector<CascadeString> paths = m_Queue.Paths();
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    const CascadeString name = Playlist::NameFor(paths.front(), local);
    const bool saved = Playlist::Write(name, paths);
    Info(saved ? "Playlist saved to:" : "Failed to open file for writing", Osd::kNoIcon, name);
}

void NuvidApp::ShowRecentFileMenu()
{
    for (size_t i = 0; i < RecentFiles::kSlots; ++i) {
        // The end of a path tells more than its beginning.
        const CascadeString text = EUtils::TrimStringToWidth(m_Recent[i], Menus::kRecentTextWidth, GetWidgetFont(0), true);
        m_Menus[Menus::kRecent].SetText(Menus::kFirstRecent + i, text, 0);
    }
    ShowMenu(Menus::kRecent);
}

void NuvidApp::OpenRecent(size_t slot)
{
    m_SelectedEntry = {};
    m_SelectedEntry.path = m_SelectedEntry.location = m_Recent[slot];
    m_CurrentEntry = m_SelectedEntry;
    m_Sequence.GoIdle();    // an end of file that is still being waited for is not this file's
    OpenFile(m_CurrentEntry, true);
}

// ---- options

void NuvidApp::Options()
{
    MMenu& menu = m_Menus[Menus::kOptions];
    menu.SetCurrentChoice(Menus::kBrowserFilter, m_Options.browserModeDefault);
    menu.SetCurrentChoice(Menus::kMinFileSize, OptionChoices::OfMinFileSize(m_Options.minFileSize));
    menu.SetCurrentChoice(Menus::kIconSize, OptionChoices::OfIconSize(m_Options.iconSize));
    menu.SetCurrentChoice(Menus::kFontSize, OptionChoices::OfFontSize(m_Options.fontSize));
    menu.SetCurrentChoice(Menus::kResumeTimeout, OptionChoices::OfResumeTimeout(m_Options.resumeTimeout));
    for (int i = 0; i < MMenu::kMaxChoices; ++i) {
        menu.SetText(Menus::kTheme, g_ThemeSelect.GetThemeNameAt(static_cast<unsigned long>(i)), i);
    }
    menu.SetCurrentChoice(Menus::kTheme, static_cast<int>(g_ThemeSelect.GetThemeIndex()));
    ShowMenu(Menus::kOptions);
}

void NuvidApp::SetOptions()
{
    const MMenu& menu = m_Menus[Menus::kOptions];
    m_Options.browserMode = m_Options.browserModeDefault = menu.GetCurrentChoice(Menus::kBrowserFilter);
    m_Options.iconSize = OptionChoices::IconSize(menu.GetCurrentChoice(Menus::kIconSize));
    m_Options.minFileSize = OptionChoices::MinFileSize(menu.GetCurrentChoice(Menus::kMinFileSize));
    m_Options.fontSize = OptionChoices::FontSize(menu.GetCurrentChoice(Menus::kFontSize));
    m_Osd.SetFontSize(m_Options.fontSize);
    m_Options.resumeTimeout = OptionChoices::ResumeTimeout(menu.GetCurrentChoice(Menus::kResumeTimeout));
    const char* const theme = g_ThemeSelect.GetThemeNameAt(static_cast<unsigned long>(menu.GetCurrentChoice(Menus::kTheme)));
    if (theme != nullptr && CascadeString(theme) != g_ThemeSelect.GetThemeName()) {
        g_ThemeSelect.SetTheme(theme);
    }
}

void NuvidApp::OptionsDone()
{
    SetOptions();
    BackToMainMenu();
}

void NuvidApp::VidOptions()
{
    MMenu& menu = m_Menus[Menus::kPlayback];
    const int programs = static_cast<int>(m_Decoder.GetNumPrograms());
    const int sounds = static_cast<int>(m_Decoder.GetNumAudioStreams());
    for (int i = 0; i < MMenu::kMaxChoices; ++i) {
        const CascadeString text = CascadeString::Format("Program %d", i + 1);
        menu.SetText(Menus::kProgram, i < programs ? text.Text() : nullptr, i);
    }
    for (int i = 0; i < sounds; ++i) {
        const CascadeString text = m_Decoder.GetAudioStr(i);
        std::printf("Audio %d: %s\n", i + 1, text.Text());
        menu.SetText(Menus::kAudioStream, text, i);
    }
    for (int i = sounds; i < MMenu::kMaxChoices; ++i) {
        menu.SetText(Menus::kAudioStream, nullptr, i);
    }
    menu.SetCurrentChoice(Menus::kProgram, static_cast<int>(m_Decoder.GetProgram()));
    menu.SetCurrentChoice(Menus::kAudioStream, static_cast<int>(m_Decoder.GetAudioStream()));

    constexpr const char* kStandards[] = {"NTSC", "PAL"};
    for (int i = 1; i <= 2; ++i) {
        const int resolution = m_Decoder.GetVideoRes(static_cast<unsigned>(i));
        if (resolution != -1) {
            menu.SetText(Menus::kVideoResolution, CascadeString::Format("%s (%d)", kStandards[i - 1], resolution + 1), i);
        }
    }
    menu.SetCurrentChoice(Menus::kVideoResolution, m_Decoder.GetFileVideoRes());
    ShowMenu(Menus::kPlayback);
}

// A change of the output's resolution opens the decoder anew, with the chosen streams; without one the
// program is applied by itself.
void NuvidApp::PlaybackOptionsDone()
{
    const MMenu& menu = m_Menus[Menus::kPlayback];
    m_Decoder.SetProgram(menu.GetCurrentChoice(Menus::kProgram));
    m_Decoder.SetAudioStream(menu.GetCurrentChoice(Menus::kAudioStream));
    if (!m_Decoder.SwitchToVideoRes(static_cast<unsigned>(menu.GetCurrentChoice(Menus::kVideoResolution)))) {
        m_Decoder.ChangeProgram();
    }
    Info("", Osd::kNoIcon, m_Decoder.GetAudioStr(static_cast<int>(m_Decoder.GetAudioStream())));
}

// ---- the resume question

// Nothing is asked over a menu, and a queue plays through without questions, on purpose.
bool NuvidApp::AskForResume()
{
    if (m_bMenuOpen || m_Queue.Size() >= 2 || !m_Options.resumeEnabled) {
        return false;
    }
    m_ResumeDialog.SetGraphicsFolders(g_ThemeSelect.GetThemeImagesFolder(), g_ThemeSelect.GetCommonImagesFolder());
    m_ResumeDialog.SetTitle("Resume Playback");
    m_ResumeDialog.SetText("Would you like to resume playback from where you last left off?");
    m_ResumeDialog.SetChoices({"Yes", "No"});
    m_ResumeDialog.SetTimeout(m_Options.resumeTimeout);
    m_ResumeDialog.Show("Resume", this);
    m_bMenuOpen = true;
    return true;
}

// Any other answer, and none, plays on from the start.
void NuvidApp::OnDialogResult(const CascadeString& dialogName, const CascadeString& button)
{
    m_bMenuOpen = false;
    if (dialogName != "Resume") {
        return;
    }
    m_Decoder.ResumeAnswered();
    if (button != "Yes") {
        return;
    }
    m_Sequence.GoIdle();
    if (m_Decoder.SkipToResumePoint()) {
        PressKey(Remote::kInfo);    // shows the new position
    } else {
        Info("Resume failed!");
    }
}
