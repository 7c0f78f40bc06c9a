#include "sources/DVDISOStream.h"

#include <gtest/gtest.h>

#include "host/base/UiQueue.h"
#include "tests/sources/DVDFixtures.h"
#include "tests/sources/ImageBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace {

// How many read calls this process has made and how many bytes they brought; the question itself is one of them.
struct ReadCounts {
    uint64_t bytes = 0;
    uint64_t calls = 0;
};
ReadCounts Counted()
{
    std::ifstream file("/proc/self/io");
    ReadCounts counts;
    std::string name;
    for (uint64_t value = 0; file >> name >> value;) {
        (name == "rchar:" ? counts.bytes : name == "syscr:" ? counts.calls : value) = value;
    }
    return counts;
}

class DVDImages : public DVDFixtures { };

TEST_F(DVDImages, PlayTheirTitleSetsByteForByte)
{
    const std::string title = TitleBytes("VTS_01");
    ASSERT_GT(title.size(), 5000000U);
    for (const std::string& image : Images()) {
        SCOPED_TRACE(image);
        EXPECT_TRUE(DVDISOStream::IsISOFile(image.c_str()));
        DVDISOStream stream;
        ASSERT_TRUE(stream.Open(image.c_str()));
        CascadeString url;
        EXPECT_TRUE(stream.LookupMetadata("url", url));
        EXPECT_STREQ(url, image.c_str());
        EXPECT_EQ(stream.GetSize(), title.size());
        EXPECT_TRUE(ReadRest(stream) == title);
        EXPECT_EQ(stream.GetPosition(), title.size());
        // The other one, where the location names it.
        ASSERT_TRUE(stream.Open((image + "~VTS_02").c_str()));
        EXPECT_TRUE(ReadRest(stream) == TitleBytes("VTS_02"));
        ASSERT_NE(stream.GetIFOStream(), nullptr);
        EXPECT_TRUE(ReadRest(*stream.GetIFOStream(), 777) == FileBytes(InFolder("VTS_02_0.IFO")));
    }
}

TEST_F(DVDImages, ListTheirTitleSets)
{
    DVDISOStream stream;
    ASSERT_TRUE(stream.Open(Images()[0].c_str()));
    CascadeTemplateArray<FileInfo*> found;
    EXPECT_STREQ(stream.GetTitleSets(1, &found), "VTS_01");
    EXPECT_STREQ(stream.GetTitleSets(0, &found), "VTS_01");
    EXPECT_STREQ(stream.GetTitleSets(TitleBytes("VTS_02").size(), nullptr), "VTS_01");
    ASSERT_EQ(found.GetSize(), 2U) << "without a minimum nothing is listed";
    EXPECT_EQ(found[1]->path.Str(), Images()[0] + "~VTS_02");
    EXPECT_STREQ(found[0]->title, "VTS_01 (4 MB)");
    EXPECT_EQ(found[0]->size + found[0]->duration + found[0]->location.GetLength(), 0U);

    CascadeTemplateArray<FileInfo*> large;
    EXPECT_STREQ(stream.GetTitleSets(TitleBytes("VTS_02").size(), &large), "VTS_01");
    EXPECT_EQ(large.GetSize(), 1U) << "a set of exactly the minimum is not above it";
    for (FileInfo* info : found) {
        delete info;
    }
    delete large[0];
}

TEST_F(DVDImages, AreOpenedWithLittleAndReadInOnePiece)
{
    const ReadCounts before = Counted();
    DVDISOStream stream;
    ASSERT_TRUE(stream.Open(Images()[0].c_str()));
    const unsigned long long size = stream.GetSize();
    std::string bytes(size, '\0');
    const ReadCounts opened = Counted();
    EXPECT_LT(opened.bytes - before.bytes, 1U << 20);

    // Three files that follow each other.
    ASSERT_EQ(stream.ReadBytes(size, bytes.data()), size);
    const uint64_t asking = [] {
        const uint64_t calls = Counted().calls;
        return Counted().calls - calls;
    }();
    EXPECT_EQ(Counted().calls - opened.calls, 1 + 3 * asking);
}

