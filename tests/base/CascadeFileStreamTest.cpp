#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "host/base/UiQueue.h"
#include "platform/CascadeStream.h"
#include "tests/support/TemporaryFolder.h"

namespace {

std::string Read(CascadeStream& stream, unsigned long count)
{
    std::string bytes(count, '\0');
    bytes.resize(stream.ReadBytes(count, bytes.data()));
    return bytes;
}

class CascadeFileStreamTest : public ::testing::Test {
protected:
    void OpenFile(const std::string& bytes) { ASSERT_TRUE(stream.Open(CascadeFile(folder.Write("film", bytes).c_str()))); }

    const TemporaryFolder folder;
    CascadeFileStream stream;
};

TEST_F(CascadeFileStreamTest, ReadsAndSeeks)
{
    OpenFile("0123456789");
    EXPECT_EQ(stream.GetSize(), 10U);
    EXPECT_EQ(Read(stream, 4), "0123");
    EXPECT_EQ(stream.GetPosition(), 4U);
    EXPECT_TRUE(stream.SeekToPosition(10));
    EXPECT_EQ(Read(stream, 1), "");
    EXPECT_FALSE(stream.SeekToPosition(11));
    EXPECT_EQ(stream.GetPosition(), 10U);
    EXPECT_TRUE(stream.SeekToPosition(8));
    EXPECT_EQ(Read(stream, 5), "89");

    // A file cut behind the position reads as its end.
    ASSERT_TRUE(stream.SeekToPosition(6));
    ASSERT_EQ(truncate((folder / "film").c_str(), 3), 0);
    EXPECT_EQ(Read(stream, 4), "");

    // A failed open leaves what was open.
    EXPECT_FALSE(stream.Open(CascadeFile((folder / "absent").c_str())));
    EXPECT_TRUE(stream.SeekToPosition(0));
    EXPECT_EQ(Read(stream, 9), "012");
    stream.Close();
    EXPECT_EQ(Read(stream, 1), "");
    EXPECT_FALSE(stream.SeekToPosition(0));
}

TEST_F(CascadeFileStreamTest, RefusesWhatIsNoFileWithoutHanging)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("pipe", (folder / "link").c_str()), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (folder / "socket").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    for (const std::string& path : {folder / "pipe", folder / "link", folder / "socket", folder.Path(), std::string("/dev/zero"), std::string()}) {
        EXPECT_FALSE(stream.Open(CascadeFile(path.c_str()))) << path;
        EXPECT_FALSE(stream.IsOpen());
    }
    close(listener);
    const std::string file = folder.Write("film", "x");
    ASSERT_EQ(symlink(file.c_str(), (folder / "film-link").c_str()), 0);
    EXPECT_TRUE(stream.Open(CascadeFile((folder / "film-link").c_str())));
}

TEST_F(CascadeFileStreamTest, WaitsOnlyForAFileThatHasGrown)
{
    OpenFile("old.");
    std::filesystem::last_write_time((folder / "film").c_str(), std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    host::InterruptToken token;
    token.Interrupt();
    const host::InterruptToken::Scope scope(&token);

    // A wait would be ended by the token at once and be told: so none was begun.
    EXPECT_EQ(Read(stream, 100), "old.");
    EXPECT_FALSE(stream.WasInterrupted());

    folder.Append("film", "new.");
    EXPECT_EQ(Read(stream, 4), "new.");    // a read that is filled waits for nothing
    EXPECT_FALSE(stream.WasInterrupted());
    ASSERT_TRUE(stream.SeekToPosition(2));
    EXPECT_EQ(Read(stream, 100), "");
    EXPECT_TRUE(stream.WasInterrupted());
    EXPECT_EQ(stream.GetPosition(), 2U);    // nothing was taken
}

TEST_F(CascadeFileStreamTest, FillsAReadWithWhatARecordingAppends)
{
    OpenFile("begin.");
    folder.Append("film", "grown.");
    std::thread recorder([this] {
        folder.Append("film", "more.");
        folder.Append("film", "end.");
    });
    EXPECT_EQ(Read(stream, 21), "begin.grown.more.end.");
    recorder.join();
}

TEST_F(CascadeFileStreamTest, AnInterruptEndsTheWaitOfAnotherThread)
{
    OpenFile("begin.");
    folder.Append("film", "grown.");
    host::InterruptToken token;
    std::string answer = "x";
    std::thread feeder([&] {
        const host::InterruptToken::Scope scope(&token);
        answer = Read(stream, 4096);
    });
    token.Interrupt();
    feeder.join();
    EXPECT_EQ(answer, "");
    EXPECT_TRUE(stream.WasInterrupted());
    EXPECT_EQ(stream.GetPosition(), 0U);

    EXPECT_EQ(Read(stream, 12), "begin.grown.");    // the same bytes once more
    EXPECT_FALSE(stream.WasInterrupted());
}

TEST_F(CascadeFileStreamTest, TheFeedFollowsAFileThatHasJustBeenWritten)
{
    OpenFile("begin.");
    host::InterruptToken token;
    const host::InterruptToken::Scope scope(&token);
    std::thread recorder([this] { folder.Append("film", "end."); });
    EXPECT_EQ(Read(stream, 10), "begin.end.");
    recorder.join();
}

TEST_F(CascadeFileStreamTest, GivesLinesWithoutTheirEnds)
{
    const std::string longLine(1500, 'l');
    OpenFile("one\r\n\n" + longLine + "\nlast");
    for (const std::string& expected : {std::string("one"), std::string(), longLine, std::string("last")}) {
        CascadeString line("unset");
        EXPECT_TRUE(stream.GetLine(line));
        EXPECT_EQ(line, expected);
    }
    CascadeString line;
    EXPECT_FALSE(stream.GetLine(line));

    OpenFile("a\nb\n");
    EXPECT_TRUE(stream.GetLine(line));
    EXPECT_EQ(stream.GetPosition(), 2U);
    EXPECT_TRUE(stream.GetLine(line));
    EXPECT_FALSE(stream.GetLine(line));    // no empty line after the last line end
}

}    // namespace
