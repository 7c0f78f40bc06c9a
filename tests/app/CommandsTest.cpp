#include "tests/app/AppTest.h"

using TestPlatform::Command;

namespace {

class CommandsTest : public AppTest { };

TEST_F(CommandsTest, QueriesTellTheStateOfTheEngine)
{
    Start({MakeFile("a.mpg", 1000)});
    EXPECT_EQ(Command("Nuvid ping"), "pong");
    EXPECT_EQ(Command("nuvid PING"), "pong");
    EXPECT_EQ(Command("Nuvid status"), "Stopped");
    EXPECT_EQ(Command("Nuvid currentfilename"), "");
    TestPlatform::Tick(5);
    EXPECT_EQ(Command("Nuvid status"), "Playing");
    EXPECT_EQ(Command("Nuvid currentfilename"), "a.mpg");
    EXPECT_EQ(Command("Nuvid pause"), "OK");
    EXPECT_EQ(Command("Nuvid status"), "Paused");
    EXPECT_EQ(Command("Nuvid play"), "OK");
    TestDecoder::Pull(250);
    EXPECT_EQ(Command("Nuvid currentfileprogress"), "25");
    EXPECT_EQ(Command("Nuvid totalfileprogress"), "25");
    EXPECT_EQ(Command("Nuvid zoom") + Command("Nuvid zoom"), "OKOK");
    EXPECT_EQ(Command("Nuvid currentzoom"), "1");
}

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
    Command("Nuvid forward 90");
    EXPECT_EQ(Said([] { Command("Nuvid back 20"); }), "ERROR!!! Already in a sequence\n");
    EXPECT_TRUE(Shows("Rewind"));    // shown all the same
}

TEST_F(CommandsTest, OpenReplacesTheQueueAndQueueAppends)
{
    const std::string a = MakeFile("a.mpg");
    const std::string b = MakeFile("b.mpg");
    const std::string c = MakeFile("c.mpg");
    Play({a});
    EXPECT_EQ(Command(("Nuvid queue " + b).c_str()), "OK");
    EXPECT_TRUE(Shows("File added to the playlist"));
    EndStream();
    EXPECT_EQ(CurrentFile(), "b.mpg");

    EXPECT_EQ(Command(("nuvid open=" + c).c_str()), "OK");    // whatever the separator
    EXPECT_TRUE(Shows(EUtils::TrimStringInMiddle(("Opening " + c + "...").c_str(), 1230, CascadeFont("system", 40)).Str()));
    TestPlatform::Tick(2);
    EXPECT_EQ(CurrentFile(), "b.mpg");
    TestPlatform::Tick();
    EXPECT_EQ(CurrentFile(), "c.mpg");
    EXPECT_TRUE(Has(Said([this] { EndStream(); }), "m_CurFileIdx= 0, m_FileList.size() = 1\n"));
}

TEST_F(CommandsTest, OpeningGoesBeforeAnActionThatIsPending)
{
    const std::string b = MakeFile("b.mpg");
    Play({MakeFile("a.mpg")});
    TestPlatform::PressKey(Remote::kRight);
    Command(("Nuvid open " + b).c_str());
    EXPECT_FALSE(Has(Ticked(5), "To Skip"));
    EXPECT_EQ(CurrentFile(), "b.mpg");
    TestPlatform::PressKey(Remote::kStop);    // no key has gone deaf
    EXPECT_EQ(Status(), "Stopped");
}

TEST_F(CommandsTest, APathIsNeeded)
{
    Play({MakeFile("a.mpg")});
    for (const char* command : {"Nuvid open", "Nuvid open ", "Nuvid openX", "Nuvid queue", "Nuvid queue "}) {
        EXPECT_EQ(Command(command), "Failed") << command;
    }
    TestPlatform::Tick(5);
    EXPECT_EQ(CurrentFile(), "a.mpg");
    EXPECT_EQ(Command("Nuvid open /missing.mpg"), "OK");
    TestPlatform::Tick(3);
    EXPECT_TRUE(Shows("File open failed"));
}

TEST_F(CommandsTest, AnyOtherCommandIsLeftAsItIs)
{
    Play({MakeFile("a.mpg")});
    for (const char* command : {"Nuvid", "Nuvid pings", "Nuvid forward", "Nuvid status ", "Nuvi ping", ""}) {
        CascadeString reply("as it was");
        m_pApp->OnECPCommand(command, reply);
        EXPECT_EQ(reply.Str(), "as it was") << command;
    }
}

}    // namespace