// Images of a few sectors. VTS_01: a menu and two parts that do not follow each other; VTS_02 larger by a byte.
class DVDISOStreamTest : public ::testing::Test {
protected:
    std::string Write(const std::string& image) const { return m_Folder.Write("film.iso", image); }
    static ImageBuilder TwoSets()
    {
        ImageBuilder builder;
        builder.Add("VTS_01_0.IFO;1", kInformation).Add("VTS_01_0.VOB;1", Pattern(2048, 9)).Add("VTS_01_1.VOB;1", kPart1).Gap();
        builder.Add("VTS_01_2.VOB;1", kPart2)
            .Add("VTS_02_0.VOB;1", Pattern(9000, 8))
            .Add("VTS_02_1.VOB;1", kOther)
            .Add("VIDEO_TS.VOB;1", Pattern(50000, 7));
        return builder;
    }
    // Every operation once, with answers that fit together; it must end whatever the image says.
    static void UseAll(DVDISOStream& stream, const std::string& location)
    {
        if (!stream.Open(location.c_str())) {
            EXPECT_FALSE(stream.IsOpen());
            EXPECT_EQ(stream.GetSize(), 0U);
            return;
        }
        CascadeTemplateArray<FileInfo*> found;
        stream.GetTitleSets(1, &found);
        for (FileInfo* info : found) {
            delete info;
        }
        const unsigned long long size = stream.GetSize();
        EXPECT_FALSE(stream.SeekToPosition(size + 1));
        EXPECT_TRUE(stream.SeekToPosition(size));
        EXPECT_EQ(Read(stream, 100), "");
        for (const unsigned long long position : {0ULL, size / 2, size - std::min(size, 1000ULL)}) {
            EXPECT_TRUE(stream.SeekToPosition(position));
            const size_t got = Read(stream, 20000).size();
            EXPECT_LE(got, size - position);
            EXPECT_EQ(stream.GetPosition(), position + got);
        }
        if (CascadeStream* const information = stream.GetIFOStream()) {
            const size_t got = Read(*information, 20000).size();
            EXPECT_EQ(information->GetPosition(), got);
        }
    }

    TemporaryFolder m_Folder;
    DVDISOStream m_Stream;
    inline static const std::string kPart1 = Pattern(5000, 1);
    inline static const std::string kPart2 = Pattern(3000, 2);
    inline static const std::string kOther = Pattern(8001, 3);
    inline static const std::string kInformation = Pattern(2048 + 77, 4);
};

