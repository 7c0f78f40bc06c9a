#include "tests/app/AppTest.h"

using TestPlatform::Command;

namespace {

class CommandsTest : public AppTest { };

TEST_F(CommandsTest, KeyCommandsObeyTheRulesOfKeysAndReplyAllTheSame)
{
    Play({MakeFile("a.mpg")});
    const struct {
        const char* command;
        const char* text;
    } cases[] = {{"Nuvid bookmark add", "Bookmark added"}, {"Nuvid bookmark next", "Next Bookmark"}, {"Nuvid bookmark previous", "Prev Bookmark"},
        {"Nuvid chapter next", "Next Chapter"}, {"Nuvid chapter previous", "Prev Chapter"}, {"Nuvid info", "a.mpg: 0%"}, {"Nuvid stop", "Stop"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Command(c.command), "OK");
        EXPECT_TRUE(Shows(c.text)) << c.command;
        TestPlatform::Tick(3);
    }
    EXPECT_EQ(Status(), "Stopped");

    Command("Nuvid forward 1");    // pending: the next one is ignored
    EXPECT_EQ(Command("Nuvid info"), "OK");
    EXPECT_TRUE(Shows("Fast Forward"));
    EXPECT_EQ(Command("Nuvid quit"), "OK");    // quitting is no key
    EXPECT_TRUE(TestPlatform::WasTerminated());
}

TEST_F(CommandsTest, SkipsTakeSeconds)
{
    const struct {
        const char* command;
        const char* text;
        const char* skipped;
    } cases[] = {{"Nuvid forward 90", "Fast Forward", "To Skip: 55830528\n"}, {"Nuvid forward abc", "Fast Forward", "To Skip: -1769472\n"},
        {"Nuvid Forward ", "Fast Forward", "To Skip: -1769472\n"}, {"Nuvid back 20", "Rewind", "To Skip: -14569472\n"}};
    Play({MakeFile("a.mpg")});
    for (const auto& c : cases) {
        EXPECT_EQ(Command(c.command), "OK");
        EXPECT_TRUE(Shows(c.text)) << c.command;
        EXPECT_TRUE(Has(Ticked(3), c.skipped)) << c.command;
    }
}

TEST_F(CommandsTest, APathIsNeeded)
{
    Play({MakeFile("a.mpg")});
    for (const char* command : {"Nuvid open", "Nuvid open ", "Nuvid openX", "Nuvid queue", "Nuvid queue "}) {
        EXPECT_EQ(Command(command), "Failed") << command;
    }
    TestPlatform::Tick(5);
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EXPECT_EQ(Command("nuvid open=/missing.mpg"), "OK");    // whatever the separator
    TestPlatform::Tick(3);
    EXPECT_TRUE(Shows("File open failed"));
}

}    // namespace
