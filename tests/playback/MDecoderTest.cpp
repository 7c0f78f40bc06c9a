#include "playback/MDecoder.h"

#include "tests/playback/PlaybackFixture.h"

namespace {

using Calls = std::vector<std::string>;

const char* const kOpenCall = "NewOpen(8,192512,5,1,3,1,1,1,1,1,45000)";

class MDecoderTest : public PlaybackTest {
protected:
    MDecoderTest()
    {
        TestPlatform::SetResolutions({{720, 480}, {1280, 720}, {1920, 1080}});
        m_pEngine = std::make_unique<MDecoder>();
        m_pEngine->SetClient(&m_Client);
        m_Folder.Write("clip1.mpg", Pattern(400000, 1));
        m_Folder.Write("clip2.mpg", Pattern(600000, 2));
    }
    bool Open(const std::string& name) { return m_pEngine->DoTheOpen((m_Folder / name).c_str()); }
    static TestPlatform::MPEGScript TwoAudios(CascadeMPEGFile::StreamType type)
    {
        TestPlatform::MPEGScript script = TestPlatform::SimpleProgramStream();
        script.type = type;
        script.programs[0].audio = {{0x80BD, 0x80, CascadeMPEGFile::kAC3, "eng"}, {0xC0, 0, CascadeMPEGFile::kMPEGAudio, ""}};
        return script;
    }
    // Whole rounds of the ring: after an opening the first fills one buffer only.
    static std::string PullRounds(int rounds)
    {
        std::string bytes;
        for (int i = 0; i < rounds * 8; ++i) {
            bytes += TestDecoder::Pull();
        }
        return bytes;
    }
    std::string SideFile() { return m_Folder.Read("clip.nuvid"); }

    RecordingClient m_Client;
    std::unique_ptr<MDecoder> m_pEngine;
};

TEST_F(MDecoderTest, OpensPlaysAndCloses)
{
    TestDecoder::ClearCalls();
    testing::internal::CaptureStdout();
    ASSERT_TRUE(Open("clip1.mpg"));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(TestDecoder::Calls(),
        (Calls {kOpenCall, "SetOutputAndScaleRects(0,0,720,480,0,0,720,480)", "SelectPIDs(1,224,224,192,0,0)", "ResumeStreaming(1)"}));
    EXPECT_NE(printed.find("About to open " + m_Folder / "clip1.mpg" + "\n"), std::string::npos);
    EXPECT_NE(printed.find(" is an MPEG2 program stream\nVideo stream reported size: 720 x 576\nProgram: 1/1\nVideo: 1/1\nAudio: 1/1\nSelectPIDs(\n"),
        std::string::npos);
    EXPECT_EQ(m_pEngine->GetState(), 1);
    EXPECT_TRUE(m_pEngine->IsVideoRunning());
    EXPECT_EQ(m_pEngine->GetBitrate(), 5120000);
    EXPECT_STREQ(m_pEngine->GetCurFileName(), "clip1.mpg");
    EXPECT_TRUE(m_Client.asked.empty());

    TestDecoder::Pull();
    EXPECT_EQ(m_pEngine->GetCurFilePosition(), 192512U);
    EXPECT_EQ(m_pEngine->GetCurFileProgress(), 48);
    EXPECT_EQ(m_pEngine->GetTotalFileProgress(), 19);
    EXPECT_TRUE(m_pEngine->PauseStreaming());
    EXPECT_EQ(m_pEngine->GetState(), 2);
    EXPECT_FALSE(m_pEngine->IsVideoRunning());

    EXPECT_TRUE(m_pEngine->DoTheClose());
    EXPECT_EQ(SideFile(), "#Nuvid File. Do not modify\nz 0\nr clip1.mpg@192512\na 0\n");
    EXPECT_FALSE(TestDecoder::IsOpen());
    TestDecoder::ClearCalls();
    EXPECT_FALSE(m_pEngine->IsFileOpen() || m_pEngine->ReOpen() || m_pEngine->ChangeProgram() || m_pEngine->ReSelectPIDs());
    EXPECT_FALSE(m_pEngine->PauseStreaming() || m_pEngine->ResumeStreaming() || m_pEngine->SetBookmark() || m_pEngine->SkipToResumePoint());
    EXPECT_EQ(m_pEngine->NextChapter() + m_pEngine->PrevChapter(true) + m_pEngine->NextBookmark() + m_pEngine->PrevBookmark(false), 0);
    EXPECT_EQ(m_pEngine->GetCurFileSize() + m_pEngine->GetCurFilePosition() + m_pEngine->GetNumAudioStreams(), 0U);
    EXPECT_EQ(m_pEngine->GetCurFileProgress() + m_pEngine->GetTotalFileProgress() + m_pEngine->GetBitrate(), 0);
    m_pEngine->SkipFW(30);
    m_pEngine->NextZoomMode();
    EXPECT_EQ(m_pEngine->GetCurFile(), nullptr);
    EXPECT_EQ(TestDecoder::Calls(), Calls());
}

TEST_F(MDecoderTest, AFailedOpenLeavesTheEngineClosed)
{
    m_Folder.Write("clip.nuvid", "#Nuvid File. Do not modify\nz 0\nr clip2.mpg@4096\na 1\n");
    TestPlatform::MPEGScript foreign;
    foreign.type = CascadeMPEGFile::kUnsupported;
    TestPlatform::SetMPEGScript(foreign);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(Open("clip1.mpg"));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("clip1.mpg is not a supported stream\n"), std::string::npos);
    EXPECT_FALSE(m_pEngine->IsFileOpen());
    EXPECT_NE(SideFile().find("r clip2.mpg@4096\na 1\n"), std::string::npos);    // nothing was played: the saved point stays