TEST_F(DVDISOStreamTest, JoinsThePartsAndLeavesTheMenuOut)
{
    const std::string title = kPart1 + kPart2;
    ASSERT_TRUE(m_Stream.Open((Write(TwoSets().Build()) + "~VTS_01").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 8000U);
    EXPECT_EQ(Read(m_Stream, 9000), title);
    EXPECT_EQ(Read(m_Stream, 1), "");
    for (const size_t position : {0, 4999, 5000, 5001, 7999}) {
        ASSERT_TRUE(m_Stream.SeekToPosition(position));
        EXPECT_EQ(Read(m_Stream, 2), title.substr(position, 2));
    }
    EXPECT_TRUE(m_Stream.SeekToPosition(8000));
    EXPECT_FALSE(m_Stream.SeekToPosition(8001));
    EXPECT_EQ(m_Stream.GetPosition(), 8000U);

    CascadeStream* const information = m_Stream.GetIFOStream();
    ASSERT_NE(information, nullptr);
    EXPECT_EQ(information->GetSize(), kInformation.size());
    EXPECT_FALSE(information->SeekToPosition(kInformation.size() + 1));
    EXPECT_TRUE(information->SeekToPosition(kInformation.size()));
    EXPECT_EQ(Read(*information, 10), "");
    EXPECT_TRUE(information->SeekToPosition(2040));
    EXPECT_EQ(Read(*information, 5000), kInformation.substr(2040));
    EXPECT_EQ(m_Stream.GetPosition(), 8000U) << "the title's position is its own";
}

TEST_F(DVDISOStreamTest, ChoosesTheTitleSet)
{
    const std::string image = Write(TwoSets().Build());
    ASSERT_TRUE(m_Stream.Open(image.c_str()));
    EXPECT_EQ(Read(m_Stream, 9000), kOther);
    EXPECT_EQ(m_Stream.GetIFOStream(), nullptr);
    m_Stream.SetVTSRoot("vts_01");    // behind whose end the stream now stands
    EXPECT_EQ(m_Stream.GetSize(), 8000U);
    EXPECT_EQ(Read(m_Stream, 10), "");
    ASSERT_TRUE(m_Stream.SeekToPosition(0));
    EXPECT_EQ(Read(m_Stream, 8), kPart1.substr(0, 8));
    EXPECT_NE(m_Stream.GetIFOStream(), nullptr);

    ASSERT_TRUE(m_Stream.Open((image + "~VTS_07").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 0U);
    EXPECT_EQ(Read(m_Stream, 10), "");
    m_Stream.Close();
    EXPECT_FALSE(m_Stream.IsOpen());
    EXPECT_EQ(m_Stream.GetSize(), 0U);

    // Equal ones: the lower. The menu counts for nothing.
    ImageBuilder equal;
    equal.Add("VTS_03_1.VOB;1", Pattern(4000, 3)).Add("VTS_02_1.VOB;1", Pattern(4000, 2)).Add("VTS_01_0.VOB;1", Pattern(9000, 1));
    ASSERT_TRUE(m_Stream.Open(Write(equal.Build()).c_str()));
    EXPECT_STREQ(m_Stream.GetTitleSets(0, nullptr), "VTS_02");
    EXPECT_EQ(Read(m_Stream, 9000), Pattern(4000, 2));
}

TEST_F(DVDISOStreamTest, ReadsOtherNamesAndFolders)
{
    for (const char* folder : {"video_ts", "VIDEO_TS", "", "MOVIES"}) {
        ImageBuilder lower(folder);
        lower.Add("vts_01_0.vob", Pattern(3000, 1)).Add("vts_01_1.vob", kPart1);
        ASSERT_TRUE(m_Stream.Open(Write(lower.Build()).c_str()));
        // Only the root stands in for a missing VIDEO_TS.
        EXPECT_EQ(Read(m_Stream, 9000), std::string(folder) == "MOVIES" ? "" : kPart1) << folder;
    }
    ImageBuilder without;
    without.Add("VTS_51_1.VOB;1", kPart1).Add("VIDEO_TS.VOB;1", kPart2).Add("VTS_01_1.IFO;1", kPart2);
    ASSERT_TRUE(m_Stream.Open(Write(without.Build()).c_str()));
    EXPECT_STREQ(m_Stream.GetTitleSets(0, nullptr), "");
    EXPECT_EQ(m_Stream.GetSize(), 0U);
    EXPECT_EQ(Read(m_Stream, 10), "");
    EXPECT_EQ(m_Stream.GetIFOStream(), nullptr);
}

TEST_F(DVDISOStreamTest, RefusesWhatIsNoImage)
{
    std::string image = TwoSets().Build();
    EXPECT_FALSE(m_Stream.Open(Write(image.substr(0, 34163)).c_str()));
    EXPECT_TRUE(m_Stream.Open(Write(image.substr(0, 34164)).c_str()));
    image[16 * 2048] = 77;    // the descriptor's kind is not looked at
    EXPECT_TRUE(DVDISOStream::IsISOFile(Write(image).c_str()));
    image[16 * 2048 + 5] = '2';
    EXPECT_FALSE(DVDISOStream::IsISOFile(Write(image).c_str()));
    const std::string good = m_Folder.Write("good.iso", TwoSets().Build());
    for (const std::string& path : {std::string(), std::string("~"), m_Folder.Path(), m_Folder / "none.iso"}) {
        ASSERT_TRUE(m_Stream.Open(good.c_str()));
        EXPECT_FALSE(m_Stream.Open(path.c_str())) << path;
        EXPECT_FALSE(m_Stream.IsOpen());
    }
}

TEST_F(DVDISOStreamTest, EndsWhereTheImageEnds)
{
    // The records of the two parts change places, so that the first part lies last in the image and is cut.
    std::string image = TwoSets().Build();
    const size_t record1 = image.find("VTS_01_1.VOB") - IsoDirectory::kRecordHeaderSize;
    const size_t record2 = image.find("VTS_01_2.VOB") - IsoDirectory::kRecordHeaderSize;
    std::swap_ranges(image.begin() + static_cast<std::ptrdiff_t>(record1) + 2, image.begin() + static_cast<std::ptrdiff_t>(record1) + 18,
        image.begin() + static_cast<std::ptrdiff_t>(record2) + 2);
    ASSERT_TRUE(m_Stream.Open((Write(image.substr(0, image.find(kPart2) + 1000)) + "~VTS_01").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 8000U);
    EXPECT_EQ(Read(m_Stream, 8000), kPart2.substr(0, 1000)) << "what lies behind must not move up";
    EXPECT_EQ(m_Stream.GetPosition(), 1000U);
    EXPECT_EQ(Read(m_Stream, 8000), "");
    EXPECT_FALSE(m_Stream.WasInterrupted());
    ASSERT_TRUE(m_Stream.SeekToPosition(3000));
    EXPECT_EQ(Read(m_Stream, 8000), kPart1);
}

TEST_F(DVDISOStreamTest, AnInterruptedReadTakesNothing)
{
    const std::string image = TwoSets().Build();
    const size_t part2 = image.find(kPart2);
    Write(image.substr(0, part2));
    ASSERT_TRUE(m_Stream.Open((m_Folder / "film.iso~VTS_01").c_str()));
    EXPECT_EQ(m_Stream.GetSize(), 8000U);
    m_Folder.Append("film.iso", image.substr(part2, 100));    // still being copied: its end is waited for
    host::InterruptToken token;
    token.Interrupt();
    {
        const host::InterruptToken::Scope scope(&token);
        EXPECT_EQ(Read(m_Stream, 8000), "");
        EXPECT_TRUE(m_Stream.WasInterrupted());
        EXPECT_EQ(m_Stream.GetPosition(), 0U);
        EXPECT_EQ(Read(m_Stream, 5000), kPart1) << "a read that needs no wait";
        EXPECT_FALSE(m_Stream.WasInterrupted());
    }
    m_Folder.Append("film.iso", image.substr(part2 + 100));
    EXPECT_EQ(Read(m_Stream, 8000), kPart2);
}

TEST_F(DVDISOStreamTest, ReadsTheFoldersAgainAfterAnInterrupt)
{
    const std::string image = TwoSets().Build();
    Write(image.substr(0, ImageBuilder::kFolder));
    ASSERT_TRUE(m_Stream.Open((m_Folder / "film.iso").c_str()));
    m_Folder.Append("film.iso", image.substr(ImageBuilder::kFolder, 40));
    host::InterruptToken token;
    token.Interrupt();
    {
        const host::InterruptToken::Scope scope(&token);
        EXPECT_EQ(Read(m_Stream, 10), "");
        EXPECT_TRUE(m_Stream.WasInterrupted());
    }
    m_Folder.Append("film.iso", image.substr(ImageBuilder::kFolder + 40));
    EXPECT_EQ(Read(m_Stream, 9000), kOther);
}

TEST_F(DVDISOStreamTest, SurvivesEveryPrefixAndEveryChangedByte)
{
    const std::string image = TwoSets().Build();
    const std::string path = Write(image);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);    // changed in place: a new file each time takes seconds
    const auto put = [&](size_t at, char byte) { file.seekp(static_cast<std::streamoff>(at)).put(byte).flush(); };
    const std::pair<size_t, size_t> kParts[]
        = {{16 * 2048 + 120, 80}, {ImageBuilder::kRoot, 160}, {ImageBuilder::kFolder, 500}};    // descriptor fields and all records
    for (const auto& [start, size] : kParts) {
        for (size_t at = start; at < start + size; ++at) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                put(at, static_cast<char>(image[at] ^ flip));
                UseAll(m_Stream, path);
            }
            put(at, image[at]);
        }
    }
    // Every end inside the records, and at the edges of the sectors behind them.
    for (size_t length = ImageBuilder::kFirstFile + 3 * 2048; length > ImageBuilder::kRoot; --length) {
        const size_t inSector = length % 2048;
        if (inSector < 2 || inSector == 2047 || (length < ImageBuilder::kFirstFile && inSector < 500)) {
            std::filesystem::resize_file(path, length);
            UseAll(m_Stream, path);
        }
    }
}

