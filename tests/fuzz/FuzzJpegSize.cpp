// A picture file: what its header says of its size decides whether it is decoded, and both survive anything.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/CascadeJpegFile.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const int handle = memfd_create("picture", MFD_CLOEXEC);
    Require(handle >= 0 && pwrite(handle, data, size, 0) == static_cast<ssize_t>(size));
    CascadeJpegFile file;
    if (file.Open(("/proc/self/fd/" + std::to_string(handle)).c_str())) {
        const unsigned width = file.GetImageWidth();
        const unsigned height = file.GetImageHeight();
        Require(width > 0 && height > 0 && width <= 16384 && height <= 16384 && uint64_t {width} * height <= 100000000);
        // Large ones take the engine too long; that they are refused or not is what counts.
        std::vector<unsigned char> pixels(24 * 18 * 3);
        if (uint64_t {width} * height < 1000000 && file.GetBitmapDataSize(24, 18) == pixels.size()) {
            file.GetBitmapData({0, 0, 24, 18}, pixels.data());
        }
    }
    close(handle);
    return 0;
}
