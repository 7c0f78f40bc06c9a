#include "sources/IFOCells.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "sources/DVDISOStream.h"
#include "tests/sources/DVDFixtures.h"
#include "tests/sources/ImageBuilder.h"
#include "tests/sources/MemoryStream.h"

namespace {

std::string Output(const std::string& command)
{
    FILE* const pipe = popen(command.c_str(), "r");
    std::string text;
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) {
        text += static_cast<char>(c);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return text;
}

// As ifo-chapters.py prints it.
std::string Listed(const IFOCells& cells)
{
    std::string text = CascadeString::Format("title %lld\nduration %d\n", static_cast<long long>(cells.GetTitleSize()), cells.GetDuration()).Str();
    for (const audio_stream& audio : cells.GetAudioStreams()) {
        const std::string code = audio.language == nullptr ? "" : audio.language == std::string("English") ? "en" : "de";
        text += "audio " + std::to_string(audio.streamId) + " " + code + "\n";
    }
    for (const cell_info& cell : cells.GetCells()) {
        text += CascadeString::Format("chapter %u %u %lld %lld\n", unsigned {cell.vobId}, unsigned {cell.cellId},
            static_cast<long long>(cell.location), static_cast<long long>(cell.size))
                    .Str();
    }
    return text;
}

class IFOCellsOfDVD : public DVDFixtures { };

TEST_F(IFOCellsOfDVD, AgreesWithAnIndependentReader)
{
    for (const char* set : {"VTS_01", "VTS_02"}) {
        const std::string file = InFolder(std::string(set) + "_0.IFO");
        const std::string expected = Output("python3 '" NUVID_SOURCE "/tests/fixtures/ifo-chapters.py' '" + file + "'");
        const IFOCells fromFolder(file.c_str());
        EXPECT_EQ(Listed(fromFolder), expected);
        EXPECT_STREQ(fromFolder.GetName(), file.c_str());
        EXPECT_STREQ(fromFolder.GetVideo().resolution, "720x576");
        EXPECT_STREQ(fromFolder.GetVideo().aspect, "4:3");
        EXPECT_STREQ(fromFolder.GetAudioStreams().at(0).format, "DD 2.0");

        DVDISOStream image;
        ASSERT_TRUE(image.Open((Images()[0] + "~" + set).c_str()));
        ASSERT_NE(image.GetIFOStream(), nullptr);
        const IFOCells fromImage(*image.GetIFOStream());
        EXPECT_EQ(Listed(fromImage), expected);
        EXPECT_STREQ(fromImage.GetName(), "CascadeStream");
        EXPECT_EQ(static_cast<unsigned long long>(fromImage.GetTitleSize()), image.GetSize());
        // Each chapter begins with a pack whose first packet is a system header (ISO/IEC 13818-1 2.5.3.3, 2.5.3.5).
        for (const cell_info& cell : fromImage.GetCells()) {
            ASSERT_TRUE(image.SeekToPosition(static_cast<unsigned long long>(cell.location)));
            const std::string pack = Read(image, 18);
            EXPECT_EQ(pack.substr(0, 4), std::string("\0\0\1\xBA", 4));
            EXPECT_EQ(pack.substr(14, 4), std::string("\0\0\1\xBB", 4));
            EXPECT_NEAR(cell.position, static_cast<double>(cell.location) / static_cast<double>(image.GetSize()), 1e-6);
        }
    }
}

// Two chains over three long cells and a short one.
InformationFileBuilder Film()
{
    InformationFileBuilder film;
    film.titleSetLast = 10000;
    film.informationLast = 7;
    film.titleFirst = 993;    // leaves 9000 sectors
    film.cells = {{1, 1, 0, 1000}, {1, 2, 1001, 1001 + 392}, {2, 1, 2000, 2393}, {2, 2, 3000, 8999}};
    film.audio = {InformationFileBuilder::Audio(0, "en"), InformationFileBuilder::Audio(6, "de"), InformationFileBuilder::Audio(4, "fr")};
    film.chains = {{{{1, 1}, {1, 2}, {2, 2}}, {1, -1, 0}, 0x014530}, {{{2, 1}, {1, 1}, {9, 9}, {2, 1}}, {2, 5, 0}, 0x095959}};
    return film;
}

IFOCells Parsed(const std::string& bytes)
{
    MemoryStream stream(bytes);
    return IFOCells(stream);
}

std::string Cells(const IFOCells& cells)
{
    std::string text;
    for (const cell_info& cell : cells.GetCells()) {
        text += std::to_string(cell.vobId) + "." + std::to_string(cell.cellId) + " ";
    }
    return text;
}

TEST(IFOCells, ListsLongCellsInTheOrderOfTheChains)
{
    const IFOCells cells = Parsed(Film().Build());
    EXPECT_EQ(Cells(cells), "1.1 2.2 2.1 ") << "a cell of 392 sectors is none, one of 393 is";
    EXPECT_EQ(cells.GetTitleSize(), 9000LL * 2048);
    EXPECT_EQ(cells.GetCells()[2].size, 393 * 2048);
    EXPECT_EQ(cells.GetCells()[2].location, 2000 * 2048);
    EXPECT_FLOAT_EQ(cells.GetCells()[1].position, 3000.0F / 9000.0F);
    EXPECT_EQ(cells.GetDuration(), 6330) << "the first chain's alone";
}

TEST(IFOCells, NumbersAudioStreamsAsTheChainsSay)
{
    const IFOCells cells = Parsed(Film().Build());
    // English is 1, French 0; the second chain's 2 for English is new, its 5 for German too, its 0 is taken.
    ASSERT_EQ(cells.GetAudioStreams().size(), 4U);
    const std::pair<int32_t, const char*> kExpected[] = {{0x81, "English"}, {0xA0, "Français"}, {0x82, "English"}, {0x8D, "Deutsch"}};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(cells.GetAudioStreams()[i].streamId, kExpected[i].first);
        EXPECT_STREQ(cells.GetAudioStreams()[i].language, kExpected[i].second);
    }
}

