#include "host/base/HostOptions.h"

#include <sys/stat.h>

#include <cstdlib>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

namespace {

host::ParsedCommandLine Parse(std::vector<const char*> words)
{
    words.insert(words.begin(), "/opt/nuvid/nuvid");
    return host::ParseHostOptions(static_cast<int>(words.size()), words.data());
}

TEST(HostOptionsTest, TakesItsOwnWordsOutAndLeavesTheOthersInOrder)
{
    const host::ParsedCommandLine parsed = Parse({"-p", "--window=800x600", "a film.mpg", "--unknown=1", "--ecp=[::1]:0", "--deinterlace=off",
        "--aspect=stretch", "--state=/tmp/s", "--audio=off", "--remote=0.0.0.0:80", "--headless", "--", "--windows", "-"});
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.rest, (std::vector<std::string> {"/opt/nuvid/nuvid", "-p", "a film.mpg", "--unknown=1", "--", "--windows", "-"}));
    const host::HostOptions& options = parsed.options;
    EXPECT_TRUE(options.windowed);
    EXPECT_FALSE(options.fullscreen);
    EXPECT_TRUE(options.headless);
    EXPECT_EQ(options.windowWidth, 800);
    EXPECT_EQ(options.windowHeight, 600);
    EXPECT_EQ(options.ecp, "[::1]:0");
    EXPECT_EQ(options.remote, "0.0.0.0:80");
    EXPECT_EQ(options.stateFolder, "/tmp/s");
    EXPECT_EQ(options.audio, "off");
    EXPECT_EQ(options.deinterlace, host::Deinterlace::kOff);
    EXPECT_TRUE(options.stretch);

    const host::ParsedCommandLine bare = Parse({"--window", "--ecp=off"});
    EXPECT_EQ(bare.error, "");
    EXPECT_TRUE(bare.options.windowed);
    EXPECT_EQ(bare.options.windowWidth, 0);
    EXPECT_EQ(bare.options.ecp, "off");
}

TEST(HostOptionsTest, NamesTheWordThatIsWrong)
{
    for (const char* const word : {"--window=", "--window=800", "--window=0x600", "--window=800x", "--window=800x600x", "--window=-1x5",
             "--window=99999999999x1", "--fullscreen=yes", "--ecp", "--ecp=", "--ecp=localhost", "--ecp=:4747", "--ecp=host:65536", "--ecp=host:47x", "--remote", "--remote=0.0.0.0",
             "--deinterlace", "--deinterlace=maybe", "--aspect=", "--state", "--state=", "--audio", "--help=me"}) {
        const host::ParsedCommandLine parsed = Parse({word, "film"});
        const std::string option = std::string(word).substr(0, std::string(word).find('='));
        EXPECT_THAT(parsed.error, testing::HasSubstr(option)) << word;
        EXPECT_EQ(parsed.rest.size(), 2U) << word;
    }
    EXPECT_THAT(Parse({"--ecp=first", "--window=second"}).error, testing::HasSubstr("first"));
}

class HostFolderTest : public ::testing::Test {
protected:
    HostFolderTest()
    {
        for (const char* const name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"}) {
            const char* const value = std::getenv(name);
            before.emplace_back(name, value == nullptr ? std::nullopt : std::optional<std::string>(value));
            unsetenv(name);
        }
        setenv("HOME", folder.Path().c_str(), 1);
    }
    ~HostFolderTest() override
    {
        for (const auto& [name, value] : before) {
            value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
        }
        host::SetCurrentHostOptions({});
    }

    const TemporaryFolder folder;
    std::vector<std::pair<std::string, std::optional<std::string>>> before;
};

TEST_F(HostFolderTest, FollowsTheOptionThenTheEnvironmentThenTheHomeFolder)
{
    EXPECT_EQ(host::HostFolder(false), folder / ".config/nuvid");
    EXPECT_EQ(host::HostFolder(true), folder / ".local/state/nuvid");
    struct stat status { };
    ASSERT_EQ(stat((folder / ".local/state/nuvid").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);

    setenv("XDG_CONFIG_HOME", (folder / "conf").c_str(), 1);
    setenv("XDG_STATE_HOME", "relative", 1);    // not allowed, so not heeded
    EXPECT_EQ(host::HostFolder(false), folder / "conf/nuvid");
    EXPECT_EQ(host::HostFolder(true), folder / ".local/state/nuvid");

    host::HostOptions options;
    options.stateFolder = folder / "own/deep//";
    host::SetCurrentHostOptions(options);
    EXPECT_EQ(host::HostFolder(false), folder / "own/deep");
    EXPECT_EQ(host::HostFolder(true), folder / "own/deep");

    folder.Write("file", "in the way");
    options.stateFolder = folder / "file/below";
    host::SetCurrentHostOptions(options);
    EXPECT_EQ(host::HostFolder(false), "");
    EXPECT_EQ(folder.Read("file"), "in the way");
}

}    // namespace
