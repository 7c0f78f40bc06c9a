// What the surface presenter leaves standing after many small changes is what drawing everything anew gives.
#include "host/screen/LayerBlend.h"
#include "host/screen/SurfacePresenter.h"

#include <cmath>
#include <algorithm>
#include <cstring>
#include <functional>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace screen;

class WatchedTarget : public MemoryTarget {
public:
    using MemoryTarget::MemoryTarget;
    bool Show(const std::vector<CascadeRect>& areas) override
    {
        shown = areas;
        ++shows;
        return true;
    }
    std::vector<CascadeRect> shown;
    int shows = 0;
};

struct PresenterTest : ::testing::Test {
    PresenterTest()
    {
        auto owned = std::make_unique<WatchedTarget>(CascadeDims {400, 240});
        target = owned.get();
        presenter = std::make_unique<SurfacePresenter>(std::move(owned));
        scene.frame = &frame;
        scene.layers = &layers;
    }

    void MakeFrame(unsigned seed)
    {
        constexpr int kStride = 256;
        auto memory = std::make_shared<std::vector<uint8_t>>(kStride * 128 * 2);
        std::mt19937 random(seed);
        for (uint8_t& value : *memory) {
            value = uint8_t(16 + random() % 220);
        }
        frame = {};
        frame.width = 160;
        frame.height = 120;
        frame.plane[0] = memory->data();
        frame.plane[1] = memory->data() + kStride * 128;
        frame.plane[2] = frame.plane[1] + kStride / 2 * 64;
        frame.stride[0] = kStride;
        frame.stride[1] = frame.stride[2] = kStride / 2;
        frame.keepAlive = memory;
        scene.geometry = {{0, 0, 160, 120}, {40, 0, 320, 240}};
    }
    std::unique_ptr<Layer> MakeLayer(const CascadeRect& box, double alpha)
    {
        auto layer = std::make_unique<Layer>();
        layer->box = box;
        layer->pixels = CreateSurface(box.width, box.height, 1);
        const CairoPtr cairo(cairo_create(layer->pixels.get()));
        cairo_set_source_rgba(cairo.get(), 1, 0.5, 0.2, alpha);
        cairo_paint(cairo.get());
        return layer;
    }
    std::vector<uint8_t> Pixels()
    {
        SurfaceTarget::Pixels pixels;
        target->Lock(pixels);
        return {pixels.data, pixels.data + size_t(pixels.stride) * size_t(pixels.dims.height)};
    }

    WatchedTarget* target = nullptr;
    std::unique_ptr<SurfacePresenter> presenter;
    host::VideoFrame frame;
    std::vector<const Layer*> layers;
    Scene scene;
};

TEST_F(PresenterTest, StretchesOfOneColourAreLaidOverLikeAnyOthers)
{
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        const int width = 1 + int(random() % 300);
        std::vector<uint32_t> from;
        while (int(from.size()) < width) {
            const uint32_t alpha = random() % 3 == 0 ? 0 : random() % 256;
            const bool flat = random() % 2 == 0;
            for (size_t end = std::min(size_t(width), from.size() + 1 + random() % 90); from.size() < end;) {
                from.push_back(flat && !from.empty() ? from.back() : alpha << 24 | uint32_t(random() % (alpha + 1)));
            }
        }
        LayerRuns runs;
        runs.Find(reinterpret_cast<const uint8_t*>(from.data()), 0, {width, 2});
        ASSERT_TRUE(runs.Found());
        std::vector<uint32_t> to(size_t(width) + 8);
        std::generate(to.begin(), to.end(), std::ref(random));
        std::vector<uint32_t> expected = to;
        const int left = int(random() % unsigned(width));
        const int right = left + int(random() % unsigned(width - left + 1));
        BlendRow(expected.data() + left, from.data() + left, right - left);
        runs.BlendRow(to.data(), from.data(), round % 2, left, right);
        for (size_t x = 0; x < to.size(); ++x) {
            ASSERT_EQ(to[x] & 0xFFFFFF, expected[x] & 0xFFFFFF) << round << " " << x;
        }
    }
}

}    // namespace

