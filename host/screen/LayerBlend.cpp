#include "host/screen/LayerBlend.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace screen {
namespace {

// Porter and Duff's "over" for premultiplied colours; two channels at a time, each with a byte of room. A product
// is divided by 255 with rounding.
uint32_t Over(uint32_t from, uint32_t to)
{
    const uint32_t rest = 255 - (from >> 24);
    const auto scaled = [rest](uint32_t pair) {
        const uint32_t product = pair * rest + 0x00800080;
        return (product + (product >> 8 & 0x00FF00FF)) >> 8 & 0x00FF00FF;
    };
    return from + (scaled(to & 0x00FF00FF) | scaled(to >> 8 & 0x00FF00FF) << 8);
}

#if defined(__x86_64__)
// Eight pixels below others; `rest` is what the alpha above them leaves, a byte for each of their channels. A product
// p and a half is divided by 255 as (p + 128) * 257 / 65536: exact for all products of two bytes.
__attribute__((target("avx2"))) inline __m256i Rest(__m256i below, __m256i restLow, __m256i restHigh)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i half = _mm256_set1_epi16(128);
    const __m256i divisor = _mm256_set1_epi16(257);
    const __m256i low = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpacklo_epi8(below, zero), restLow), half);
    const __m256i high = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpackhi_epi8(below, zero), restHigh), half);
    return _mm256_packus_epi16(_mm256_mulhi_epu16(low, divisor), _mm256_mulhi_epu16(high, divisor));
}

// Eight pixels at a time; how many were done.
__attribute__((target("avx2"))) int BlendEights(uint32_t* to, const uint32_t* from, int count)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i opaque = _mm256_set1_epi32(int(0xFF000000U));
    const __m256i alphas = _mm256_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15, 3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
    int done = 0;
    for (; done + kBlendVector <= count; done += kBlendVector) {
        const __m256i source = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + done));
        auto* const at = reinterpret_cast<__m256i*>(to + done);
        if (_mm256_testz_si256(source, source) != 0) {
            continue;
        }
        if (_mm256_testc_si256(source, opaque) != 0) {
            _mm256_storeu_si256(at, source);
            continue;
        }
        const __m256i rest = _mm256_xor_si256(_mm256_shuffle_epi8(source, alphas), _mm256_set1_epi8(-1));
        const __m256i scaled = Rest(_mm256_loadu_si256(at), _mm256_unpacklo_epi8(rest, zero), _mm256_unpackhi_epi8(rest, zero));
        _mm256_storeu_si256(at, _mm256_add_epi8(source, scaled));
    }
    return done;
}

__attribute__((target("avx2"))) int BlendFlatEights(uint32_t* to, uint32_t from, int count)
{
    const __m256i source = _mm256_set1_epi32(int(from));
    const __m256i rest = _mm256_set1_epi16(short(255 - (from >> 24)));
    int done = 0;
    for (; done + kBlendVector <= count; done += kBlendVector) {
        auto* const at = reinterpret_cast<__m256i*>(to + done);
        _mm256_storeu_si256(at, _mm256_add_epi8(source, Rest(_mm256_loadu_si256(at), rest, rest)));
    }
    return done;
}

bool CanEights()
{
    static const bool wide = __builtin_cpu_supports("avx2") != 0;
    return wide;
}
#else
int BlendEights(uint32_t*, const uint32_t*, int)
{
    return 0;
}
int BlendFlatEights(uint32_t*, uint32_t, int)
{
    return 0;
}
bool CanEights()
{
    return false;
}
#endif

// The part of a layer inside `area`, row by row: where the row's first column is on either side, and the columns.
template <typename Row> void ForRows(uint8_t* pixels, int stride, const Layer& layer, CascadeRect area, const Row& row)
{
    area.Intersect(layer.box);
    cairo_surface_t* const surface = layer.pixels.get();
    cairo_surface_flush(surface);
    const unsigned char* const data = cairo_image_surface_get_data(surface);
    const std::ptrdiff_t dataStride = cairo_image_surface_get_stride(surface);
    const int left = area.left - layer.box.left;
    for (int y = area.top; y < area.Bottom(); ++y) {
        row(reinterpret_cast<uint32_t*>(pixels + std::ptrdiff_t(y) * stride) + layer.box.left,
            reinterpret_cast<const uint32_t*>(data + (y - layer.box.top) * dataStride), y - layer.box.top, left, left + area.width);
    }
}

}    // namespace

void BlendRow(uint32_t* to, const uint32_t* from, int count)
{
    for (int x = CanEights() ? BlendEights(to, from, count) : 0; x < count; ++x) {
        to[x] = from[x] == 0 ? to[x] : Over(from[x], to[x]);
    }
}

void BlendFlat(uint32_t* to, uint32_t from, int count)
{
    if (from == 0) {
        return;
    }
    for (int x = CanEights() ? BlendFlatEights(to, from, count) : 0; x < count; ++x) {
        to[x] = Over(from, to[x]);
    }
}

void PrepareLayer(const Layer& layer)
{
    cairo_surface_t* const surface = layer.pixels.get();
    if (layer.prepared && !layer.runs.Found()) {
        cairo_surface_flush(surface);
        layer.runs.Find(cairo_image_surface_get_data(surface), cairo_image_surface_get_stride(surface), {layer.box.width, layer.box.height});
    }
    layer.prepared = true;
}

void BlendLayer(uint8_t* pixels, int stride, const Layer& layer, CascadeRect area)
{
    ForRows(pixels, stride, layer, area, [&layer](uint32_t* to, const uint32_t* from, int y, int left, int right) {
        if (layer.runs.Found()) {
            layer.runs.BlendRow(to, from, y, left, right);
        } else {
            BlendRow(to + left, from + left, right - left);
        }
    });
}

void CopyLayer(uint8_t* pixels, int stride, const Layer& layer, CascadeRect area)
{
    ForRows(pixels, stride, layer, area,
        [](uint32_t* to, const uint32_t* from, int, int left, int right) { std::memcpy(to + left, from + left, size_t(right - left) * sizeof *to); });
}

}    // namespace screen