    TestPlatform::SetMPEGScript(TestPlatform::SimpleProgramStream());
    for (const char* operation : {"NewOpen", "SelectPIDs", "ResumeStreaming"}) {
        TestDecoder::SetResult(operation, false);
        EXPECT_FALSE(Open("clip1.mpg")) << operation;
        EXPECT_FALSE(m_pEngine->IsFileOpen() || TestDecoder::IsOpen());
        TestDecoder::SetResult(operation, true);
    }
    EXPECT_FALSE(Open("missing.mpg"));
    EXPECT_FALSE(m_pEngine->DoTheOpen("http:/s/a.mpg"));    // a file of that name
    EXPECT_FALSE(m_pEngine->DoTheOpen("HTTP://s/a.mpg"));
    EXPECT_EQ(TestPlatform::HTTPOpens(), Calls {"HTTP://s/a.mpg"});
    EXPECT_TRUE(m_Client.asked.empty());
    ASSERT_TRUE(Open("clip1.mpg"));
    EXPECT_EQ(m_Client.asked, Calls {"resume"});
}

TEST_F(MDecoderTest, ChoosesStreamsAndScansWherePlaybackStands)
{
    TestPlatform::SetMPEGScript(TwoAudios(CascadeMPEGFile::kMPEG2ProgramStream));
    ASSERT_TRUE(Open("clip1.mpg"));
    EXPECT_EQ(TestDecoder::Last("SelectPIDs"), "SelectPIDs(1,224,224,32957,128,1)");
    EXPECT_STREQ(m_pEngine->GetAudioStr(1), "Audio 2 of 2");
    TestDecoder::Pull();
    m_pEngine->SetAudioStream(1);
    EXPECT_TRUE(m_pEngine->ChangeProgram());
    EXPECT_EQ(TestDecoder::Last("SelectPIDs"), "SelectPIDs(1,224,224,192,128,1)");    // the flag stays, on purpose
    EXPECT_EQ(TestPlatform::ClassifiedAt(), (std::vector<unsigned long long> {0, 192512}));
    m_pEngine->SetProgram(7);
    m_pEngine->SetVideoStream(-1);
    m_pEngine->SetAudioStream(2);
    EXPECT_TRUE(m_pEngine->ChangeProgram());
    EXPECT_EQ(m_pEngine->GetProgram() + m_pEngine->GetAudioStream(), 0U);

    TestPlatform::MPEGScript soundOnly = TwoAudios(CascadeMPEGFile::kMPEG2TransportStream);
    soundOnly.programs[0].program.pcrPID = 0x1FF;
    soundOnly.programs[0].video.clear();
    TestPlatform::SetMPEGScript(soundOnly);
    ASSERT_TRUE(Open("clip2.mpg"));
    EXPECT_EQ(TestDecoder::Last("SelectPIDs"), "SelectPIDs(0,511,511,32957,128,1)");
    EXPECT_EQ(m_pEngine->GetBitrate(), 19660800);
}

