// Windows that paint only what changed look as if they had painted everything.
#include "tests/screen/LoopFixture.h"

#include <cstring>
#include <random>

#include "host/screen/WindowStack.h"
#include "widgets/EListView.h"

using namespace screen;

// The program says where its own graphics are; here the widgets' built-in colours do.
const char* CascadeGraphicsFolder()
{
    return NUVID_BUILD "/none/";
}

namespace {

constexpr CascadeDims kOutputs[] = {{1280, 720}, {1920, 1080}, {3840, 2160}, {720, 576}, {1366, 768}};

struct Pixels {
    CascadeRect box;
    std::vector<unsigned char> bytes;
    friend bool operator==(const Pixels&, const Pixels&) = default;
};

Pixels LayerOfOne()
{
    const Layer& layer = *WindowStack::Instance().Layers().at(0);
    cairo_surface_flush(layer.pixels.get());
    const unsigned char* const data = cairo_image_surface_get_data(layer.pixels.get());
    const size_t size = size_t(cairo_image_surface_get_stride(layer.pixels.get())) * size_t(layer.box.height);
    return {layer.box, {data, data + size}};
}

long Area(const Damage& damage)
{
    long area = 0;
    for (const CascadeRect& rect : damage.Rects()) {
        area += long {rect.width} * rect.height;
    }
    return area;
}

// Grows to the left and above of what it showed first.
class Blot : public CascadeWindow {
public:
    void OnPaint(CascadeBitmap& bitmap) override
    {
        bitmap.Fill(0);
        bitmap.FillRoundedRect(blot, 4, 0xFF8000FF);
        if (vanishes) {
            Vanish();
        }
    }
    CascadeRect blot {60, 60, 20, 20};
    bool vanishes = false;
};

}    // namespace

TEST_F(LoopTest, AListPaintedInPartsLooksAsIfPaintedWhole)
{
    std::mt19937 random(11);
    for (const CascadeDims output : kOutputs) {
        SetOutputScale(ScaleFor(output));
        EListView list;
        list.SetRect({40, 112, 792, 532});
        list.AddColumn("Name", 0);
        list.AddColumn("Size", 130);
        for (int i = 0; i < 80; ++i) {
            const int item = list.AddItem((std::string(size_t(i * 7 % 90), 'w') + (i % 5 == 0 ? "\xE0\xB8\x99\xE0\xB9\x89\xE0\xB8\xB3" : "fj,")).c_str());
            list.SetText(item, 1, i % 3 == 0 ? "12,345 KB" : "7 KB");
            list.SetMark(item, i % 4 == 0);
        }
        list.Materialize();
        list.SetSelectedIndex(0, true);
        WindowStack::Instance().Paint(output);
        for (int step = 0; step < (output.width > 2000 ? 12 : 40); ++step) {
            const int kind = int(random() % 8);
            kind == 0 ? list.Page(1) : list.Move(kind == 1 ? 20 : kind == 2 ? -3 : 1);
            if (kind == 3) {
                list.SetFocused(random() % 2 == 0);
            }
            WindowStack::Instance().Paint(output);
            const Pixels parts = LayerOfOne();
            list.Redraw();
            WindowStack::Instance().Paint(output);
            ASSERT_TRUE(parts == LayerOfOne()) << output.width << " step " << step << " item " << list.GetSelectedIndex();
        }
        list.SetFocused(true);
        WindowStack::Instance().Paint(output);
        list.SetSelectedIndex(list.GetFirstVisible() + 3, true);
        WindowStack::Instance().Paint(output);
        list.Move(1);
        EXPECT_LT(Area(WindowStack::Instance().Paint(output)), long {output.width} * output.height / 10);
    }
    SetOutputScale(1);
}

TEST_F(LoopTest, APartThatWasEmptyBeforeIsKept)
{
    Blot window;
    window.SetRect({0, 0, 100, 100});
    window.Materialize();
    WindowStack::Instance().Paint(kLogicalScreen);
    EXPECT_EQ((CascadeRect {60, 60, 20, 20}), LayerOfOne().box);
    window.blot = {10, 10, 70, 70};
    window.Redraw({5, 5, 80, 80});
    EXPECT_FALSE(WindowStack::Instance().Paint(kLogicalScreen).IsEmpty());
    EXPECT_EQ((CascadeRect {10, 10, 70, 70}), LayerOfOne().box);

    window.Redraw({200, 200, 10, 10});    // no part of it
    EXPECT_TRUE(WindowStack::Instance().Paint(kLogicalScreen).IsEmpty());
    window.vanishes = true;
    window.Redraw({20, 20, 10, 10});
    WindowStack::Instance().Paint(kLogicalScreen);
    EXPECT_TRUE(WindowStack::Instance().Layers().empty());
}
