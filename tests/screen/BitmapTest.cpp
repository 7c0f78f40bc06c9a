#include "platform/CascadeBitmap.h"

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/screen/Canvas.h"
#include "host/screen/TextEngine.h"
#include "platform/CascadeSharedMemZone.h"
#include "tests/screen/Print.h"
#include "tests/screen/RedJpeg.h"
#include "tests/support/TemporaryFolder.h"

namespace {

struct BitmapTest : ::testing::Test {
    BitmapTest() { screen::SetOutputScale(1); }
    ~BitmapTest() override { screen::SetOutputScale(1); }
};

struct FolderTest : BitmapTest {
    std::string WritePng(const char* name, int width, int height, CascadeColor color)
    {
        const screen::SurfacePtr surface = screen::CreateSurface(width, height, 1);
        const screen::CairoPtr cairo(cairo_create(surface.get()));
        screen::SetSourceColor(cairo.get(), color);
        cairo_paint(cairo.get());
        cairo_surface_write_to_png(surface.get(), (folder / name).c_str());
        return folder / name;
    }
    const TemporaryFolder folder;
};

bool InkIn(const CascadeBitmap& bitmap, CascadeRect area)
{
    for (int y = area.top; y < area.Bottom(); ++y) {
        for (int x = area.left; x < area.Right(); ++x) {
            if ((bitmap.GetPixel(x, y) & 0xFF) > 0x40) {
                return true;
            }
        }
    }
    return false;
}

}    // namespace

TEST_F(BitmapTest, ColoursAreStraightAlpha)
{
    CascadeBitmap bitmap;
    EXPECT_TRUE(bitmap.IsEmpty());
    ASSERT_TRUE(bitmap.Create(20, 10));
    EXPECT_EQ(0U, bitmap.GetPixel(5, 5));
    bitmap.Fill(0x20406080);
    const CascadeColor half = bitmap.GetPixel(5, 5);
    EXPECT_EQ(0x80U, half & 0xFF);
    EXPECT_NEAR(0x40, int(half >> 16 & 0xFF), 2);
    bitmap.FillRect({0, 0, 10, 10}, 0xFF000080);    // blends: more opaque than either
    EXPECT_NEAR(0xC0, int(bitmap.GetPixel(5, 5) & 0xFF), 2);
    bitmap.Fill(0);
    EXPECT_EQ(0U, bitmap.GetPixel(5, 5));
    bitmap.SetOrigin({100, 100});
    bitmap.FillRect({110, 100, 1, 1}, 0x00FF00FF);
    EXPECT_EQ(0x00FF00FFU, bitmap.GetPixel(10, 0));
    EXPECT_EQ(0U, bitmap.GetPixel(-1, 0) | bitmap.GetPixel(20, 0) | bitmap.GetPixel(11, 0));
    EXPECT_FALSE(bitmap.Create(0, 5));
    EXPECT_TRUE(bitmap.IsEmpty());
    EXPECT_FALSE(bitmap.Create(40000, 5));
}

TEST_F(BitmapTest, ShapesStayInsideTheirRectangles)
{
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.Create(100, 60));
    bitmap.FillRoundedRect({10, 10, 40, 40}, 15, 0xFFFFFFFF);
    EXPECT_EQ(0U, bitmap.GetPixel(10, 10) & 0xFF);    // the corner is round
    EXPECT_EQ(0xFFU, bitmap.GetPixel(30, 30) & 0xFF);
    bitmap.StrokeRoundedRect({55, 10, 40, 40}, 0, 4, 0x0000FFFF);
    EXPECT_EQ(0x0000FFFFU, bitmap.GetPixel(56, 30));
    EXPECT_EQ(0U, bitmap.GetPixel(54, 30) | bitmap.GetPixel(60, 30));
    bitmap.FillGradient({0, 55, 100, 5}, 0, 0xFF0000FF, 0x0000FFFF, false);
    EXPECT_GT(bitmap.GetPixel(2, 57) >> 24, 0xF0U);
    EXPECT_LT(bitmap.GetPixel(97, 57) >> 24, 0x10U);
    const auto* const surface = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
    const CascadeRect* const touched = screen::TouchedArea(const_cast<cairo_surface_t*>(surface));
    ASSERT_NE(nullptr, touched);
    EXPECT_EQ((CascadeRect {0, 10, 100, 50}), *touched);
    EXPECT_EQ((CascadeRect {0, 10, 100, 50}), screen::VisibleArea(static_cast<cairo_surface_t*>(bitmap.NativeSurface()), {0, 0, 100, 60}));
}

