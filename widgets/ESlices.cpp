#include "widgets/ESlices.h"

void ESlices::Draw(CascadeBitmap& target, const CascadeRect& to, const CascadeBitmap& picture, int end)
{
    const CascadeDims dims = picture.GetDims();
    if (to.width == dims.width || to.width <= 2 * end || dims.width <= 2 * end) {
        target.StretchBlit(to, picture);
        return;
    }
    const struct {
        int from;
        int width;
        int left;
        int newWidth;
    } slices[] = {
        {0, end, to.left, end},
        {end, dims.width - 2 * end, to.left + end, to.width - 2 * end},
        {dims.width - end, end, to.Right() - end, end},
    };
    for (const auto& slice : slices) {
        CascadeBitmap part;
        if (part.Create(slice.width, dims.height)) {
            part.Blit({-slice.from, 0}, picture);
            target.StretchBlit({slice.left, to.top, slice.newWidth, to.height}, part);
        }
    }
}
