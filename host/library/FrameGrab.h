// One picture out of a recording, to know it by: about a tenth into it, not a black one, small, in its display aspect
// ratio. The bytes are hostile: what is read, decoded and kept is bounded.
//
// Units:     pixels are 0x00RRGGBB in the machine's order.
// Errors:    told by the result; nothing is printed.
// Threads:   one at a time; blocks on the disk and takes up to a few seconds of processor time.
// Ownership: borrows the descriptor.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace host {

struct SmallPicture {
    int width = 0;
    int height = 0;
    int stride = 0;    // pixels from one row to the next
    std::vector<uint32_t> pixels;
};

enum class Grab {
    kPicture,
    kNothing,    // no picture can be had of this file as it is
    kGivenUp,    // stopped, a disk that fails or takes too long: another time may be better
};

// `fd` is a regular file of `size` bytes; `stop` is asked often and ends the work. `isImage`: a DVD image, whose
// first part holds no film.
Grab GrabPicture(int fd, int64_t size, bool isImage, const std::function<bool()>& stop, SmallPicture& picture);

// The size in which a picture of that many pixels is shown within 256 x 256, never enlarged. `sampleAspect` is the
// width of a pixel in its heights, 0 when unknown.
void FitPicture(int width, int height, double sampleAspect, int& fittedWidth, int& fittedHeight);

}    // namespace host