TEST_F(BitmapTest, PicturesSideBySideHaveNoJoint)
{
    for (const double scale : {1.5, 1.3, 0.5625}) {
        screen::SetOutputScale(scale);
        CascadeBitmap icon;
        CascadeBitmap bitmap;
        ASSERT_TRUE(icon.Create(11, 9) && bitmap.Create(100, 20));
        icon.Fill(0xFFFFFFFF);
        for (const CascadeRect& to : {CascadeRect {5, 3, 6, 9}, CascadeRect {11, 3, 34, 9}, CascadeRect {45, 3, 11, 9}}) {
            bitmap.StretchBlit(to, icon);
        }
        auto* const surface = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
        cairo_surface_flush(surface);
        const unsigned char* const row = cairo_image_surface_get_data(surface) + std::ptrdiff_t(7 * scale) * cairo_image_surface_get_stride(surface);
        for (int x = int(6 * scale); x < int(55 * scale); ++x) {
            EXPECT_EQ(0xFF, row[x * 4 + 3]) << x << " at scale " << scale;
        }
    }
}

TEST_F(BitmapTest, EveryDrawingIsInsideTheTouchedArea)
{
    for (const double scale : {1.0, 1.5, 3.0, 0.5625}) {
        screen::SetOutputScale(scale);
        CascadeBitmap icon;
        ASSERT_TRUE(icon.Create(7, 7));
        icon.Fill(0xFFFFFFFF);
        const std::vector<void (*)(CascadeBitmap&, const CascadeBitmap&)> drawings = {
            [](CascadeBitmap& b, const CascadeBitmap&) {
                b.TextOut({13, 5}, "ÅjÿẬ 日本 fi 🎬", CascadeFont("system", 30), 0xFFFFFFFF);
            },
            [](CascadeBitmap& b, const CascadeBitmap&) {
                b.WrappedTextOut({13, 5, 80, 50}, "jumping over", CascadeFont("system", 21), 0xFFFFFFFF);
            },
            [](CascadeBitmap& b, const CascadeBitmap&) {
                b.FillRoundedRect({33, 7, 11, 9}, 3, 0xFFFFFFFF);
            },
            [](CascadeBitmap& b, const CascadeBitmap&) {
                b.StrokeRoundedRect({33, 7, 11, 9}, 3, 1.5, 0xFFFFFFFF);
            },
            [](CascadeBitmap& b, const CascadeBitmap& i) {
                b.Blit({-3, 91}, i);
            },
            [](CascadeBitmap& b, const CascadeBitmap& i) {
                b.StretchBlit({51, 3, 101, 33}, i);
            },
        };
        for (size_t i = 0; i < drawings.size(); ++i) {
            CascadeBitmap bitmap;
            ASSERT_TRUE(bitmap.Create(400, 100));
            drawings[i](bitmap, icon);
            auto* const surface = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
            const CascadeDims device = screen::DeviceDims(surface);
            CascadeRect visible = screen::VisibleArea(surface, {0, 0, device.width, device.height});
            EXPECT_FALSE(visible.IsEmpty()) << i;
            const CascadeRect all = visible;
            visible.Intersect(*screen::TouchedArea(surface));
            EXPECT_EQ(all, visible) << "drawing " << i << " at scale " << scale;
        }
    }
}