TEST_F(PresenterTest, ManySmallChangesEndAsOneLargeOne)
{
    MakeFrame(1);
    Changes changes;
    changes.everything = true;
    ASSERT_TRUE(presenter->Present(scene, changes));
    std::mt19937 random(7);
    std::vector<std::unique_ptr<Layer>> owned;
    for (int step = 0; step < 60; ++step) {
        changes = {};
        changes.picture = random() % 3 == 0;
        if (changes.picture) {
            MakeFrame(unsigned(step));
        }
        if (!owned.empty() && random() % 2 == 0) {
            changes.overlay.Unite(owned.front()->box);
            owned.erase(owned.begin());
        }
        if (owned.size() < 4 && random() % 2 == 0) {
            owned.push_back(
                MakeLayer({int(random() % 380), int(random() % 200), 1 + int(random() % 200), 1 + int(random() % 100)}, 0.2 * double(random() % 6)));
            changes.overlay.Unite(owned.back()->box);
        }
        layers.clear();
        for (const auto& layer : owned) {
            layers.push_back(layer.get());
        }
        ASSERT_TRUE(presenter->Present(scene, changes));
        const std::vector<uint8_t> standing = Pixels();
        ASSERT_NE(nullptr, presenter->Capture(scene));
        ASSERT_EQ(standing, Pixels()) << "step " << step;
    }
}

TEST_F(PresenterTest, OnlyWhatChangedIsShown)
{
    MakeFrame(1);
    Changes everything;
    everything.everything = true;
    presenter->Present(scene, everything);
    const auto band = MakeLayer({0, 0, 30, 30}, 1);
    layers = {band.get()};
    Changes overlay;
    overlay.overlay = band->box;
    presenter->Present(scene, overlay);
    EXPECT_EQ((std::vector<CascadeRect> {{0, 0, 30, 30}}), target->shown);    // beside the picture: that is left alone
    Changes picture;
    picture.picture = true;
    presenter->Present(scene, picture);
    EXPECT_EQ((std::vector<CascadeRect> {scene.geometry.destination}), target->shown);
    const int shows = target->shows;
    presenter->Present(scene, {});
    EXPECT_EQ(shows, target->shows);
}

TEST_F(PresenterTest, ALayerIsLaidOverWhateverItsWidth)
{
    std::mt19937 random(3);
    for (int count = 0; count < 40; ++count) {
        std::vector<uint32_t> from(size_t(count), 0);
        for (int x = 0; x < count; ++x) {
            const uint32_t alphas[] = {0, 255, 0, 255, uint32_t(random() % 256)};
            const uint32_t alpha = alphas[x / 8 % 2 == 0 ? random() % 5 : size_t(count) % 5];    // whole runs of one kind too
            from[size_t(x)] = alpha << 24;
            for (const int shift : {0, 8, 16}) {
                from[size_t(x)] |= uint32_t(random() % (alpha + 1)) << shift;
            }
        }
        std::vector<uint32_t> below(size_t(count) + 1);
        std::generate(below.begin(), below.end(), std::ref(random));
        std::vector<uint32_t> to = below;
        BlendRow(to.data(), from.data(), count);
        for (int x = 0; x < count; ++x) {
            for (const int shift : {0, 8, 16}) {
                const auto channel = [shift](uint32_t pixel) { return int(pixel >> shift & 0xFF); };
                const double rest = 255 - int(from[size_t(x)] >> 24);
                EXPECT_EQ(channel(to[size_t(x)]), channel(from[size_t(x)]) + int(std::lround(channel(below[size_t(x)]) * rest / 255))) << count << " " << x;
            }
        }
        EXPECT_EQ(to.back(), below.back());
    }
}
