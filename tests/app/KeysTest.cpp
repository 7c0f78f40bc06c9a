#include "app/KeyTable.h"

#include <fstream>
#include <iterator>
#include <set>

#include "tests/app/AppTest.h"

namespace {

constexpr int kSettled = 3;    // ticks after which a scheduled action has acted and settled

class KeysTest : public AppTest {
protected:
    // The bytes that the engine was told to skip, from its diagnostics; 0: none.
    static long Skipped(const std::string& said)
    {
        const size_t at = said.find("To Skip: ");
        return at == std::string::npos ? 0 : std::stol(said.substr(at + 9));
    }
    // At the start's estimate of 5120000 bits a second; what the decoder holds is taken off both ways.
    static long Distance(int seconds) { return 640000L * seconds - 1769472; }

    void WriteMarks(char key)
    {
        std::string text = "#Nuvid File. Do not modify\n";
        for (int i = 0; i < 4; ++i) {
            text += std::string(1, key) + " a.mpg@" + std::to_string(i * (100L << 20)) + "\n";
        }
        m_Folder.Write("a.nuvid", text);
    }
};

TEST_F(KeysTest, SkipKeysSkipAndShowIt)
{
    const struct {
        unsigned long key;
        const char* line;
        const char* text;
        int seconds;
    } cases[] = {{Remote::kRight, "MyWindow: Got Nav 0x1000f\nGot FF 30s\n", "FF 30 sec", 30}, {Remote::kLeft, "Got REW 10s\n", "REW 10 sec", -10},
        {Remote::kFastForward, "Got FF 3m\n", "FF 3 min", 180}, {Remote::kRewind, "Got REW 30sec\n", "REW 30 sec", -30}};
    Play({MakeFile("a.mpg")});
    for (const auto& c : cases) {
        EXPECT_TRUE(Has(Pressed(c.key), c.line)) << c.text;
        EXPECT_TRUE(Shows(c.text));
        EXPECT_EQ(Skipped(Ticked(kSettled)), Distance(c.seconds)) << c.text;
        EXPECT_EQ(Status(), "Playing");
    }
}

TEST_F(KeysTest, HeldFastKeysSkipFurtherAgainAndAgainAndDoNothingOnRelease)
{
    const struct {
        unsigned long key;
        const char* text;
        int seconds;
    } cases[] = {{Remote::kFastForward, "FF 6 min", 360}, {Remote::kRewind, "REW 3 min", -180}};
    Play({MakeFile("a.mpg")});
    for (const auto& c : cases) {
        EXPECT_EQ(Said([&] {
            for (int i = 0; i < 4; ++i) {
                TestPlatform::KeyDown(c.key);
            }
        }),
            "");
        TestPlatform::KeyDown(c.key);
        EXPECT_TRUE(Shows(c.text));
        // The key is still held: nothing counts until the skip has settled.
        for (int i = 0; i < 20; ++i) {
            TestPlatform::KeyDown(c.key);
        }
        const std::string said = Said([&] {
            TestPlatform::Tick(kSettled);
            for (int i = 0; i < 5; ++i) {
                TestPlatform::KeyDown(c.key);
            }
            TestPlatform::Tick(kSettled);
            TestPlatform::KeyUp(c.key);
            TestPlatform::Tick(5);
        });
        EXPECT_EQ(Count(said, "To Skip: "), 2) << c.text;
        EXPECT_EQ(Skipped(said), Distance(c.seconds)) << c.text;
        // The next short press is a short one again.
        TestPlatform::PressKey(c.key);
        EXPECT_NE(Skipped(Ticked(kSettled)), 0);
    }
}

TEST_F(KeysTest, WhileAnActionIsPendingKeysAreNotHeardButReleasesAre)
{
    Play({MakeFile("a.mpg")});
    TestPlatform::PressKey(Remote::kRight);
    EXPECT_EQ(Pressed(Remote::kStop), "");
    EXPECT_EQ(Pressed(Remote::kPause), "");
    EXPECT_EQ(Status(), "Playing");
    // A fast key that is released now shows its text and is refused.
    EXPECT_TRUE(Has(Pressed(Remote::kRewind), "Got REW 30sec\nERROR!!! Already in a sequence\n"));
    EXPECT_TRUE(Shows("REW 30 sec"));
    EXPECT_EQ(Skipped(Ticked(10)), Distance(30));
    TestPlatform::PressKey(Remote::kStop);
    EXPECT_EQ(Status(), "Stopped");
    EXPECT_TRUE(Shows("Stop"));
}

TEST_F(KeysTest, PauseAndPlayInQuickSuccessionSelectsTheStreamsAgain)
{
    Play({MakeFile("a.mpg")});
    TestDecoder::ClearCalls();
    TestPlatform::PressKey(Remote::kPause);
    EXPECT_TRUE(Shows("Pause"));
    EXPECT_EQ(Status(), "Paused");
    TestPlatform::Tick(24);
    TestPlatform::PressKey(Remote::kPlayPause);
    EXPECT_TRUE(Shows("Play"));
    EXPECT_EQ(Status(), "Playing");
    EXPECT_EQ(TestDecoder::Count("SelectPIDs"), 1);

    TestPlatform::PressKey(Remote::kPause);
    TestPlatform::Tick(25);
    TestPlatform::PressKey(Remote::kPause);
    EXPECT_EQ(TestDecoder::Count("SelectPIDs"), 1);

    TestPlatform::PressKey(Remote::kPause);
    TestPlatform::PressKey(Remote::kPlay);    // this key never selects
    EXPECT_EQ(Status(), "Playing");
    EXPECT_EQ(TestDecoder::Count("SelectPIDs"), 1);
}

TEST_F(KeysTest, BothPowerKeysPause)
{
    Play({MakeFile("a.mpg")});
    for (const unsigned long key : {Remote::kPower, Remote::kPowerAlternate}) {
        TestPlatform::PressKey(Remote::kPlay);
        EXPECT_TRUE(Has(Pressed(key), "Power button pressed\n"));
        EXPECT_EQ(Status(), "Paused");
    }
}

TEST_F(KeysTest, ASecondPressMeansMoreForAWhile)
{
    const struct {
        unsigned long first;
        const char* shown;
        int ticks;    // for which the second press means more
        unsigned long second;
        const char* soon;
        const char* later;
    } cases[] = {{Remote::kZoom, "Z0: Full", 24, Remote::kZoom, "Z1: Full+", "Z1: Full+"},
        {Remote::kSelect, "Bookmark added", 24, Remote::kSelect, "Bookmark deleted", "Bookmark added"},
        {Remote::kUp, "Next Bookmark", 26, Remote::kSelect, "Bookmark deleted", "Bookmark added"},
        {Remote::kDown, "Prev Bookmark", 24, Remote::kSelect, "Bookmark deleted", "Bookmark added"}};
    WriteMarks('b');
    Play({MakeFile("a.mpg")});
    for (const auto& c : cases) {
        TestPlatform::PressKey(c.first);
        EXPECT_TRUE(Shows(c.shown));
        TestPlatform::Tick(c.ticks);
        TestPlatform::PressKey(c.second);
        EXPECT_TRUE(Shows(c.soon)) << c.shown;
        TestPlatform::Tick(30);
        TestPlatform::PressKey(c.first);
        TestPlatform::Tick(c.ticks + 1);
        TestPlatform::PressKey(c.second);
        EXPECT_TRUE(Shows(c.later)) << c.shown;
        TestPlatform::Tick(30);
    }
}

TEST_F(KeysTest, ASecondPreviousPressGoesBackOneFurther)
{
    const struct {
        char mark;
        unsigned long next;
        unsigned long previous;
        const char* word;
    } cases[] = {{'c', Remote::kNextChapter, Remote::kPrevChapter, "Chapter "}, {'b', Remote::kUp, Remote::kDown, "Bookmark "}};
    for (const auto& c : cases) {
        WriteMarks(c.mark);
        Play({MakeFile("a.mpg")});
        const auto press = [&](unsigned long key, int ticks) {
            TestPlatform::PressKey(key);
            TestPlatform::Tick(ticks);
        };
        const auto at = [&](int number) { return Shows(std::string(c.word) + std::to_string(number) + " of 4"); };
        press(c.next, kSettled);
        press(c.next, kSettled);
        EXPECT_TRUE(at(3)) << c.word;
        press(c.previous, kSettled);    // to the start of the one it stands in
        EXPECT_TRUE(at(3)) << c.word;
        press(c.previous, 26);    // the last tick of the window
        press(c.previous, kSettled);
        EXPECT_TRUE(at(1)) << c.word;
        press(c.next, 27);
        press(c.previous, kSettled);    // the window is over
        EXPECT_TRUE(at(2)) << c.word;
        press(Remote::kRight, kSettled);    // makes the next press a first one again
        press(c.previous, kSettled);
        EXPECT_TRUE(at(2)) << c.word;
        m_pApp.reset();    // writes its own marks
    }
}

TEST_F(KeysTest, InfoPressedAgainOpensThePlaybackOptions)
{
    Play({MakeFile("a.mpg")});
    TestPlatform::PressKey(Remote::kInfo);
    EXPECT_TRUE(Shows("Bitrate: 5000Kbps  Zoom 0"));
    TestPlatform::PressKey(Remote::kInfo);
    EXPECT_NE(Window("Nuvid Playback Options"), nullptr);
}

TEST_F(KeysTest, WithoutAFileTheKeysOfAFileDoNothing)
{
    Start({});
    TestPlatform::Tick(40);
    TestPlatform::PressKey(Remote::kExit);    // leaves the menu
    const int redraws = TestPlatform::RedrawCount(Osd());
    constexpr unsigned long kNotOurs = 0x10024;
    TestPlatform::PressKeys({Remote::kUp, Remote::kDown, Remote::kNextChapter, Remote::kPrevChapter, Remote::kSelect, kNotOurs, 0});
    EXPECT_EQ(TestPlatform::RedrawCount(Osd()), redraws);
    TestPlatform::PressKey(Remote::kInfo);
    EXPECT_TRUE(Shows("No file"));
    EXPECT_EQ(TestPlatform::WindowsOnScreen().size(), 1U);    // no progress without a file
}

// | key | remote key | code | while playing |
TEST_F(KeysTest, ThePageOfTheRemoteSaysWhatEachKeyDoes)
{
    std::ifstream page(NUVID_SOURCE "/docs/remote.md");
    constexpr unsigned long kFirstOfHost = 0x20000;    // keys that no player ever sees
    std::set<unsigned long> told;
    for (std::string line; std::getline(page, line);) {
        const size_t code = line.find("| 0x");
        if (code == std::string::npos) {
            continue;
        }
        const unsigned long key = std::stoul(line.substr(code + 2), nullptr, 16);
        if (key >= kFirstOfHost) {
            continue;
        }
        const KeyTable::Row* const row = KeyTable::Find(key);
        ASSERT_NE(row, nullptr) << line;
        EXPECT_TRUE(Has(line, std::string("| ") + row->meaning + " |")) << line;
        told.insert(key);
    }
    EXPECT_EQ(told.size(), std::size(KeyTable::kRows));
}

}    // namespace
