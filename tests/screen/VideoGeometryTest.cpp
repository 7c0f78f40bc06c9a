#include "host/screen/VideoGeometry.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/screen/Print.h"

namespace {

using screen::LayOutVideo;
using screen::VideoGeometry;
using screen::VideoLayout;

VideoLayout Layout(CascadeDims picture, double aspect, CascadeDims output = {1280, 720})
{
    VideoLayout layout;
    layout.picture = picture;
    layout.aspect = aspect;
    layout.nominal = output;
    layout.output = output;
    return layout;
}

constexpr double kWide = 16.0 / 9.0;
constexpr double kNarrow = 4.0 / 3.0;
constexpr CascadeRect kScreen {0, 0, 1280, 720};

}    // namespace

TEST(VideoGeometry, PicturesAndTheirKeptPartsGoWhereTheyBelong)
{
    const struct {
        VideoLayout layout;
        host::VideoPlacement placement;
        bool stretch;
        CascadeRect source;
        CascadeRect destination;
    } cases[] = {
        // A whole picture keeps its shape; no bar of less than a pixel: 1.7777 is 16:9.
        {Layout({720, 576}, kWide), {}, false, {0, 0, 720, 576}, kScreen},
        {Layout({720, 576}, kNarrow), {}, false, {0, 0, 720, 576}, {160, 0, 960, 720}},
        {Layout({720, 576}, 2.35), {}, false, {0, 0, 720, 576}, {0, 88, 1280, 544}},
        {Layout({1920, 1080}, kWide, {640, 480}), {}, false, {0, 0, 1920, 1080}, {0, 60, 640, 360}},
        {Layout({720, 576}, 1.7777), {}, false, {0, 0, 720, 576}, kScreen},
        {Layout({719, 575}, kWide), {}, false, {0, 0, 719, 575}, kScreen},
        {Layout({1, 1}, kWide), {}, false, {0, 0, 1, 1}, kScreen},
        // Without a usable ratio the pixels are square.
        {Layout({640, 480}, 0), {}, false, {0, 0, 640, 480}, {160, 0, 960, 720}},
        {Layout({640, 480}, std::nan("")), {}, false, {0, 0, 640, 480}, {160, 0, 960, 720}},
        // A wide film inside a 4:3 picture: the bars go, the film fills the width and nobody gets fat.
        {Layout({720, 576}, kNarrow), {{0, 93, 1280, 534}, kScreen}, false, {0, 74, 720, 428}, {0, 4, 1280, 712}},
        // The scale rectangle is the room; stretching fills it.
        {Layout({1920, 1080}, kWide), {{}, {0, 86, 1280, 548}}, false, {0, 0, 1920, 1080}, {153, 86, 974, 548}},
        {Layout({720, 576}, kNarrow), {{0, 93, 1280, 534}, kScreen}, true, {0, 74, 720, 428}, kScreen},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        VideoLayout layout = cases[i].layout;
        layout.placement = cases[i].placement;
        layout.stretch = cases[i].stretch;
        EXPECT_EQ(cases[i].source, LayOutVideo(layout).source) << "case " << i;
        EXPECT_EQ(cases[i].destination, LayOutVideo(layout).destination) << "case " << i;
    }
}

TEST(VideoGeometry, RectanglesFollowAWindowOfAnotherSize)
{
    VideoLayout layout = Layout({1920, 1080}, kWide);
    layout.nominal = {1920, 1080};
    layout.output = {640, 360};
    layout.placement = {{0, 0, 1920, 1080}, {480, 270, 960, 540}};
    EXPECT_EQ((CascadeRect {160, 90, 320, 180}), LayOutVideo(layout).destination);
}

TEST(VideoGeometry, WhatReachesBeyondTheOutputIsCutOff)
{
    VideoLayout layout = Layout({1280, 720}, kWide);
    layout.placement.scale = {-640, -360, 1280, 720};
    const VideoGeometry geometry = LayOutVideo(layout);
    EXPECT_EQ((CascadeRect {0, 0, 640, 360}), geometry.destination);
    EXPECT_EQ((CascadeRect {640, 360, 640, 360}), geometry.source);
    layout.placement.scale = {2000, 0, 100, 100};
    EXPECT_TRUE(LayOutVideo(layout).source.IsEmpty());
    layout.placement = {{5000, 0, 10, 10}, kScreen};
    EXPECT_TRUE(LayOutVideo(layout).source.IsEmpty());
    EXPECT_TRUE(LayOutVideo(Layout({0, 0}, kWide)).source.IsEmpty());
    EXPECT_TRUE(LayOutVideo(Layout({720, 576}, kWide, {0, 0})).source.IsEmpty());
}

// Whatever rectangles come, the source lies in the picture and the destination on the output.
TEST(VideoGeometry, NothingIsEverOutOfBounds)
{
    uint32_t seed = 1;
    const auto number = [&](int from, int to) {
        seed = seed * 1664525 + 1013904223;
        return from + int(seed >> 8) % (to - from + 1);
    };
    for (int i = 0; i < 20000; ++i) {
        VideoLayout layout = Layout({number(1, 2000), number(1, 1200)}, number(1, 400) / 100.0, {number(1, 4000), number(1, 2200)});
        layout.stretch = number(0, 1) == 1;
        layout.nominal = {number(1, 4000), number(1, 2200)};
        layout.placement = {{number(-500, 2000), number(-500, 2000), number(0, 3000), number(0, 3000)},
            {number(-500, 2000), number(-500, 2000), number(0, 3000), number(0, 3000)}};
        const VideoGeometry geometry = LayOutVideo(layout);
        if (geometry.source.IsEmpty()) {
            continue;
        }
        const CascadeRect& from = geometry.source;
        const CascadeRect& to = geometry.destination;
        ASSERT_TRUE(from.left >= 0 && from.top >= 0 && from.Right() <= layout.picture.width && from.Bottom() <= layout.picture.height) << i;
        ASSERT_TRUE(to.left >= 0 && to.top >= 0 && to.Right() <= layout.output.width && to.Bottom() <= layout.output.height) << i;
        ASSERT_EQ(0, from.left % 2 + from.top % 2) << i;
    }
}
