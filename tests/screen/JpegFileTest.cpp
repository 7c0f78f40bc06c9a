#include "platform/CascadeJpegFile.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <jpeglib.h>

#include <gtest/gtest.h>

#include "host/screen/Canvas.h"
#include "tests/screen/RedJpeg.h"
#include "tests/support/TemporaryFolder.h"

namespace {

enum class Kind { kBaseline, kProgressive, kGrey, kCmyk, kYcck };

// Left half red, right half blue; in grey: dark and bright.
void FillRow(std::vector<unsigned char>& row, Kind kind, unsigned width)
{
    row.clear();
    for (unsigned x = 0; x < width; ++x) {
        const bool left = x < width / 2;
        if (kind == Kind::kGrey) {
            row.push_back(left ? 40 : 220);
        } else {
            row.insert(row.end(), {static_cast<unsigned char>(left ? 255 : 0), 0, static_cast<unsigned char>(left ? 0 : 255)});
            if (kind == Kind::kCmyk || kind == Kind::kYcck) {
                row.push_back(255);    // black ink, inverted like the others
            }
        }
    }
}

std::string MakeJpeg(Kind kind, unsigned width, unsigned height)
{
    jpeg_compress_struct info {};
    jpeg_error_mgr errors {};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = width;
    info.image_height = height;
    const bool inks = kind == Kind::kCmyk || kind == Kind::kYcck;
    info.input_components = kind == Kind::kGrey ? 1 : inks ? 4 : 3;
    info.in_color_space = kind == Kind::kGrey ? JCS_GRAYSCALE : inks ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&info);
    if (kind == Kind::kYcck) {
        jpeg_set_colorspace(&info, JCS_YCCK);
    } else if (kind == Kind::kProgressive) {
        jpeg_simple_progression(&info);
    }
    jpeg_start_compress(&info, TRUE);
    std::vector<unsigned char> row;
    FillRow(row, kind, width);
    for (unsigned y = 0; y < height; ++y) {
        JSAMPROW pointer = row.data();
        jpeg_write_scanlines(&info, &pointer, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::string jpeg(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return jpeg;
}

class JpegFileTest : public ::testing::Test {
protected:
    // Empty: refused or not decoded.
    std::vector<unsigned char> Decode(const std::string& path, int width, int height)
    {
        CascadeJpegFile file;
        std::vector<unsigned char> data(static_cast<size_t>(width) * height * 3);
        if (!file.Open(path.c_str()) || file.GetBitmapDataSize(width, height) != data.size()
            || !file.GetBitmapData({0, 0, width, height}, data.data())) {
            return {};
        }
        return data;
    }
    bool Opens(const std::string& bytes)
    {
        CascadeJpegFile file;
        return file.Open(m_Folder.Write("x.jpg", bytes).c_str());
    }
    static bool IsNear(const std::vector<unsigned char>& data, size_t pixel, int red, int green, int blue)
    {
        const auto near = [&](size_t at, int value) { return std::abs(data.at(3 * pixel + at) - value) < 12; };
        return near(0, red) && near(1, green) && near(2, blue);
    }

    TemporaryFolder m_Folder;
};

TEST_F(JpegFileTest, EveryKindComesAtTheSizeAskedForInRedGreenBlue)
{
    for (const Kind kind : {Kind::kBaseline, Kind::kProgressive, Kind::kGrey, Kind::kCmyk, Kind::kYcck}) {
        const std::string path = m_Folder.Write("picture.jpg", MakeJpeg(kind, 321, 243));
        CascadeJpegFile file;
        ASSERT_TRUE(file.Open(path.c_str()));
        EXPECT_EQ(file.GetImageWidth(), 321U);
        EXPECT_EQ(file.GetImageHeight(), 243U);
        const struct {
            int width;
            int height;
        } sizes[] = {{321, 243}, {160, 121}, {31, 24}, {1000, 757}, {4, 300}};
        for (const auto& size : sizes) {
            // Twice from one opened file as well.
            const std::vector<unsigned char> data = Decode(path, size.width, size.height);
            std::vector<unsigned char> again(data.size());
            ASSERT_TRUE(!data.empty() && file.GetBitmapData({0, 0, size.width, size.height}, again.data()));
            EXPECT_EQ(data, again);
            const size_t middle = static_cast<size_t>(size.height / 2) * size.width;
            const bool grey = kind == Kind::kGrey;
            EXPECT_TRUE(IsNear(data, middle, grey ? 40 : 255, grey ? 40 : 0, grey ? 40 : 0)) << int(kind) << " " << size.width;
            EXPECT_TRUE(IsNear(data, middle + size.width - 1, grey ? 220 : 0, grey ? 220 : 0, grey ? 220 : 255)) << int(kind) << " " << size.width;
            EXPECT_TRUE(IsNear(data, data.size() / 3 - 1, grey ? 220 : 0, grey ? 220 : 0, grey ? 220 : 255));    // the last pixel too
        }
    }
}

TEST_F(JpegFileTest, APngIsTakenToo)
{
    const screen::SurfacePtr surface = screen::CreateSurface(64, 32, 1);
    const screen::CairoPtr cairo(cairo_create(surface.get()));
    screen::SetSourceColor(cairo.get(), 0x20C040FF);
    cairo_paint(cairo.get());
    cairo_surface_write_to_png(surface.get(), (m_Folder / "p.jpg").c_str());    // by what it holds, not by its name
    EXPECT_TRUE(IsNear(Decode(m_Folder / "p.jpg", 16, 8), 127, 0x20, 0xC0, 0x40));
    std::string bytes = m_Folder.Read("p.jpg");
    EXPECT_TRUE(Opens(bytes));
    bytes.resize(bytes.size() / 2);
    EXPECT_TRUE(Decode(m_Folder.Write("half.png", bytes), 16, 8).empty());
    bytes[16] = 0x40;
    EXPECT_FALSE(Opens(bytes));
}

TEST_F(JpegFileTest, WhatIsTooLargeOrNoPictureIsRefusedByItsHeader)
{
    const struct {
        unsigned width;
        unsigned height;
        bool opens;
    } sizes[] = {{40, 24, true}, {16384, 100, true}, {100, 16384, true}, {16385, 1, false}, {1, 16385, false}, {65500, 10, false},
        {10000, 10000, true}, {10001, 10000, false}, {16384, 16384, false}, {0, 24, false}, {40, 0, false}};
    for (const auto& size : sizes) {
        EXPECT_EQ(Opens(RedJpegOf(size.width, size.height)), size.opens) << size.width << " x " << size.height;
    }
    EXPECT_FALSE(Opens(""));
    EXPECT_FALSE(Opens("text that is no picture"));
    EXPECT_FALSE(Opens("\xFF\xD8"));

    const std::string large = m_Folder.Write("large.jpg", RedJpegOf(40, 24));
    std::filesystem::resize_file(large, (64U << 20) + 1);
    mkfifo((m_Folder / "pipe.jpg").c_str(), 0600);
    CascadeJpegFile file;
    for (const char* const name : {"large.jpg", "pipe.jpg", "none.jpg", ""}) {
        EXPECT_FALSE(file.Open((m_Folder / name).c_str())) << name;
    }
    EXPECT_FALSE(file.Open(nullptr));

    unsigned char data[12];
    EXPECT_FALSE(file.GetBitmapData({0, 0, 2, 2}, data));
    ASSERT_TRUE(file.Open(m_Folder.Write("x.jpg", RedJpegOf(40, 24)).c_str()));
    EXPECT_TRUE(file.GetBitmapData({0, 0, 2, 2}, data));
    EXPECT_EQ(file.GetBitmapDataSize(0, 4), 0U);
    EXPECT_EQ(file.GetBitmapDataSize(20000, 4), 0U);
    EXPECT_FALSE(file.GetBitmapData({0, 0, 0, 2}, data));
    EXPECT_FALSE(file.GetBitmapData({1, 0, 2, 2}, data));
    EXPECT_FALSE(file.GetBitmapData({0, 0, -2, 2}, data));
}

TEST_F(JpegFileTest, ATruncatedFileGivesWhatThereIsOfIt)
{
    for (const Kind kind : {Kind::kBaseline, Kind::kProgressive}) {
        const std::string whole = MakeJpeg(kind, 320, 240);
        size_t shown = 0;
        for (size_t length = 0; length < whole.size(); length += 29) {
            shown += Decode(m_Folder.Write("part.jpg", whole.substr(0, length)), 32, 24).empty() ? 0 : 1;
        }
        EXPECT_GT(shown, 10U);
    }
    const std::string whole = MakeJpeg(Kind::kBaseline, 320, 240);
    const auto data = Decode(m_Folder.Write("most.jpg", whole.substr(0, whole.size() * 3 / 4)), 320, 240);
    EXPECT_TRUE(IsNear(data, 320 * 20 + 10, 255, 0, 0));
}

TEST_F(JpegFileTest, DecodingIsGivenUpWhenToldSo)
{
    const std::string path = m_Folder.Write("huge.jpg", MakeJpeg(Kind::kProgressive, 6000, 4000));
    CascadeJpegFile file;
    ASSERT_TRUE(file.Open(path.c_str()));
    std::vector<unsigned char> data(200 * 100 * 3);
    std::atomic<bool> stop {true};
    EXPECT_FALSE(file.GetBitmapData({0, 0, 200, 100}, data.data(), &stop));

    using Clock = std::chrono::steady_clock;
    stop = false;
    auto begin = Clock::now();
    EXPECT_TRUE(file.GetBitmapData({0, 0, 200, 100}, data.data(), &stop));
    const auto whole = Clock::now() - begin;

    std::atomic<bool> begun {false};
    std::thread decoder([&] {
        begun = true;
        EXPECT_FALSE(file.GetBitmapData({0, 0, 200, 100}, data.data(), &stop));
    });
    while (!begun) {
        std::this_thread::yield();
    }
    begin = Clock::now();
    stop = true;
    decoder.join();
    EXPECT_LT(Clock::now() - begin, whole / 2);
    stop = false;
    EXPECT_TRUE(file.GetBitmapData({0, 0, 200, 100}, data.data(), &stop));    // and the file can be used again
}

}    // namespace
