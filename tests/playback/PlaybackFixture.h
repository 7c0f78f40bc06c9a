// An engine on the test platform, with a folder of recordings and an owner that writes down what it is asked.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/CascadeApp.h"
#include "platform/CascadeTime.h"
#include "playback/FeedState.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestBytes.h"
#include "tests/support/TestPlatform.h"

class RecordingClient : public IPlaybackClient {
public:
    void ShowText(const char* text) override { texts.emplace_back(text); }
    bool NextFile() override { return Ask("next"); }
    bool PrevFile() override { return Ask("prev"); }
    bool AskForResume() override
    {
        asked.emplace_back("resume");
        return asks;
    }
    std::string LastText() const { return texts.empty() ? "" : texts.back(); }

    std::vector<std::string> texts;
    std::vector<std::string> asked;
    bool moves = false;    // what NextFile and PrevFile answer
    bool asks = false;    // what AskForResume answers

private:
    bool Ask(const char* what)
    {
        asked.emplace_back(what);
        return moves;
    }
};

class PlaybackTest : public PlatformTest {
protected:
    PlaybackTest()
    {
        g_FeedState = {};
        g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
        g_bVideoRunning = false;
        g_bTSFix = false;
        InitPSParser();
    }

    std::string WriteSparse(const std::string& name, uint64_t size)
    {
        m_Folder.Write(name, "");
        std::filesystem::resize_file(m_Folder / name, size);
        return m_Folder / name;
    }

    CascadeApp m_App;
    TemporaryFolder m_Folder;
};
