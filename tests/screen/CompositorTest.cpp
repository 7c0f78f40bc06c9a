#include "tests/screen/LoopFixture.h"

#include <cstdlib>

#include "host/base/HostHooks.h"
#include "host/base/ScreenFeed.h"
#include "host/base/VideoOutput.h"
#include "platform/CascadeScreen.h"
#include "tests/screen/Print.h"

namespace {

using host::Clock;

// Pictures of one colour each, shown when the test says so.
class PlainSource : public host::VideoSource {
public:
    PlainSource() { host::SetVideoSource(this); }
    ~PlainSource() override { host::SetVideoSource(nullptr); }

    void Show(int luma, int cb, int cr, CascadeDims dims = {320, 180}, double aspect = 16.0 / 9.0)
    {
        const int stride = (dims.width + 127) / 64 * 64;
        const int half = stride / 2;
        auto memory = std::make_shared<std::vector<uint8_t>>(size_t(stride) * size_t(dims.height + 2) * 2);
        m_Next = {};
        m_Next.width = dims.width;
        m_Next.height = dims.height;
        m_Next.aspect = aspect;
        uint8_t* const y = memory->data();
        uint8_t* const u = y + stride * dims.height;
        uint8_t* const v = u + half * ((dims.height + 1) / 2);
        std::fill(y, u, uint8_t(luma));
        std::fill(u, v, uint8_t(cb));
        std::fill(v, memory->data() + memory->size(), uint8_t(cr));
        m_Next.plane[0] = y;
        m_Next.plane[1] = u;
        m_Next.plane[2] = v;
        m_Next.stride[0] = stride;
        m_Next.stride[1] = m_Next.stride[2] = half;
        m_Next.keepAlive = memory;
        m_bPending = true;
        m_Due = {};
        host::NotifyVideo();
    }
    void ShowBlack()
    {
        m_Next = {};
        m_bPending = true;
        host::NotifyVideo();
    }
    void DueAt(Clock::time_point due) { m_Due = due; }
    host::VideoFrame& Next() { return m_Next; }

    bool Advance(Clock::time_point now, host::VideoFrame& frame, Clock::time_point& next) override
    {
        next = Clock::time_point::max();
        if (!m_bPending) {
            return false;
        }
        if (now < m_Due) {
            next = m_Due;
            return false;
        }
        frame = m_Next;
        m_bPending = false;
        return true;
    }
    void OnPresented(Clock::time_point when) override
    {
        ++presented;
        lastPresented = when;
    }
    host::VideoPlacement Placement() const override { return {}; }

    int presented = 0;
    Clock::time_point lastPresented;

private:
    host::VideoFrame m_Next;
    Clock::time_point m_Due;
    bool m_bPending = false;
};

struct Shot {
    screen::SurfacePtr surface;
    unsigned At(int x, int y) const
    {
        const CascadeDims dims = screen::DeviceDims(surface.get());
        if (x < 0 || y < 0 || x >= dims.width || y >= dims.height) {
            return 0xDEAD0000;
        }
        const unsigned char* const row
            = cairo_image_surface_get_data(surface.get()) + size_t(y) * size_t(cairo_image_surface_get_stride(surface.get()));
        return reinterpret_cast<const uint32_t*>(row)[x] & 0xFFFFFF;
    }
};

::testing::AssertionResult Like(unsigned pixel, unsigned expected, int tolerance = 2)
{
    for (const int shift : {0, 8, 16}) {
        if (std::abs(int(pixel >> shift & 0xFF) - int(expected >> shift & 0xFF)) > tolerance) {
            char text[64];
            std::snprintf(text, sizeof text, "%06x, expected %06x", pixel, expected);
            return ::testing::AssertionFailure() << text;
        }
    }
    return ::testing::AssertionSuccess();
}

// BT.601, limited range.
constexpr unsigned kGreen = 0x00FF00;
constexpr unsigned kRed = 0xFF0000;
void ShowGreen(PlainSource& source, CascadeDims dims = {320, 180}, double aspect = 16.0 / 9.0)
{
    source.Show(145, 54, 34, dims, aspect);
}
void ShowRed(PlainSource& source)
{
    source.Show(81, 90, 240);
}

struct CompositorTest : LoopTest {
    Shot Composed()
    {
        Settle();
        return {loop.GetScreen().Capture()};
    }
};

}    // namespace