TEST_F(BitmapTest, TextOfAnyScriptIsDrawnAndMeasured)
{
    const CascadeFont font("system", 30);
    const CascadeDims line = font.GetTextExtent("Tpgj");
    EXPECT_GT(line.height, 30);
    EXPECT_LT(line.height, 45);
    EXPECT_EQ(0, font.GetTextExtent("").width);
    EXPECT_EQ(line.height, font.GetTextExtent("").height);
    const char* const texts[] = {"Latin", "日本語のファイル", "مرحبا بالعالم", "שלום", "Кино", "🎬🍿", "bad \xFF\xC3 end"};
    for (const char* const text : texts) {
        const CascadeDims extent = font.GetTextExtent(text);
        EXPECT_GT(extent.width, 20) << text;
        EXPECT_EQ(line.height, extent.height) << text;
        EXPECT_EQ(extent, font.GetTextExtent(text));
        CascadeBitmap bitmap;
        ASSERT_TRUE(bitmap.Create(extent.width + 100, 60));
        bitmap.TextOut({50, 5}, text, font, 0xFFFFFFFF);
        EXPECT_TRUE(InkIn(bitmap, {50, 5, extent.width, extent.height})) << text;
        EXPECT_FALSE(InkIn(bitmap, {0, 0, 45, 60})) << text;
        EXPECT_FALSE(InkIn(bitmap, {55 + extent.width, 0, 40, 60})) << text;
    }
    EXPECT_EQ(font.GetTextExtent("a b").width, font.GetTextExtent("a\nb").width);
    EXPECT_GT(font.GetTextExtent("\xFF").width, 10);    // one sign for what is not UTF-8
    EXPECT_GT(font.GetTextExtent("ab").width, CascadeFont("system", 15).GetTextExtent("ab").width);
    EXPECT_EQ("a\xEF\xBF\xBD z\n", screen::DisplayText("a\xFF\tz\n", true));
}

TEST_F(BitmapTest, TextHasTheSameWidthOnEveryOutputAndIsDrawnFiner)
{
    const CascadeFont font("system", 20);
    const int width = font.GetTextExtent("Movie title 7").width;
    screen::SetOutputScale(3);
    EXPECT_EQ(width, CascadeFont("system", 20).GetTextExtent("Movie title 7").width);
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.Create(width + 20, 30));
    bitmap.TextOut({10, 0}, "Movie title 7", font, 0xFFFFFFFF);
    auto* const surface = static_cast<cairo_surface_t*>(bitmap.NativeSurface());
    EXPECT_EQ((CascadeDims {(width + 20) * 3, 90}), screen::DeviceDims(surface));
    const CascadeRect ink = screen::VisibleArea(surface, {0, 0, (width + 20) * 3, 90});
    EXPECT_NEAR(ink.width / 3.0, width, 4);
}

TEST_F(BitmapTest, WrappedTextKeepsToItsBox)
{
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.Create(200, 200));
    const CascadeFont font("system", 20);
    const int line = font.GetTextExtent("x").height + 1;
    bitmap.WrappedTextOut({20, 20, 100, 2 * line}, "one two three four five six seven eight nine ten", font, 0xFFFFFFFF);
    EXPECT_TRUE(InkIn(bitmap, {20, 20, 100, line}));
    EXPECT_TRUE(InkIn(bitmap, {20, 20 + line, 100, line}));
    EXPECT_FALSE(InkIn(bitmap, {0, 20 + 2 * line, 200, 200 - 20 - 2 * line}));
    EXPECT_FALSE(InkIn(bitmap, {121, 0, 79, 200}));
    bitmap.Fill(0);
    bitmap.WrappedTextOut({20, 20, 100, 100}, "a\n\nb", font, 0xFFFFFFFF);
    EXPECT_FALSE(InkIn(bitmap, {20, 20 + line, 100, line - 2}));
    EXPECT_TRUE(InkIn(bitmap, {20, 20 + 2 * line, 100, line}));
}

