// The timestamp repair: the first byte of the input says how long a buffer is, the rest is the stream.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "playback/PackParser.h"
#include "tests/fuzz/Require.h"

namespace {

class Owner : public PackParserOwner {
public:
    bool RestInWalk() override { return true; }
};

// Changed bytes lie where a clock reference or a stamp may stand: behind a start code, and nowhere else.
void RequireStampsOnly(const std::vector<unsigned char>& before, const std::vector<unsigned char>& after)
{
    constexpr size_t kFirst = 4, kLast = 18;    // bytes behind the start code's first
    for (size_t i = 0; i < before.size(); ++i) {
        bool inStamp = before[i] == after[i];
        for (size_t back = kFirst; !inStamp && back <= std::min(kLast, i); ++back) {
            const unsigned char* const code = &after[i - back];
            inStamp = code[0] == 0 && code[1] == 0 && code[2] == 1;
        }
        Require(inStamp);
    }
}

}    // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const size_t length = (size_t {data[0]} + 1) * 64;
    PackParser parser;
    Owner owner;
    for (size_t at = 1; at < size; at += length) {
        const std::vector<unsigned char> before(data + at, data + std::min(size, at + length));
        std::vector<unsigned char> after = before;
        parser.Parse(after.data(), static_cast<int>(after.size()), owner);
        RequireStampsOnly(before, after);
    }
    return 0;
}
