// Start and end of the program.
#include <cstdio>

#include "app/MThemeSelect.h"
#include "app/NuvidApp.h"
#include "app/OptionStore.h"
#include "platform/CascadeInput.h"
#include "platform/CascadeScreen.h"
#include "platform/CascadeTime.h"
#include "playback/PlaybackGlobals.h"

CascadeString g_AppFolder;

namespace {

constexpr int kFirstActionTicks = 3;    // before the first file is opened: the windows are painted first
constexpr unsigned long kLargestBuffer = ~0UL;

}    // namespace

NuvidApp::NuvidApp()
    : m_Osd(*this)
    , m_Sequence(*this)
{
    m_Decoder.SetClient(this);
}

NuvidApp::~NuvidApp()
{
    DismissWindows();
}

void NuvidApp::OnAppInit()
{
    std::printf("\n\n\n\n\n\n\n\n\n\n");
    CascadeInput::NotifyScreenActivity();
    FindAppFolder();
    g_ThemeSelect.SetAppFolder(g_AppFolder);
    g_ThemeSelect.SetTheme("Ice");

    OptionStore::Load(g_AppFolder, m_Options, m_Recent);    // parameters come after them, and win
    ParameterParser parser(m_Options, *this);
    for (int i = 1; i < GetArgCount(); ++i) {
        parser.Take(GetArg(i));
    }
    g_bTSFix = m_Options.tsFix;

    const CascadeDims screen = CascadeScreen::GetDims();
    m_Osd.SetRect({0, 0, screen.width, screen.height});
    m_Osd.Materialize();
    m_Osd.TakeFocus();
    m_Osd.SetFontSize(m_Options.fontSize);
    if (m_Options.maxBuffer) {
        m_Decoder.SetBufferSize(kLargestBuffer);
    }

    BuildMenus();
    m_Sequence.Begin(SEQ_OPEN_LIST_ENTRY, m_Queue.IsEmpty() ? 0 : kFirstActionTicks);
    g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
    RegisterECPCommand("Nuvid");
}

void NuvidApp::OnAppExit()
{
    OptionStore::Save(m_Options, m_Recent);
    m_Decoder.DoTheClose();
    CascadeApp::OnAppExit();
}

// The window ends the program when it vanishes.
void NuvidApp::Quit()
{
    m_Decoder.DoTheClose();
    m_Osd.Vanish();
}

void NuvidApp::FindAppFolder()
{
    const CascadeString program(GetArg(0));
    const size_t nameLength = GetProgramName().GetLength();
    g_AppFolder = program.Left(program.GetLength() < nameLength ? 0 : program.GetLength() - nameLength);
}

void NuvidApp::SetVideoRes(unsigned index, int value)
{
    m_Decoder.SetVideoRes(index, value);
}

void NuvidApp::AddFile(const char* path, const CascadeString& title)
{
    const CascadeString mainTitle = EFileBrowser::GetDVDFeatureVTS(path, 0, nullptr);
    EFileBrowser::FileInfo entry;
    entry.path = mainTitle.IsEmpty() ? CascadeString(path) : mainTitle;
    entry.title = title;
    m_Queue.Append(entry);
    std::printf("Adding %s to FileList(%d)\n", mainTitle.Text(), m_Queue.Size());
}