TEST_F(MDecoderTest, PlaysFromAServerWithoutASideFile)
{
    TestPlatform::HTTPResource resource;
    resource.bytes = Pattern(500000, 3);
    TestPlatform::SetHTTPResource("http://s/v/a.mpg", resource);
    ASSERT_TRUE(m_pEngine->DoTheOpen("http://s/v/a.mpg"));
    EXPECT_TRUE(m_pEngine->CurStreamIsHTTP());
    TestDecoder::Pull();
    EXPECT_EQ(m_pEngine->GetTotalFileProgress(), 38);
    TestDecoder::ClearCalls();
    EXPECT_TRUE(m_pEngine->ChangeProgram());    // looks at the stream that the feed reads
    EXPECT_EQ(TestDecoder::Calls(), (Calls {"PauseStreaming()", "SelectPIDs(1,224,224,192,0,0)", "ResumeStreaming(1)"}));
    EXPECT_EQ(TestPlatform::HTTPOpens().size(), 1U);
    m_pEngine->SkipBack(30);
    EXPECT_EQ(m_pEngine->GetCurFilePosition(), 0U);
    EXPECT_TRUE(m_pEngine->ReOpen());
    testing::internal::CaptureStdout();
    m_pEngine->DoTheClose();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(MDecoderTest, SkipsAndReopensInPlace)
{
    ASSERT_TRUE(Open("clip1.mpg"));
    EXPECT_TRUE(PullRounds(3) == Pattern(400000, 1) + Pattern(600000, 2));
    EXPECT_TRUE(m_pEngine->PauseStreaming());
    EXPECT_EQ(m_pEngine->GetState(), 0);    // at the end
    TestDecoder::ClearCalls();
    m_pEngine->SkipFW(2);    // 640000 * 2 - 1769472 = -489472
    EXPECT_STREQ(m_pEngine->GetCurFileName(), "clip2.mpg");
    EXPECT_EQ(m_pEngine->GetCurFilePosition(), 108544U);
    EXPECT_TRUE(m_pEngine->ReOpen());
    EXPECT_EQ(TestDecoder::Calls(),
        (Calls {"PauseStreaming()", "PauseStreaming()", "Close()", kOpenCall, "SelectPIDs(1,224,224,192,0,0)", "ResumeStreaming(1)"}));
    EXPECT_TRUE(TestDecoder::Pull() == Pattern(600000, 2).substr(108544, 192512));
    EXPECT_EQ(TestDecoder::Pull(), "");    // one buffer until the ring has come round
    TestDecoder::SetResult("NewOpen", false);
    EXPECT_FALSE(m_pEngine->ReOpen());
    EXPECT_FALSE(m_pEngine->IsFileOpen());
}

TEST_F(MDecoderTest, StepsThroughTheZoomModes)
{
    char text[64] = "untouched";
    EXPECT_EQ(m_pEngine->GetCurZoomStr(text, sizeof text), 0);
    ASSERT_TRUE(Open("clip1.mpg"));
    for (int i = 0; i < 4; ++i) {
        m_pEngine->NextZoomMode();
    }
    EXPECT_EQ(TestDecoder::Last("SetOutputAndScaleRects"), "SetOutputAndScaleRects(111,74,498,332,0,0,720,480)");
    EXPECT_EQ(m_pEngine->GetCurZoomStr(text, sizeof text), 28);
    EXPECT_STREQ(text, "Z4: 16:9 window -> 16:9 Zoom");
    m_pEngine->GetCurZoomStr(text, 5);
    EXPECT_STREQ(text, "Z4: ");
    TestDecoder::SetResult("SetOutputAndScaleRects", false);
    for (int i = 0; i < 3; ++i) {
        m_pEngine->NextZoomMode();
    }
    EXPECT_EQ(m_pEngine->GetZoomMode(), 0);
    EXPECT_EQ(m_Client.texts, (Calls {"Zoom mode unavailable", "Zoom mode unavailable", "Zoom mode unavailable"}));
}

TEST_F(MDecoderTest, SwitchesTheResolutionInPlace)
{
    EXPECT_TRUE(m_pEngine->SetVideoRes(1, 2));
    EXPECT_FALSE(m_pEngine->SetVideoRes(3, 2));
    EXPECT_EQ(m_pEngine->GetVideoRes(9), -1);
    ASSERT_TRUE(Open("clip1.mpg"));
    m_pEngine->NextZoomMode();
    TestDecoder::Pull();
    TestDecoder::ClearCalls();
    EXPECT_FALSE(m_pEngine->SwitchToVideoRes(0));
    EXPECT_FALSE(m_pEngine->SwitchToVideoRes(5));    // as 0
    EXPECT_EQ(TestDecoder::Calls(), Calls());
    EXPECT_TRUE(m_pEngine->SwitchToVideoRes(1));
    EXPECT_EQ(TestPlatform::ResolutionChanges(), std::vector<unsigned> {2});
    EXPECT_EQ(TestDecoder::Calls(),
        (Calls {"PauseStreaming()", "Close()", "Close()", kOpenCall, "SetOutputAndScaleRects(0,0,1920,1080,0,0,1920,1080)",
            "SelectPIDs(1,224,224,192,0,0)", "ResumeStreaming(1)"}));
    EXPECT_EQ(m_pEngine->GetZoomMode(), 1);
    EXPECT_TRUE(TestDecoder::Pull() == Pattern(400000, 1).substr(192512, 192512));
    EXPECT_EQ(TestDecoder::Pull(), "");    // a new feeder goes through the ring once

    m_pEngine->PauseStreaming();
    EXPECT_TRUE(m_pEngine->SwitchToVideoRes(0));    // back to the one of the start
    EXPECT_EQ(TestPlatform::ResolutionChanges(), (std::vector<unsigned> {2, 0}));
    EXPECT_FALSE(TestDecoder::IsStreaming());    // a paused picture stays paused
    TestPlatform::RefuseResolution(true);
    EXPECT_FALSE(m_pEngine->SwitchToVideoRes(1));
    EXPECT_EQ(m_pEngine->GetFileVideoRes(), 0);
    EXPECT_EQ(m_pEngine->GetCurFilePosition(), 385024U);
    TestPlatform::RefuseResolution(false);
    TestDecoder::SetResult("NewOpen", false);
    EXPECT_FALSE(m_pEngine->SwitchToVideoRes(2));
    EXPECT_FALSE(m_pEngine->IsFileOpen());
}

TEST_F(MDecoderTest, ALostFileKeepsItsResumePoint)
{
    m_Folder.Write("clip.nuvid", "#Nuvid File. Do not modify\nb clip1.mpg@2048\nz 3\nr clip1.mpg@6144\nv 1\na 0\n");
    m_pEngine->SetVideoRes(1, 1);
    ASSERT_TRUE(Open("clip1.mpg"));
    EXPECT_EQ(m_pEngine->GetZoomMode(), 3);
    EXPECT_EQ(m_pEngine->GetFileVideoRes(), 1);
    const std::string before = SideFile();
    std::filesystem::remove(m_Folder / "clip1.mpg");
    EXPECT_FALSE(m_pEngine->SwitchToVideoRes(2));
    EXPECT_EQ(m_pEngine->GetCurFilePosition() + m_pEngine->GetCurFileSize(), 0U);
    m_pEngine->SkipFW(30);
    m_pEngine->NextChapter();
    m_pEngine->DoTheClose();
    EXPECT_NE(SideFile().find("b clip1.mpg@2048\nz 3\nr clip1.mpg@6144\nv 2\n"), std::string::npos) << SideFile();
}

TEST_F(MDecoderTest, NeverOverwritesAForeignFile)
{
    for (const char* foreign : {"", "shopping list\n", "#Nuvid File? z 3\n"}) {
        m_Folder.Write("clip.nuvid", foreign);
        ASSERT_TRUE(Open("clip1.mpg"));
        EXPECT_EQ(m_pEngine->GetZoomMode(), 0);
        m_pEngine->DoTheClose();
        EXPECT_EQ(SideFile(), foreign);
    }
    std::filesystem::remove(m_Folder / "clip.nuvid");
    std::filesystem::create_directory(m_Folder / "clip.nuvid");
    ASSERT_TRUE(Open("clip1.mpg"));
    testing::internal::CaptureStdout();
    m_pEngine->DoTheClose();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can not open settings file for writing\n");
    EXPECT_TRUE(std::filesystem::is_directory(m_Folder / "clip.nuvid"));
}

class MarksTest : public MDecoderTest {
protected:
    void OpenWith(const std::string& lines, unsigned long long position, const char* name = "clip1.mpg")
    {
        m_Folder.Write("clip.nuvid", "#Nuvid File. Do not modify\n" + lines);
        ASSERT_TRUE(Open(name));
        tagBookmark here {name, static_cast<long long>(position)};
        ASSERT_TRUE(m_pEngine->GoToBookmark(&here));
        m_Client.asked.clear();
        m_Client.texts.clear();
    }
    std::string Where() { return std::string(m_pEngine->GetCurFileName()) + "@" + std::to_string(m_pEngine->GetCurFilePosition()); }
};

TEST_F(MarksTest, ResumesWherePlaybackStopped)
{
    OpenWith("r clip2.mpg@300000\n", 0);
    EXPECT_TRUE(m_pEngine->SkipToResumePoint());
    EXPECT_EQ(Where(), "clip2.mpg@299008");
    TestDecoder::PullBytes(400000);    // one buffer, then nothing: the ring has not come round
    m_pEngine->DoTheClose();
    EXPECT_NE(SideFile().find("r clip2.mpg@491520\n"), std::string::npos);
    OpenWith("z 1\n", 0, "clip2.mpg");
    EXPECT_FALSE(m_pEngine->SkipToResumePoint());
    PullRounds(5);
    m_pEngine->DoTheClose();
    EXPECT_EQ(SideFile(), "#Nuvid File. Do not modify\nz 1\na 0\n");    // played to its end
}

TEST_F(MarksTest, StepsThroughChapters)
{
    OpenWith("c clip1.mpg@0\nc clip1.mpg@102400\nc clip1.mpg@204800\n", 153600);
    EXPECT_EQ(m_pEngine->NextChapter(), 3);
    EXPECT_EQ(m_Client.LastText(), "Chapter 3 of 3");
    tagBookmark here {"clip1.mpg", 153600};
    ASSERT_TRUE(m_pEngine->GoToBookmark(&here));
    EXPECT_EQ(m_pEngine->PrevChapter(false), 2);
    EXPECT_EQ(Where(), "clip1.mpg@102400");
    EXPECT_EQ(m_pEngine->PrevChapter(true), 1);
    EXPECT_TRUE(m_Client.asked.empty());

    ASSERT_TRUE(m_pEngine->GoToBookmark(&(here = {"clip1.mpg", 389120})));
    m_Client.moves = true;
    EXPECT_EQ(m_pEngine->NextChapter(), 1);    // the owner went to the next item
    EXPECT_EQ(m_Client.asked, Calls {"next"});
    m_Client.moves = false;
    EXPECT_EQ(m_pEngine->NextChapter(), 1);
    EXPECT_EQ(Where(), "clip2.mpg@0");
    EXPECT_EQ(m_Client.LastText(), "No Chapters... skipping to next file in sequence");
    EXPECT_EQ(m_pEngine->NextChapter(), 1);    // no file ahead: round to the first
    EXPECT_EQ(m_Client.LastText(), "Chapter 1 of 3");
    EXPECT_EQ(Where(), "clip1.mpg@0");
}

TEST_F(MarksTest, StepsThroughFilesWithoutChapters)
{
    OpenWith("", 20480, "clip2.mpg");    // 3 % of 600000
    EXPECT_EQ(m_pEngine->PrevChapter(false), 1);
    EXPECT_EQ(Where(), "clip1.mpg@0");
    EXPECT_EQ(m_Client.LastText(), "No Chapters... skipping to previous file in sequence");
    tagBookmark here {"clip2.mpg", 61440};
    ASSERT_TRUE(m_pEngine->GoToBookmark(&here));
    EXPECT_EQ(m_pEngine->PrevChapter(true), 1);
    EXPECT_EQ(Where(), "clip2.mpg@0");
    EXPECT_EQ(m_pEngine->NextChapter(), 0);
    EXPECT_EQ(m_Client.LastText(), "No Chapters");
    EXPECT_EQ(m_Client.asked, (Calls {"prev", "prev", "next"}));
    EXPECT_EQ(m_pEngine->NextBookmark(), 0);
    EXPECT_EQ(m_Client.LastText(), "No Bookmarks");
}

// Looking for another item, the owner may have closed this one and opened none.
TEST_F(MarksTest, AnOwnerThatClosesTheEngineEndsTheStep)
{
    class Closing : public RecordingClient {
    public:
        bool NextFile() override { return !engine->DoTheClose(); }
        bool PrevFile() override { return !engine->DoTheClose(); }
        MDecoder* engine = nullptr;
    } closing;
    closing.engine = m_pEngine.get();
    for (const bool forward : {true, false}) {
        OpenWith("c clip1.mpg@0\n", 4096);
        m_pEngine->SetClient(&closing);
        EXPECT_EQ(forward ? m_pEngine->NextChapter() : m_pEngine->PrevChapter(true), 0);
        EXPECT_EQ(closing.LastText(), "No Chapters");
        m_pEngine->SetClient(&m_Client);
    }
}

}    // namespace
