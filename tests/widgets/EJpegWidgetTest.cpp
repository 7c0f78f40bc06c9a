#include "widgets/EJpegWidget.h"

#include <chrono>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::Drawing;
using TestPlatform::JpegDecoding;
using TestPlatform::Until;

namespace {

class EJpegWidgetTest : public PlatformTest {
protected:
    EJpegWidgetTest()
    {
        m_Widget.SetRect({900, 100, 160, 160});
        m_Widget.Materialize();
    }
    ~EJpegWidgetTest() override { TestPlatform::SetJpegDecoding(JpegDecoding::kRuns); }
    CascadeString Picture(const std::string& name, CascadeDims dims)
    {
        const std::string path = m_Folder.Write(name, "x");
        TestPlatform::AddPicture(path, dims);
        return CascadeString(path);
    }
    bool Loaded()
    {
        return Until([this] { return m_Widget.IsLoaded(); });
    }
    // Where the picture is painted; all zero: nowhere.
    CascadeRect Painted()
    {
        for (const Drawing& drawing : TestPlatform::Paint(m_Widget)) {
            if (drawing.kind == Drawing::kBlit) {
                return drawing.rect;
            }
        }
        return {};
    }
    bool SaysLoading() { return TestPlatform::FindText(TestPlatform::Paint(m_Widget), "Loading...") != nullptr; }