TEST(IFOCells, TakesTheFirstOfEqualAddresses)
{
    InformationFileBuilder film = Film();
    film.cells.push_back({1, 1, 5000, 6000});
    film.chains[0].cells.push_back({1, 1});
    EXPECT_EQ(Cells(Parsed(film.Build())), "1.1 2.2 2.1 ");
    EXPECT_EQ(Parsed(film.Build()).GetCells()[0].location, 0);

    // Beyond 4 GiB; and a last sector before the first makes no chapter.
    film.cells = {{1, 1, 4000000, 4001000}, {2, 2, 500, 100}, {2, 1, 0, 0x00100000}};
    const IFOCells far = Parsed(film.Build());
    EXPECT_EQ(Cells(far), "1.1 ");
    EXPECT_EQ(far.GetCells()[0].location, 4000000LL * 2048);
}

TEST(IFOCells, ReadsPlayingTimeDigitByDigit)
{
    const std::pair<uint32_t, int32_t> kTimes[]
        = {{0x000000, 0}, {0x100203, 36123}, {0x5A0000, 5 * 3600}, {0xA50F01, 1}, {0x995999, 99 * 3600 + 59 * 60 + 99}};
    for (const auto& [bytes, seconds] : kTimes) {
        InformationFileBuilder film = Film();
        film.chains[0].time = bytes;
        EXPECT_EQ(Parsed(film.Build()).GetDuration(), seconds) << std::hex << bytes;
    }
}