TEST_F(CompositorTest, TheFeedIsTheScreenInSmallAndSaysWhenNothingChanged)
{
    PlainSource source;
    ShowGreen(source, {720, 576}, 4.0 / 3.0);
    RecordingWindow window(app.log, "window", {400, 200, 200, 200});
    window.onPaint = [](CascadeBitmap& bitmap) { bitmap.Fill(0x0000FFFF); };
    window.Materialize();
    Settle();
    const auto feed = [](uint64_t seen) { return host::Hooks().screenFeed(seen); };
    const std::shared_ptr<const host::FeedPicture> picture = feed(0);
    ASSERT_NE(nullptr, picture);
    ASSERT_EQ(640, picture->width);
    ASSERT_EQ(360, picture->height);
    ASSERT_EQ(640U * 360U * 4U, picture->pixels.size());
    const auto at = [&picture](size_t x, size_t y) {
        const uint8_t* const pixel = picture->pixels.data() + (y * 640 + x) * 4;
        return unsigned(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
    };
    EXPECT_TRUE(Like(at(320, 180), kGreen));
    EXPECT_TRUE(Like(at(40, 180), 0));    // the border beside a 4:3 picture
    EXPECT_TRUE(Like(at(205, 105), 0x0000FF));
    EXPECT_EQ(nullptr, feed(picture->number));
    ShowRed(source);
    Settle();
    const auto later = feed(picture->number);
    ASSERT_NE(nullptr, later);
    EXPECT_GT(later->number, picture->number);

    Start(1024, 768);
    Settle();
    const auto narrow = feed(0);
    ASSERT_NE(nullptr, narrow);
    EXPECT_EQ(480, narrow->width);
    EXPECT_EQ(360, narrow->height);
}

TEST_F(CompositorTest, RangeAndMatrixAreMinded)
{
    PlainSource source;
    struct Case {
        bool fullRange;
        bool bt709;
        unsigned grey;
        unsigned colour;    // of Y 145, Cb 54, Cr 34
    };
    for (const Case& c : {Case {false, false, 0x828282, 0x00FF02}, Case {true, false, 0x808080, 0x0DEE0E}, Case {false, true, 0x828282, 0x00D800}}) {
        source.Show(128, 128, 128);
        source.Next().fullRange = c.fullRange;
        source.Next().bt709 = c.bt709;
        EXPECT_TRUE(Like(Composed().At(640, 360), c.grey)) << c.fullRange << c.bt709;
        source.Show(145, 54, 34);
        source.Next().fullRange = c.fullRange;
        source.Next().bt709 = c.bt709;
        EXPECT_TRUE(Like(Composed().At(640, 360), c.colour)) << c.fullRange << c.bt709;
    }
}

TEST_F(CompositorTest, AWindowThatChangesOrLeavesIsDrawnFromTheHeldPicture)
{
    PlainSource source;
    ShowGreen(source);
    RecordingWindow window(app.log, "window");
    CascadeColor color = 0xFF0000FF;
    window.onPaint = [&](CascadeBitmap& bitmap) { bitmap.FillRect({110, 110, 20, 20}, color); };
    window.Materialize();
    EXPECT_TRUE(Like(Composed().At(120, 120), kRed));
    EXPECT_TRUE(Like(Composed().At(140, 140), kGreen));
    color = 0x0000FFFF;
    window.Redraw();
    EXPECT_TRUE(Like(Composed().At(120, 120), 0x0000FF));
    window.Vanish();
    EXPECT_TRUE(Like(Composed().At(120, 120), kGreen));
    EXPECT_EQ(1, source.presented);
}

TEST_F(CompositorTest, AnEmptyPictureIsBlackAndASourceThatGoesLeavesItsPictureForAWhile)
{
    {
        PlainSource source;
        ShowGreen(source);
        EXPECT_TRUE(Like(Composed().At(640, 360), kGreen));
        source.ShowBlack();
        EXPECT_TRUE(Like(Composed().At(640, 360), 0));
        ShowRed(source);
        EXPECT_TRUE(Like(Composed().At(640, 360), kRed));
    }
    const auto gone = Clock::now();
    EXPECT_TRUE(Like(Composed().At(640, 360), kRed));
    {
        PlainSource next;    // has nothing to show yet
        ASSERT_TRUE(TurnUntil([&] { return Clock::now() > gone + std::chrono::milliseconds(600); }));
        EXPECT_TRUE(Like(Composed().At(640, 360), kRed));
    }
    ASSERT_TRUE(TurnUntil([&] { return Like(Composed().At(640, 360), 0); }, std::chrono::seconds(3)));
}

TEST_F(CompositorTest, APictureIsShownWhenItIsDue)
{
    PlainSource source;
    ShowGreen(source);
    const auto due = Clock::now() + std::chrono::milliseconds(60);
    source.DueAt(due);
    loop.TurnOnce(due + std::chrono::milliseconds(500));    // is woken by the picture's time, not by ours
    ASSERT_TRUE(TurnUntil([&] { return source.presented == 1; }));
    EXPECT_LT(source.lastPresented, due + std::chrono::milliseconds(400));
    EXPECT_GE(source.lastPresented, due - std::chrono::milliseconds(26));    // asked for early by what drawing takes
}

TEST_F(CompositorTest, AWindowThatChangesWaitsForAPictureThatIsNear)
{
    PlainSource source;
    RecordingWindow window(app.log, "window");
    window.onPaint = [](CascadeBitmap& bitmap) { bitmap.Fill(0x0000FFFF); };
    window.Materialize();
    const auto show = [&source](std::chrono::milliseconds later) {
        ShowGreen(source);
        source.DueAt(Clock::now() + later);
    };
    const auto presented = [&source](int count) { return [&source, count] { return source.presented == count; }; };
    const auto number = [] { return host::Hooks().screenFeed(0)->number; };
    show({});
    ASSERT_TRUE(TurnUntil(presented(1)));
    int count = 1;
    uint64_t composed = 0;
    for (int attempt = 0; attempt < 10 && composed != 1; ++attempt) {    // a busy machine may take too long between two pictures
        show({});
        ASSERT_TRUE(TurnUntil(presented(++count)));
        const uint64_t before = number();
        show(std::chrono::milliseconds(40));
        window.Redraw();
        ASSERT_TRUE(TurnUntil(presented(++count)));
        composed = number() - before;
    }
    EXPECT_EQ(composed, 1U);    // both with one

    const uint64_t before = number();
    show(std::chrono::hours(1));
    window.Redraw();
    ASSERT_TRUE(TurnUntil([&] { return number() == before + 1; }));    // that one is not near
    EXPECT_EQ(source.presented, count);
}

TEST_F(CompositorTest, ResolutionsSwitchTheOutputAndEverythingFollows)
{
    PlainSource source;
    ShowGreen(source);
    RecordingWindow window(app.log, "window", {0, 0, 1280, 720});
    window.onPaint = [](CascadeBitmap& bitmap) { bitmap.FillRect({100, 100, 1, 1}, 0xFF0000FF); };
    window.Materialize();
    ASSERT_EQ(6U, CascadeScreen::GetNumSupportedOutputResolutions());
    EXPECT_EQ(0U, CascadeScreen::GetCurrentOutputResolution());
    EXPECT_FALSE(CascadeScreen::SetOutputResolution(6));
    CascadeDims dims;
    EXPECT_FALSE(CascadeScreen::GetSupportedOutputResolutionAt(6, dims));

    ASSERT_TRUE(CascadeScreen::SetOutputResolution(3));
    EXPECT_EQ(3U, CascadeScreen::GetCurrentOutputResolution());
    EXPECT_EQ((CascadeDims {3840, 2160}), host::OutputDims());
    CascadeRect full;
    ASSERT_TRUE(CascadeScreen::GetOutputResolutionScaleRect(3, full));
    EXPECT_EQ((CascadeRect {0, 0, 3840, 2160}), full);
    const Shot fine = Composed();
    EXPECT_TRUE(Like(fine.At(3830, 2150), kGreen));
    EXPECT_TRUE(Like(fine.At(300, 300), kRed));    // one logical pixel is nine here
    EXPECT_TRUE(Like(fine.At(302, 302), kRed));
    EXPECT_TRUE(Like(fine.At(303, 303), kGreen));

    // The logical screen lies in the middle of an output of another shape.
    ASSERT_TRUE(CascadeScreen::SetOutputResolution(4));
    const Shot narrow = Composed();
    EXPECT_EQ((CascadeDims {720, 576}), screen::DeviceDims(narrow.surface.get()));
    EXPECT_TRUE(Like(narrow.At(360, 80), 0));
    EXPECT_TRUE(Like(narrow.At(360, 290), kGreen));
    EXPECT_EQ(CascadeScreen::GetDims(), (CascadeDims {1280, 720}));
    EXPECT_EQ(2, window.paints);    // once for each output that it was seen on
}

TEST_F(CompositorTest, OutputsOfAnySizeAreDrawnToTheirEdges)
{
    for (const CascadeDims dims : {CascadeDims {1366, 768}, {333, 211}, {17, 1000}, {1, 1}}) {
        Start(dims.width, dims.height);
        PlainSource source;
        source.Show(145, 54, 34, {320, 180}, double(dims.width) / dims.height);
        const Shot shot = Composed();
        ASSERT_EQ(dims, screen::DeviceDims(shot.surface.get()));
        for (const CascadePoint corner : {CascadePoint {0, 0}, {dims.width - 1, 0}, {0, dims.height - 1}, {dims.width - 1, dims.height - 1}}) {
            EXPECT_TRUE(Like(shot.At(corner.x, corner.y), kGreen, 3)) << dims.width << " at " << corner.x << "," << corner.y;
        }
    }
}