TEST_F(BitmapTest, LoadersDrawOnThreadsOfTheirOwn)
{
    std::vector<std::thread> loaders;
    for (int i = 0; i < 4; ++i) {
        loaders.emplace_back([] {
            for (int n = 0; n < 20; ++n) {
                CascadeBitmap bitmap;
                ASSERT_TRUE(bitmap.Create(200, 40));
                const CascadeFont font("system", 20 + n);
                bitmap.TextOut({0, 0}, "Loading… 日本", font, 0xFFFFFFFF);
                EXPECT_GT(font.GetTextExtent("Loading").width, 0);
            }
        });
    }
    for (std::thread& loader : loaders) {
        loader.join();
    }
}

TEST_F(BitmapTest, ZonesAreReadWithinTheirBounds)
{
    CascadeSharedMemZone zone;
    ASSERT_TRUE(zone.Open("BitmapTestZone", 4 * 3 * 4 + 8, true));
    auto* const bytes = static_cast<unsigned char*>(zone.MapLock());
    ASSERT_NE(nullptr, bytes);
    for (int i = 0; i < 12; ++i) {
        const unsigned char pixel[4] = {0xFF, 0x80, 0xFF, uint8_t(i)};    // alpha, green, red, blue
        std::copy(pixel, pixel + 4, bytes + 8 + i * 4);
    }
    zone.Unlock();
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.Create(20, 20));
    EXPECT_TRUE(bitmap.BlitFromSharedZone({5, 5}, zone, 8, 4, 3, 32, {1, 1, 2, 2}));
    EXPECT_EQ(0xFF8005FFU, bitmap.GetPixel(5, 5));    // second pixel of the second row
    EXPECT_EQ(0xFF800AFFU, bitmap.GetPixel(6, 6));
    EXPECT_EQ(0U, bitmap.GetPixel(7, 5));
    EXPECT_TRUE(bitmap.BlitFromSharedZone({0, 0}, zone, 8, 4, 3, 32, {2, 2, 100, 100}));    // only what is there
    EXPECT_FALSE(bitmap.BlitFromSharedZone({0, 0}, zone, 9, 4, 3, 32, {0, 0, 4, 3}));    // one byte too few
    EXPECT_FALSE(bitmap.BlitFromSharedZone({0, 0}, zone, ~size_t {0}, 4, 3, 32, {0, 0, 4, 3}));
    EXPECT_FALSE(bitmap.BlitFromSharedZone({0, 0}, zone, 0, 65501, 1, 32, {0, 0, 1, 1}));
    EXPECT_FALSE(bitmap.BlitFromSharedZone({0, 0}, zone, 0, 4, 3, 16, {0, 0, 4, 3}));
    EXPECT_FALSE(bitmap.BlitFromSharedZone({0, 0}, zone, 0, -4, 3, 32, {0, 0, 4, 3}));
    EXPECT_TRUE(bitmap.BlitFromSharedZone({0, 10}, zone, 8, 4, 3, 24, {0, 0, 1, 1}));
    EXPECT_EQ(0xFF80FFFFU, bitmap.GetPixel(0, 10));
    zone.Close();
}