TEST(IFOCells, RefusesWhatIsNoInformationFile)
{
    std::string other = Film().Build();
    other.replace(0, 12, "DVDVIDEO-VMG");
    for (const std::string& bytes : {other, std::string(), Film().Build().substr(0, 983)}) {
        testing::internal::CaptureStdout();
        const IFOCells cells = Parsed(bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Invalid IFO file: CascadeStream\n");
        EXPECT_EQ(Listed(cells), "title 0\nduration 0\n");
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(Listed(IFOCells("/nowhere/VTS_01_0.IFO")), "title 0\nduration 0\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Invalid IFO file: /nowhere/VTS_01_0.IFO\n");

    // The same object on another file keeps nothing of the first.
    MemoryStream good(Film().Build());
    IFOCells cells(good);
    MemoryStream bad("x");
    cells.Parse(bad);
    EXPECT_EQ(Listed(cells), "title 0\nduration 0\n");
}

TEST(IFOCells, BoundsWhatTheFileStates)
{
    const std::string file = Film().Build();
    const size_t table = file.rfind(std::string("\0\0\0\x37", 4)) - 4;    // end address of four cells
    const struct {
        size_t at;
        uint64_t value;
        size_t width;
        const char* cells;
        size_t audio;
    } kLies[] = {
        {514, 0xFFFF, 2, "1.1 2.2 2.1 ", 4},    // more audio records than fit
        {514, 1, 2, "1.1 2.2 2.1 ", 2},    // fewer than the chains use
        {196, 9993, 4, "1.1 2.2 2.1 ", 4},    // no title sectors: no division by them
        {table + 4, 0xFFFFFFFF, 4, "1.1 2.2 2.1 ", 4}, {table + 4, 6, 4, "", 4},
        {2048, 0xFFFF, 2, "1.1 2.2 2.1 ", 4},    // chains up to the end of the file
        {204, 0x00FFFFFF, 4, "", 0}, {224, 0x80000000 / 2048 + 1, 4, "", 4},    // below zero in 32 bits
        {224, 0xFFFFFFFF, 4, "", 4}, {2048 + 8 + 4, 0xFFFFFFF0, 4, "2.1 1.1 ", 3},    // the first chain lies behind the end
    };
    for (const auto& lie : kLies) {
        std::string changed = file;
        PutBE(changed, lie.at, lie.value, lie.width);
        const IFOCells cells = Parsed(changed);
        EXPECT_EQ(Cells(cells), lie.cells) << lie.at << " " << lie.value;
        EXPECT_EQ(cells.GetAudioStreams().size(), lie.audio) << lie.at << " " << lie.value;
        for (const cell_info& cell : cells.GetCells()) {
            EXPECT_TRUE(std::isfinite(cell.position)) << lie.at << " " << lie.value;
        }
    }
}

TEST(IFOCells, SurvivesEveryPrefixAndEveryChangedByte)
{
    testing::internal::CaptureStdout();
    const std::string file = Film().Build();
    for (size_t length = 0; length < file.size(); ++length) {
        const IFOCells cells = Parsed(file.substr(0, length));
        EXPECT_LE(cells.GetCells().size(), 3U);
        EXPECT_LE(cells.GetAudioStreams().size(), 4U);
    }
    for (size_t at = 0; at < file.size(); ++at) {
        for (const int flip : {0x01, 0x80, 0xFF}) {
            std::string changed = file;
            changed[at] = static_cast<char>(changed[at] ^ flip);
            const IFOCells cells = Parsed(changed);
            EXPECT_LE(cells.GetAudioStreams().size(), 8U);
        }
    }
    testing::internal::GetCapturedStdout();
}

// As many chains as the count can say, all of them the same one with 255 cells.
TEST(IFOCells, ReadsNoMoreChainsThanADiscCanHave)
{
    InformationFileBuilder film = Film();
    film.chains.assign(65535, {});
    film.chains.back().cells.assign(255, {2, 2});
    std::string file = film.Build();
    for (size_t i = 0; i < 65535; ++i) {
        PutBE(file, 2048 + 12 + 8 * i, 8 + 8 * 65535 + 236 * 65534, 4);
    }
    MemoryStream stream(file);
    const IFOCells cells(stream);
    EXPECT_EQ(Cells(cells), "2.2 ");
    EXPECT_LT(stream.BytesRead(), 8U << 20);
}

}    // namespace