    TemporaryFolder m_Folder;
    EJpegWidget m_Widget;
};

TEST_F(EJpegWidgetTest, FilesAreToldByTheirExtensionWhenAsked)
{
    const struct {
        const char* name;
        bool withCheck;
    } cases[] = {{"a.jpg", true}, {"b.JPG", true}, {"c.Thm", true}, {"d.jpeg", false}, {"e.png", false}, {"jpg", false}};
    for (const auto& c : cases) {
        m_Folder.Write(c.name, "x");
        EXPECT_EQ(EJpegWidget::IsValidJpegFile((m_Folder / c.name).c_str(), true), c.withCheck) << c.name;
        EXPECT_TRUE(EJpegWidget::IsValidJpegFile((m_Folder / c.name).c_str(), false));
    }
    EXPECT_FALSE(EJpegWidget::IsValidJpegFile((m_Folder / "none.jpg").c_str(), true));
    EXPECT_FALSE(EJpegWidget::IsValidJpegFile("", false));
    EXPECT_FALSE(EJpegWidget::IsValidJpegFile(nullptr, false));
}

TEST_F(EJpegWidgetTest, PicturesAreFittedAndTheirBytesOrdered)
{
    const struct {
        CascadeDims picture;
        CascadeDims box;
        CascadeDims used;
    } cases[] = {{{100, 50}, {200, 200}, {200, 100}}, {{640, 480}, {160, 160}, {160, 120}}, {{50, 100}, {200, 100}, {50, 100}},
        {{1000, 333}, {100, 100}, {100, 33}}, {{7, 7}, {100, 30}, {30, 30}}};
    for (const auto& c : cases) {
        CascadeDims used;
        std::unique_ptr<unsigned char[]> pixels;
        ASSERT_TRUE(EJpegWidget::GetJpegBitmap(Picture("p.jpg", c.picture), c.box, used, pixels, false));
        EXPECT_EQ(used, c.used);
        const size_t last = 4 * (static_cast<size_t>(used.width) * used.height - 1);
        const auto x = static_cast<unsigned char>(used.width - 1);
        const auto y = static_cast<unsigned char>(used.height - 1);
        EXPECT_EQ(std::vector<unsigned char>(&pixels[last], &pixels[last] + 4), (std::vector<unsigned char> {0x55, y, x, 0xFF}));
        ASSERT_TRUE(EJpegWidget::GetJpegBitmap(Picture("p.jpg", c.picture), c.box, used, pixels, true));
        EXPECT_EQ(std::vector<unsigned char>(&pixels[last], &pixels[last] + 4), (std::vector<unsigned char> {0xFF, y, x, 0x55}));
    }
    CascadeDims used;
    std::unique_ptr<unsigned char[]> pixels;
    EXPECT_FALSE(EJpegWidget::GetJpegBitmap("/nowhere.jpg", {10, 10}, used, pixels, true));
    EXPECT_FALSE(EJpegWidget::GetJpegBitmap(Picture("p.jpg", {9, 9}), {0, 10}, used, pixels, true));
    testing::internal::CaptureStdout();
    EXPECT_FALSE(EJpegWidget::GetJpegBitmap(Picture("line.jpg", {4000, 1}), {100, 100}, used, pixels, true));    // less than a pixel high
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to get bitmap data from jpeg.\n");
}

TEST_F(EJpegWidgetTest, ItSaysLoadingUntilThePictureIsThere)
{
    EXPECT_FALSE(SaysLoading());    // no path yet
    TestPlatform::SetJpegDecoding(JpegDecoding::kHeld);
    m_Widget.SetJpegFilePath(Picture("film.jpg", {640, 480}));
    EXPECT_TRUE(Until([] { return TestPlatform::JpegsHeld() == 1; }));
    EXPECT_TRUE(SaysLoading());
    EXPECT_FALSE(TestPlatform::NeedsPaint(m_Widget));
    TestPlatform::SetJpegDecoding(JpegDecoding::kRuns);
    EXPECT_TRUE(Until([this] { return TestPlatform::NeedsPaint(m_Widget); }));
    EXPECT_FALSE(SaysLoading());
    EXPECT_EQ(Painted(), (CascadeRect {900, 120, 160, 120}));
    EXPECT_EQ(Painted(), (CascadeRect {900, 120, 160, 120}));    // kept

    // What is there is not read again; what could not be had is.
    TestPlatform::SetJpegDecoding(JpegDecoding::kHeld);
    m_Widget.SetJpegFilePath(CascadeString(m_Folder / "film.jpg"));
    EXPECT_TRUE(m_Widget.IsLoaded());
    m_Widget.SetJpegFilePath(CascadeString(m_Folder / "later.jpg"));
    EXPECT_TRUE(Loaded());
    EXPECT_EQ(Painted(), (CascadeRect {0, 0, 0, 0}));
    TestPlatform::SetJpegDecoding(JpegDecoding::kRuns);
    m_Widget.SetJpegFilePath(Picture("later.jpg", {160, 160}));
    EXPECT_TRUE(Loaded());
    EXPECT_EQ(Painted(), (CascadeRect {900, 100, 160, 160}));
}

TEST_F(EJpegWidgetTest, TheDefaultImageStandsInForWhatIsMissing)
{
    CascadeBitmap image;
    image.Create(32, 32);
    m_Widget.SetDefaultImage(&image);
    EXPECT_TRUE(Painted().IsEmpty());
    for (const char* const path : {"/nowhere.jpg", ""}) {
        m_Widget.SetJpegFilePath(path);
        EXPECT_TRUE(Loaded());
        EXPECT_EQ(Painted(), m_Widget.GetRect()) << path;
    }
    m_Widget.SetDefaultImage(nullptr);
    EXPECT_TRUE(Painted().IsEmpty());
    m_Widget.SetJpegFilePath(Picture("film.jpg", {100, 100}));
    EXPECT_TRUE(Loaded());
    m_Widget.SetDefaultImage(&image);
    EXPECT_EQ(Painted(), (CascadeRect {900, 100, 160, 160}));
}

TEST_F(EJpegWidgetTest, TheNewestPictureWinsAndNobodyWaitsForAnOldOne)
{
    TestPlatform::SetJpegDecoding(JpegDecoding::kHeld);
    for (int i = 0; i < 200; ++i) {
        m_Widget.SetJpegFilePath(Picture("p" + std::to_string(i) + ".jpg", {100 + i, 100}));
    }
    TestPlatform::SetJpegDecoding(JpegDecoding::kRuns);
    EXPECT_TRUE(Loaded());
    EXPECT_EQ(Painted().height, 160 * 100 / 299);

    // A disk that hangs holds up neither a change of the picture nor the end of the widget.
    TestPlatform::SetJpegDecoding(JpegDecoding::kHeldDeaf);
    auto widget = std::make_unique<EJpegWidget>();
    widget->SetRect({0, 0, 100, 100});
    widget->SetJpegFilePath(Picture("slow.jpg", {100, 100}));
    EXPECT_TRUE(Until([] { return TestPlatform::JpegsHeld() == 1; }));
    const auto begin = std::chrono::steady_clock::now();
    widget->SetJpegFilePath(Picture("next.jpg", {100, 100}));
    EXPECT_FALSE(widget->IsLoaded());
    widget->WaitUntilFinished();
    widget.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(TestPlatform::JpegsHeld(), 1);
    TestPlatform::SetJpegDecoding(JpegDecoding::kRuns);
    EXPECT_TRUE(Until([] { return TestPlatform::JpegsHeld() == 0; }));
}

}    // namespace