TEST_F(DVDISOStreamTest, IsNotLedInCirclesNorFarAway)
{
    // VIDEO_TS is the root itself, which holds VIDEO_TS.
    std::string image = ImageBuilder("").Add("VTS_01_1.VOB;1", kPart1).Build();
    const std::string self = ImageBuilder::Record("VIDEO_TS", 18, 2048, true);
    const size_t end = ImageBuilder::kRoot + 34 + 34 + ImageBuilder::Record("VTS_01_1.VOB;1", 0, 0, false).size();
    image.replace(end, self.size(), self);
    ASSERT_TRUE(m_Stream.Open(Write(image).c_str()));
    EXPECT_EQ(Read(m_Stream, 9000), kPart1);

    // A folder without end: records up to the end of the image, and a length to match.
    std::string endless = TwoSets().Build();
    endless.resize(ImageBuilder::kFolder);
    const std::string record = ImageBuilder::Record("VTS_01_1.VOB;1", 16, 4096, false);
    while (endless.size() < (4U << 20)) {
        endless += record;
    }
    endless.replace(endless.find("VIDEO_TS") - 33, 33 + 9, ImageBuilder::Record("VIDEO_TS", 19, 0xFFFFFFFF, true));
    const std::string path = Write(endless);
    const ReadCounts before = Counted();
    ASSERT_TRUE(m_Stream.Open(path.c_str()));
    EXPECT_GT(m_Stream.GetSize(), 0U);
    EXPECT_LT(Counted().bytes - before.bytes, 1U << 20);
    UseAll(m_Stream, path);

    // Blocks of no size: everything lies at byte 0.
    std::string flat = TwoSets().Build();
    PutLE(flat, 16 * 2048 + 128, 0, 2);
    UseAll(m_Stream, Write(flat));
}

}    // namespace
