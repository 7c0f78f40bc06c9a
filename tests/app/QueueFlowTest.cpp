// The end of a file, and what comes after it.
#include "tests/app/AppTest.h"

namespace {

class QueueFlowTest : public AppTest { };

TEST_F(QueueFlowTest, TheNextItemIsOpenedWhenTheDecoderHasPlayedWhatItHolds)
{
    Play({MakeFile("a.mpg"), MakeFile("b.mpg")});
    EXPECT_EQ(Said([this] { DecoderSays(kEndOfStream); }), "Nuvid: End of file\nWait time: 27\n");
    TestPlatform::Tick(27);
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EXPECT_TRUE(Has(Ticked(1), "EndOfFileReached()\nm_CurFileIdx= 0, m_FileList.size() = 2\n"));
    EXPECT_EQ(CurrentFile(), "b.mpg");
}

TEST_F(QueueFlowTest, TheLastItemLeavesThePicturePaused)
{
    Play({MakeFile("a.mpg")});
    EndStream();
    EXPECT_TRUE(Shows("End of File"));
    EXPECT_FALSE(TestDecoder::IsStreaming());
    EXPECT_TRUE(TestDecoder::IsOpen());
    EXPECT_FALSE(TestPlatform::WasTerminated());
    TestPlatform::Tick(8);
    TestPlatform::PressKey(Remote::kLeft);    // and one can go back into it
    TestPlatform::Tick(3);
    EXPECT_TRUE(TestDecoder::IsStreaming());
}

TEST_F(QueueFlowTest, AtTheEndTheViewerMayBeAsked)
{
    Play({"-menuoneof", MakeFile("b.mpg")});
    EndStream();
    EXPECT_TRUE(MainMenuIsOpen());
    EXPECT_FALSE(TestPlatform::WasTerminated());
}

TEST_F(QueueFlowTest, WhenAllThatIsLeftFailsTheWalkEnds)
{
    const std::string a = MakeFile("a.mpg");
    Play({a, m_Folder / "missing.mpg", ":repeat"});
    std::filesystem::remove(a);
    const std::string said = Said([this] { EndStream(); });
    EXPECT_EQ(Count(said, "File open failed!"), 3);    // missing, a, missing
    EXPECT_EQ(Status(), "Stopped");
    EXPECT_FALSE(Shows("End of File"));
}

TEST_F(QueueFlowTest, AnEndIsHeardOnlyWhileNothingIsPending)
{
    Play({MakeFile("a.mpg"), MakeFile("b.mpg")});
    TestPlatform::PressKey(Remote::kRight);
    EndStream();
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EndStream();
    EXPECT_EQ(CurrentFile(), "b.mpg");
}

TEST_F(QueueFlowTest, ADecoderErrorEndsTheProgram)
{
    Play({MakeFile("a.mpg")});
    EXPECT_TRUE(Has(Said([&] { DecoderSays(0xDEADDEAD); }), "Decoder error!\n"));
    EXPECT_TRUE(TestPlatform::WasTerminated());
    EXPECT_FALSE(TestDecoder::IsOpen());
}

TEST_F(QueueFlowTest, ChapterKeysRunOffTheEndsOfAFileIntoTheQueue)
{
    Play({MakeFile("a.mpg"), m_Folder / "missing.mpg", MakeFile("c.mpg")});
    TestPlatform::PressKey(Remote::kNextChapter);
    TestPlatform::Tick(3);
    EXPECT_EQ(CurrentFile(), "c.mpg");
    TestPlatform::PressKey(Remote::kNextChapter);    // no further item
    TestPlatform::Tick(3);
    EXPECT_EQ(CurrentFile(), "c.mpg");
    TestPlatform::PressKey(Remote::kPrevChapter);    // past the one that fails
    TestPlatform::Tick(3);
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EXPECT_FALSE(m_pApp->PrevFile());
}

TEST_F(QueueFlowTest, AFileIsClosedOnlyWhenItIsTheOneThatPlays)
{
    const std::string a = MakeFile("a.mpg");
    Play({a});
    EXPECT_FALSE(m_pApp->CloseFile((m_Folder / "b.mpg").c_str()));
    EXPECT_TRUE(m_pApp->CloseFile(a.c_str()));
    EXPECT_FALSE(m_pApp->CloseFile(a.c_str()));
    EXPECT_TRUE(m_pApp->CloseFile(nullptr));
}

TEST_F(QueueFlowTest, WithNothingChosenTheViewerIsAsked)
{
    Play({MakeFile("a.mpg")});
    for (const int reason : {1, 5, -1}) {
        TestPlatform::Tick(30);
        EXPECT_EQ(Said([&] { m_pApp->callback({}, reason); }), "inReason " + std::to_string(reason) + "\n");
        EXPECT_TRUE(Shows("Press [Menu] to open a file"));
    }
    EXPECT_EQ(CurrentFile(), "a.mpg");
}

TEST_F(QueueFlowTest, AnItemsDurationIsUsedWhereTheEngineKnowsNone)
{
    Play({MakeFile("a.mpg")});
    EFileBrowser::FileInfo entry;
    entry.path = m_Folder / "a.mpg";
    entry.duration = 600;
    EXPECT_TRUE(m_pApp->OpenFile(entry, false));
    TestPlatform::PressKey(Remote::kInfo);
    const auto drawings = TestPlatform::Paint(*TestPlatform::WindowsOnScreen().at(1));
    EXPECT_NE(TestPlatform::FindText(drawings, "0:00 / 10:00"), nullptr);
}

}    // namespace