TEST_F(FolderTest, AFinerPictureIsUsedWhereItIsSharper)
{
    const std::string plain = WritePng("icon.png", 10, 10, 0xFF0000FF);
    WritePng("icon@3x.png", 30, 30, 0x0000FFFF);
    CascadeBitmap icon;
    ASSERT_TRUE(icon.CreateFromFile(plain.c_str()));
    EXPECT_EQ((CascadeDims {10, 10}), icon.GetDims());
    CascadeBitmap page;
    ASSERT_TRUE(page.Create(100, 50));
    page.Blit({0, 0}, icon);
    page.StretchBlit({20, 0, 20, 20}, icon);
    EXPECT_EQ(0xFF0000FFU, page.GetPixel(5, 5));
    EXPECT_EQ(0x0000FFFFU, page.GetPixel(30, 10));
    screen::SetOutputScale(3);
    ASSERT_TRUE(page.Create(100, 50));
    page.Blit({0, 0}, icon);
    EXPECT_EQ(0x0000FFFFU, page.GetPixel(5, 5));
    EXPECT_EQ(0U, page.GetPixel(10, 10));
    EXPECT_EQ(0x0000FFFFU, page.GetPixel(9, 9));
    std::filesystem::remove(folder / "icon@3x.png");
    ASSERT_TRUE(icon.CreateFromFile(plain.c_str()));
    page.Blit({0, 0}, icon);
    EXPECT_EQ(0xFF0000FFU, page.GetPixel(5, 5));
}

TEST_F(FolderTest, DamagedAndLyingPicturesAreRefused)
{
    const std::string good = WritePng("good.png", 40, 30, 0x123456FF);
    const std::string bytes = folder.Read("good.png");
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateFromFile(good.c_str()));
    const std::string bad = folder / "bad.png";
    for (size_t length = 0; length < bytes.size(); ++length) {
        folder.Write("bad.png", bytes.substr(0, length));
        const bool created = bitmap.CreateFromFile(bad.c_str());    // what lacks no pixel may pass
        EXPECT_EQ(created, !bitmap.IsEmpty()) << length;
        EXPECT_TRUE(!created || length > bytes.size() / 2) << length;
    }
    std::string large = bytes;
    large[16] = 0;
    large[17] = 1;    // 65,576 wide
    folder.Write("bad.png", large);
    EXPECT_FALSE(bitmap.CreateFromFile(bad.c_str()));
    EXPECT_TRUE(bitmap.IsEmpty());
    EXPECT_FALSE(bitmap.CreateFromFile((folder / "missing.png").c_str()));
    EXPECT_FALSE(bitmap.CreateFromFile(folder.Path().c_str()));
    EXPECT_FALSE(bitmap.CreateFromFile(nullptr));
}

TEST_F(FolderTest, JpegIsReadWholeDamagedOrNotAtAll)
{
    const std::string bytes = RedJpegOf(40, 24);
    const std::string path = folder.Write("picture.jpg", bytes);
    CascadeBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateFromFile(path.c_str()));
    EXPECT_EQ((CascadeDims {40, 24}), bitmap.GetDims());
    const CascadeColor pixel = bitmap.GetPixel(20, 12);
    EXPECT_GT(pixel >> 24, 0xF0U);
    EXPECT_LT(pixel >> 16 & 0xFF, 0x10U);
    EXPECT_EQ(0xFFU, pixel & 0xFF);
    for (size_t at = 0; at < bytes.size(); ++at) {
        folder.Write("picture.jpg", bytes.substr(0, at));
        bitmap.CreateFromFile(path.c_str());
        EXPECT_TRUE(!bitmap.IsEmpty() || at < kJpegSize + 40) << at;    // what has begun is shown
        if (at < kJpegSize || at >= kJpegSize + 4) {    // sizes come below
            std::string flipped = bytes;
            flipped[at] = char(~flipped[at]);
            folder.Write("picture.jpg", flipped);
            bitmap.CreateFromFile(path.c_str());
        }
    }
    const auto opens
        = [&](unsigned width, unsigned height) { return bitmap.CreateFromFile(folder.Write("picture.jpg", RedJpegOf(width, height)).c_str()); };
    EXPECT_FALSE(opens(8, 65501));
    EXPECT_FALSE(opens(65501, 8));
    EXPECT_FALSE(opens(65500, 65500));
    EXPECT_FALSE(opens(40, 0));
    ASSERT_TRUE(opens(65500, 8));    // wider than a surface can be: kept coarser, but measured in full
    EXPECT_EQ((CascadeDims {65500, 8}), bitmap.GetDims());
}
