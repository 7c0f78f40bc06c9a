// Real recordings, damaged ones and things that are none, into a cache of the test's own.
#include "host/library/ThumbnailMaker.h"

#include <cairo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "host/library/FrameGrab.h"
#include "tests/support/TemporaryFolder.h"

using namespace host;
namespace fs = std::filesystem;

namespace {

const std::string kFixtures = NUVID_FIXTURES "/";

class ThumbnailMakerTest : public ::testing::Test {
protected:
    std::string PictureOf(const std::string& path)
    {
        m_nAsked = 0;
        const Thumbnail thumbnail = m_Maker.Make(path, [this] { return ++m_nAsked >= m_nStopAt; });
        m_nSeconds = thumbnail.seconds;
        return thumbnail.picture;
    }
    size_t CountIn(const std::string& folder) const
    {
        std::error_code none;
        const fs::directory_iterator entries(m_Cache / folder, none);
        return size_t(std::distance(fs::begin(entries), fs::end(entries)));
    }
    void Touch(const std::string& path, time_t seconds) const
    {
        const timeval times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimes(path.c_str(), times), 0);
    }

    TemporaryFolder m_Cache;
    TemporaryFolder m_Films;
    ThumbnailMaker m_Maker {m_Cache.Path()};
    int m_nAsked = 0;    // in the last making: 0 or 1 when nothing was read
    int m_nStopAt = 1 << 30;
    int m_nSeconds = -1;    // the last making's
};

struct Look {
    int width = 0;
    int height = 0;
    int bright = 0;    // of the brightest pixel
};

Look LookAt(const std::string& png)
{
    cairo_surface_t* const surface = cairo_image_surface_create_from_png(png.c_str());
    Look look;
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS) {
        look = {cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface), 0};
        const unsigned char* const bytes = cairo_image_surface_get_data(surface);
        for (int y = 0; y < look.height; ++y) {
            const unsigned char* const row = bytes + y * cairo_image_surface_get_stride(surface);
            for (int x = 0; x < look.width * 4; ++x) {
                look.bright = std::max(look.bright, x % 4 == 3 ? 0 : int(row[x]));
            }
        }
    }
    cairo_surface_destroy(surface);
    return look;
}

void Copy(const std::string& from, const std::string& to)
{
    fs::copy_file(from, to);
}

}    // namespace

TEST_F(ThumbnailMakerTest, ShowsRecordingsInTheirShape)
{
    const struct {
        const char* path;
        int height;    // beside a width of 256
    } kFilms[] = {{"mpeg2_mp2.mpg", 192}, {"mpeg1_mp2.mpg", 209}, {"ts_1080i.ts", 144}, {"ts_192byte.ts", 192}, {"ts_204byte.ts", 192},
        {"ts_h264_aac.ts", 205}, {"mpeg2_lpcm.vob", 192}, {"single_iframe.mpg", 192}, {"bad/no_pat.ts", 192}, {"bad/truncated.mpg", 192},
        {"dvd", 192}, {"dvd/VIDEO_TS", 192}, {"dvd.iso", 192}, {"dvd.iso~VTS_02", 192}};
    for (const auto& film : kFilms) {
        const std::string picture = PictureOf(kFixtures + film.path);
        const Look look = LookAt(picture);
        EXPECT_EQ(look.width, 256) << film.path;
        EXPECT_NEAR(look.height, film.height, 5) << film.path;
        EXPECT_GT(look.bright, 180) << film.path;
    }
}

TEST_F(ThumbnailMakerTest, MakesAPictureOnceUntilTheFileChanges)
{
    const std::string film = m_Films / "a film.mpg";
    Copy(kFixtures + "mpeg2_mp2.mpg", film);
    Touch(film, 1000000000);
    const std::string picture = PictureOf(film);
    EXPECT_GT(m_nAsked, 1);
    EXPECT_EQ(PictureOf(film), picture);
    EXPECT_EQ(m_nAsked, 0);
    fs::create_symlink(film, m_Films / "link.mpg");    // as under the folder of volumes
    EXPECT_EQ(PictureOf(m_Films / "link.mpg"), picture);
    EXPECT_EQ(m_nAsked, 0);

    Touch(film, 1000000001);
    EXPECT_EQ(PictureOf(film), picture);
    EXPECT_GT(m_nAsked, 1);
    EXPECT_EQ(CountIn("large"), 1u);
}

