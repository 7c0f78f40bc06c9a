// The HTTP stream with a server of the real world.
#include <gtest/gtest.h>

#include "platform/CascadeHTTPStream.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/HttpReading.h"
#include "tests/network/Nginx.h"

namespace {

class HttpStreamNginx : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_Nginx.IsRunning()) << "nginx is needed for this test"; }
    Nginx m_Nginx;
    CascadeHTTPStream m_Stream;
};

TEST_F(HttpStreamNginx, BytesAreThoseOfTheFile)
{
    m_Nginx.Write("Ein schöner Film.mpg", Noise());
    EXPECT_FALSE(m_Stream.Open(m_Nginx.Url("missing.mpg").c_str()));
    ASSERT_TRUE(m_Stream.Open(m_Nginx.Url("Ein schöner Film.mpg").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), Noise().size());
    EXPECT_TRUE(Read(m_Stream, Noise().size() + 1) == Noise());
    for (const size_t position : {size_t {3}, size_t {9000000}, size_t {192512}, Noise().size() - 1}) {
        ASSERT_TRUE(m_Stream.SeekToPosition(position));
        EXPECT_TRUE(Read(m_Stream, 300000) == Noise().substr(position, 300000)) << position;
    }
    // An upper-case scheme and a name that is already encoded mean the same.
    ASSERT_TRUE(m_Stream.Open(("HTTP" + m_Nginx.Url("Ein%20sch%C3%B6ner%20Film.mpg").substr(4)).c_str()));
    EXPECT_EQ(m_Stream.GetSize(), Noise().size());
}

TEST_F(HttpStreamNginx, RecordingUnderWayGoesOnBeyondTheSizeOfItsOpening)
{
    constexpr size_t kFirst = 1000000;
    constexpr size_t kSecond = 2500000;
    m_Nginx.Write("growing.mpg", Noise().substr(0, kFirst));
    ASSERT_TRUE(m_Stream.Open(m_Nginx.Url("growing.mpg").c_str()));
    EXPECT_EQ(Read(m_Stream, 1000).size(), 1000u);
    m_Nginx.Write("growing.mpg", Noise().substr(kFirst, kSecond - kFirst), true);
    EXPECT_TRUE(Read(m_Stream, kSecond - 1000) == Noise().substr(1000, kSecond - 1000));
    EXPECT_EQ(m_Stream.GetPosition(), kSecond);
    EXPECT_EQ(Read(m_Stream, 10), "");
}

TEST_F(HttpStreamNginx, EmptyFileIsAStreamThatEndsAtOnce)
{
    m_Nginx.Write("empty.mpg", "");
    ASSERT_TRUE(m_Stream.Open(m_Nginx.Url("empty.mpg").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 0u);
    EXPECT_EQ(Read(m_Stream, 10), "");
    EXPECT_FALSE(m_Stream.WasInterrupted());
}

}    // namespace
