#include "host/screen/VideoGeometry.h"

#include <cmath>

namespace screen {
namespace {

struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    double Width() const { return right - left; }
    double Height() const { return bottom - top; }
    bool IsEmpty() const { return Width() <= 0 || Height() <= 0; }
};

Box Common(const Box& a, const Box& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

// From nominal to real pixels; an empty rectangle is the whole output.
Box OnOutput(const CascadeRect& rect, const VideoLayout& layout)
{
    if (rect.IsEmpty() || layout.nominal.width <= 0 || layout.nominal.height <= 0) {
        return {0, 0, double(layout.output.width), double(layout.output.height)};
    }
    const double x = double(layout.output.width) / layout.nominal.width;
    const double y = double(layout.output.height) / layout.nominal.height;
    return {rect.left * x, rect.top * y, rect.Right() * x, rect.Bottom() * y};
}

// The largest box of that shape in the middle of `room`. A bar thinner than a pixel is not worth having.
Box Fit(double aspect, const Box& room)
{
    double width = std::min(room.Width(), room.Height() * aspect);
    double height = std::min(room.Height(), room.Width() / aspect);
    if (room.Width() - width < 1) {
        width = room.Width();
    }
    if (room.Height() - height < 1) {
        height = room.Height();
    }
    const double left = room.left + (room.Width() - width) / 2;
    const double top = room.top + (room.Height() - height) / 2;
    return {left, top, left + width, top + height};
}

// Chroma is shared by pairs of pixels and lines, so a part begins on even ones.
void CutEven(double from, double to, int size, int& start, int& length)
{
    start = std::clamp(int(std::lround(from / 2)) * 2, 0, std::max(0, (size - 1) / 2 * 2));
    const int end = to > size - 1 ? size : std::clamp(int(std::lround(to / 2)) * 2, 0, size);
    length = std::clamp(end - start, std::min(2, size - start), size - start);
}

}    // namespace

VideoGeometry LayOutVideo(const VideoLayout& layout)
{
    const CascadeDims& picture = layout.picture;
    if (picture.width <= 0 || picture.height <= 0 || layout.output.width <= 0 || layout.output.height <= 0) {
        return {};
    }
    const bool usable = std::isfinite(layout.aspect) && layout.aspect > 0;
    const double aspect = usable ? layout.aspect : double(picture.width) / picture.height;
    const Box full {0, 0, double(layout.output.width), double(layout.output.height)};
    const Box laidOut = layout.stretch ? full : Fit(aspect, full);
    const Box kept = Common(OnOutput(layout.placement.output, layout), laidOut);
    const Box room = OnOutput(layout.placement.scale, layout);
    if (kept.IsEmpty() || room.IsEmpty()) {
        return {};
    }
    const Box target = layout.stretch ? room : Fit(kept.Width() / kept.Height(), room);
    const Box seen = Common(target, full);    // a rectangle may reach beyond the output
    if (seen.IsEmpty()) {
        return {};
    }
    // Back through both steps: from the screen to the laid out picture, from there to its pixels.
    const auto back = [](double value, double from, double size, double keptFrom, double keptSize, double laidFrom, double laidSize, int pixels) {
        return (keptFrom + (value - from) / size * keptSize - laidFrom) / laidSize * pixels;
    };
    const auto x = [&](double value) {
        return back(value, target.left, target.Width(), kept.left, kept.Width(), laidOut.left, laidOut.Width(), picture.width);
    };
    const auto y = [&](double value) {
        return back(value, target.top, target.Height(), kept.top, kept.Height(), laidOut.top, laidOut.Height(), picture.height);
    };

    VideoGeometry geometry;
    CutEven(x(seen.left), x(seen.right), picture.width, geometry.source.left, geometry.source.width);
    CutEven(y(seen.top), y(seen.bottom), picture.height, geometry.source.top, geometry.source.height);
    const int left = int(std::lround(seen.left));
    const int top = int(std::lround(seen.top));
    geometry.destination = {left, top, std::max(1, int(std::lround(seen.right)) - left), std::max(1, int(std::lround(seen.bottom)) - top)};
    geometry.destination.Intersect({0, 0, layout.output.width, layout.output.height});
    return geometry;
}

}    // namespace screen