TEST_F(ThumbnailMakerTest, TellsHowLongARecordingLasts)
{
    const struct {
        const char* path;
        int seconds;
    } kFilms[] = {{"mpeg2_mp2.mpg", 5}, {"ts_2audio.ts", 5}, {"ts_204byte.ts", 5}, {"wrap.mpg", 5}, {"parts_long_whole.mpg", 60}, {"dvd", 0}, {"dvd.iso", 0}};
    for (const auto& film : kFilms) {
        for (const char* time : {"first", "from the cache"}) {
            PictureOf(kFixtures + film.path);
            EXPECT_NEAR(m_nSeconds, film.seconds, 1) << film.path << " " << time;
        }
    }
    // A clock that starts again: nobody knows.
    std::ofstream joined(m_Films / "joined.mpg", std::ios::binary);
    for (int i = 0; i < 3; ++i) {
        joined << std::ifstream(kFixtures + "mpeg2_mp2.mpg", std::ios::binary).rdbuf();
    }
    joined.close();
    PictureOf(m_Films / "joined.mpg");
    EXPECT_EQ(m_nSeconds, 0);
}

TEST_F(ThumbnailMakerTest, RemembersWhatHasNoPicture)
{
    for (const char* const name : {"random.mpg", "text.mpg", "jpeg.mpg", "scrambled.ts"}) {
        const std::string file = m_Films / name;
        Copy(kFixtures + "bad/" + name, file);
        EXPECT_EQ(PictureOf(file), "") << name;
        EXPECT_GT(m_nAsked, 1) << name;
        EXPECT_EQ(PictureOf(file), "") << name;
        EXPECT_EQ(m_nAsked, 0) << name;
    }
    EXPECT_EQ(CountIn("fail/nuvid"), 4u);
    EXPECT_EQ(CountIn("large"), 0u);

    // The recording has come.
    fs::remove(m_Films / "text.mpg");
    Copy(kFixtures + "mpeg2_mp2.mpg", m_Films / "text.mpg");
    Touch(m_Films / "text.mpg", 1000000000);
    EXPECT_NE(PictureOf(m_Films / "text.mpg"), "");
}

TEST_F(ThumbnailMakerTest, LeavesAloneWhatIsNoRecordingAtAll)
{
    m_Films.Write("empty.mpg", "");
    fs::create_directory(m_Films / "folder");
    ASSERT_EQ(mkfifo((m_Films / "pipe.mpg").c_str(), 0600), 0);
    fs::create_symlink("loop.mpg", m_Films / "loop.mpg");
    for (const char* const name : {"empty.mpg", "folder", "pipe.mpg", "loop.mpg", "missing.mpg"}) {
        EXPECT_EQ(PictureOf(m_Films / name), "") << name;
    }
    for (const char* const path : {"", "http://192.0.2.1/film.mpg", "/dev/zero", "upnp:1234"}) {
        EXPECT_EQ(PictureOf(path), "") << path;
    }
    EXPECT_EQ(CountIn("fail/nuvid"), 0u);
}

TEST_F(ThumbnailMakerTest, AStoppedMakingLeavesNothingBehind)
{
    for (m_nStopAt = 1; m_nStopAt < 12; ++m_nStopAt) {
        if (PictureOf(kFixtures + "bad/scrambled.ts"); m_nAsked < m_nStopAt) {
            break;    // was through by then
        }
        EXPECT_EQ(CountIn("fail/nuvid"), 0u) << m_nStopAt;
    }
    EXPECT_GT(m_nStopAt, 4);
}

