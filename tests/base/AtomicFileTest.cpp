#include "platform/AtomicFile.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryFolder.h"

namespace {
std::function<int(int fd)> g_OnFlush;    // an errno to fail with, or 0
}

// The C library's is replaced in this program, so that a flush can be watched and made to fail.
extern "C" int fsync(int fd)
{
    const int error = g_OnFlush ? g_OnFlush(fd) : 0;
    if (error != 0) {
        errno = error;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, fd));
}

namespace {

mode_t ModeOf(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

bool IsLink(const std::string& path)
{
    return std::filesystem::is_symlink(path);
}

class AtomicFileTest : public ::testing::Test {
protected:
    ~AtomicFileTest() override { g_OnFlush = nullptr; }

    bool Replace(const std::string& name, const std::string& bytes)
    {
        AtomicFile file((folder / name).c_str());
        const bool done = file.Open() && file.Write(bytes) && file.Commit();
        error = file.Error();
        return done;
    }
    void ExpectOldFileAlone()
    {
        EXPECT_EQ(folder.Read("film.nuvid"), "old");
        EXPECT_EQ(folder.Names(), std::set<std::string> {"film.nuvid"});
    }

    const TemporaryFolder folder;
    int error = 0;
};

TEST_F(AtomicFileTest, FlushesTheBytesBeforeTheyTakeTheNameAndTheFolderAfterwards)
{
    folder.Write("film.nuvid", "old");
    std::vector<std::string> underTheName;
    g_OnFlush = [&](int) {
        underTheName.push_back(folder.Read("film.nuvid"));
        return 0;
    };
    ASSERT_TRUE(Replace("film.nuvid", "new"));
    EXPECT_EQ(underTheName, (std::vector<std::string> {"old", "new"}));
    EXPECT_EQ(folder.Names(), std::set<std::string> {"film.nuvid"});

    EXPECT_TRUE(Replace("first", std::string(3000000, 'b')));
    EXPECT_EQ(folder.Read("first").size(), 3000000U);
}

TEST_F(AtomicFileTest, KeepsModeAndLinks)
{
    folder.Write("film.nuvid", "old");
    ASSERT_EQ(chmod((folder / "film.nuvid").c_str(), 0640), 0);
    ASSERT_EQ(symlink("film.nuvid", (folder / "link").c_str()), 0);
    ASSERT_EQ(symlink((folder / "link").c_str(), (folder / "link2").c_str()), 0);
    ASSERT_TRUE(Replace("link2", "new"));
    EXPECT_TRUE(IsLink(folder / "link2"));
    EXPECT_TRUE(IsLink(folder / "link"));
    EXPECT_EQ(folder.Read("film.nuvid"), "new");
    EXPECT_EQ(ModeOf(folder / "film.nuvid"), 0640U);

    ASSERT_EQ(symlink("made", (folder / "dangling").c_str()), 0);
    ASSERT_TRUE(Replace("dangling", "made"));
    EXPECT_TRUE(IsLink(folder / "dangling"));
    EXPECT_EQ(folder.Read("made"), "made");

    ASSERT_EQ(symlink("loop", (folder / "loop").c_str()), 0);
    EXPECT_FALSE(Replace("loop", "x"));
    EXPECT_EQ(error, ELOOP);

    const mode_t before = umask(0027);
    EXPECT_TRUE(Replace("fresh", "x"));
    umask(before);
    EXPECT_EQ(ModeOf(folder / "fresh"), 0640U);
}

TEST_F(AtomicFileTest, AFolderThatCannotBeWrittenKeepsTheOldFile)
{
    EXPECT_FALSE(Replace("no/such/folder", "new"));
    EXPECT_EQ(error, ENOENT);

    folder.Write("film.nuvid", "old");
    ASSERT_EQ(chmod((folder / "film.nuvid").c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(Replace("film.nuvid", "new"));
        EXPECT_EQ(error, EACCES);
    }
    ExpectOldFileAlone();

    // Nor is a file replaced that is itself protected, in a folder that is not.
    ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
    ASSERT_EQ(chmod((folder / "film.nuvid").c_str(), 0444), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(Replace("film.nuvid", "new"));
        EXPECT_EQ(error, EACCES);
    }
    ExpectOldFileAlone();
}

TEST_F(AtomicFileTest, AFullDiskKeepsTheOldFile)
{
    folder.Write("film.nuvid", "old");
    rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small {1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    AtomicFile file((folder / "film.nuvid").c_str());
    EXPECT_TRUE(file.Open());
    const bool first = file.Write(std::string(900, 'n'));
    const bool second = file.Write(std::string(900, 'n'));    // the first 100 bytes of it still fit
    const bool third = file.Write("");
    const bool committed = file.Commit();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_FALSE(third);
    EXPECT_FALSE(committed);
    EXPECT_EQ(file.Error(), EFBIG);
    ExpectOldFileAlone();
}

TEST_F(AtomicFileTest, AFailedFlushOrRenameKeepsTheOldFile)
{
    folder.Write("film.nuvid", "old");
    g_OnFlush = [](int) { return EIO; };
    EXPECT_FALSE(Replace("film.nuvid", "new"));
    EXPECT_EQ(error, EIO);
    ExpectOldFileAlone();

    g_OnFlush = [&](int) {    // something else takes the name at the last moment
        std::filesystem::create_directory(folder / "taken");
        return 0;
    };
    EXPECT_FALSE(Replace("taken", "new"));
    EXPECT_EQ(error, EISDIR);
    std::filesystem::remove(folder / "taken");
    ExpectOldFileAlone();
}

TEST_F(AtomicFileTest, WhatIsNotCommittedLeavesNoTrace)
{
    folder.Write("film.nuvid", "old");
    {
        AtomicFile file((folder / "film.nuvid").c_str());
        ASSERT_TRUE(file.Open());
        EXPECT_FALSE(file.Open());
        EXPECT_FALSE(file.Commit());    // the second opening was a mistake, and mistakes are not committed
    }
    {
        AtomicFile file((folder / "film.nuvid").c_str());
        ASSERT_TRUE(file.Open());
        ASSERT_TRUE(file.Write("half"));
    }
    ExpectOldFileAlone();

    AtomicFile unopened((folder / "film.nuvid").c_str());
    EXPECT_FALSE(unopened.Write("x"));
    EXPECT_FALSE(unopened.Commit());
    EXPECT_NE(unopened.Error(), 0);

    EXPECT_FALSE(AtomicFile(nullptr).Open());
    EXPECT_FALSE(AtomicFile(folder.Path().c_str()).Open());
    EXPECT_FALSE(AtomicFile("/dev/null").Open());
}

}    // namespace