TEST_F(ThumbnailMakerTest, PassesOverADarkBeginning)
{
    // The first two fifths, also by bytes: noise makes black cost as much as pictures do.
    const std::string film = m_Films / "dark.ts";
    const std::string command = "ffmpeg -v error -f lavfi -i color=black:s=352x288:r=25:d=2 -f lavfi -i testsrc=s=352x288:r=25:d=3 "
                                "-filter_complex concat=n=2:v=1,noise=c0s=12:c0f=t -c:v mpeg2video -q:v 4 -g 12 -f mpegts '"
        + film + "' < /dev/null";
    ASSERT_EQ(system(command.c_str()), 0);
    EXPECT_GT(LookAt(PictureOf(film)).bright, 180);

    // Nothing but dark is shown as it is.
    const std::string night = m_Films / "night.ts";
    ASSERT_EQ(
        system(("ffmpeg -v error -f lavfi -i color=black:s=352x288:r=25:d=1 -c:v mpeg2video -f mpegts '" + night + "' < /dev/null").c_str()), 0);
    EXPECT_EQ(LookAt(PictureOf(night)).width, 256);
}

TEST_F(ThumbnailMakerTest, TakesTheLargestTitleSetOfADvd)
{
    const std::string folder = m_Films / "disc";
    fs::create_directories(folder + "/VIDEO_TS");
    const auto put = [&](const char* name, size_t bytes) { m_Films.Write(std::string("disc/VIDEO_TS/") + name, std::string(bytes, 'x')); };
    EXPECT_EQ(MainVideoOfDvd(folder), "");
    put("VIDEO_TS.VOB", 9000);
    put("VTS_01_0.VOB", 9000);
    put("VTS_01_1.VOB", 2000);
    put("VTS_02_2.VOB", 1500);
    put("VTS_02_1.VOB", 1500);
    put("VTS_03_1.VOB.part", 9000);
    put("VTS_xx_1.VOB", 9000);
    EXPECT_EQ(MainVideoOfDvd(folder), folder + "/VIDEO_TS/VTS_02_1.VOB");
    EXPECT_EQ(MainVideoOfDvd(folder + "/VIDEO_TS"), folder + "/VIDEO_TS/VTS_02_1.VOB");
}

TEST(FrameGrabTest, FitsPicturesWithoutEnlarging)
{
    const struct {
        int width, height;
        double sample;
        int fittedWidth, fittedHeight;
    } kCases[] = {{720, 576, 16.0 / 15, 256, 192}, {720, 576, 64.0 / 45, 256, 144}, {1920, 1080, 1, 256, 144}, {1440, 1080, 4.0 / 3, 256, 144},
        {576, 1024, 1, 144, 256}, {160, 120, 1, 160, 120}, {480, 576, 0, 213, 256}, {16384, 16, 1e9, 256, 1}, {16, 16384, 1e-9, 1, 256},
        {1, 1, 1, 1, 1}};
    for (const auto& test : kCases) {
        int width = 0;
        int height = 0;
        FitPicture(test.width, test.height, test.sample, width, height);
        EXPECT_EQ(width, test.fittedWidth) << test.width << "x" << test.height;
        EXPECT_EQ(height, test.fittedHeight) << test.width << "x" << test.height;
    }
}

TEST(FrameGrabTest, SurvivesDamageOfEveryKind)
{
    for (const char* const name : {"mpeg2_mp2.mpg", "ts_188byte.ts", "ts_h264_aac.ts"}) {
        std::ifstream file(kFixtures + name, std::ios::binary);
        const std::string whole {std::istreambuf_iterator<char>(file), {}};
        std::mt19937 random(1);
        for (int round = 0; round < 12; ++round) {
            std::string bytes = whole.substr(0, 300000 + random() % 500000);
            for (size_t i = 0; i < bytes.size() / 2000 * size_t(round + 1); ++i) {
                bytes[random() % bytes.size()] = char(random());
            }
            const int fd = memfd_create("damaged", MFD_CLOEXEC);
            ASSERT_EQ(write(fd, bytes.data(), bytes.size()), ssize_t(bytes.size()));
            SmallPicture picture;
            // It may lie about its size: the file has shrunk since.
            const Grab grab = GrabPicture(
                fd, int64_t(bytes.size()) * (round % 3 + 1), round % 4 == 3, [] { return false; }, picture);
            EXPECT_EQ(grab == Grab::kPicture, !picture.pixels.empty()) << name << " " << round;
            close(fd);
        }
    }
}
