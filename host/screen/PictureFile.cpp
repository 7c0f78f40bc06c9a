#include "host/screen/PictureFile.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

namespace screen {
namespace {

constexpr unsigned kLargestSide = 65500;    // JPEG_MAX_DIMENSION; the same is asked of PNG
constexpr double kJpegPixelsKept = 3840.0 * 2160.0;    // finer than the finest output is of no use
constexpr double kMostPixels = 64e6;    // 256 MB in memory: a picture that needs more is refused

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf leave;
};

[[noreturn]] void OnJpegError(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->leave, 1);
}

void OnJpegMessage(j_common_ptr, int) { }

// Inks to light. Adobe writes them inverted, and so, in practice, does everyone else.
void ConvertCmykRow(const unsigned char* inks, uint32_t* row, unsigned width)
{
    for (unsigned x = 0; x < width; ++x, inks += 4) {
        const unsigned black = inks[3];
        row[x] = 0xFF000000U | (inks[0] * black / 255) << 16 | (inks[1] * black / 255) << 8 | inks[2] * black / 255;
    }
}

// 8 / scale_num with the most pixels that are still wanted.
unsigned JpegScale(unsigned width, unsigned height)
{
    unsigned denominator = 1;
    while (denominator < 8
        && (double(width) * height / denominator / denominator > kJpegPixelsKept
            || std::max(width, height) / denominator > unsigned(kLargestSurface))) {
        denominator *= 2;
    }
    return denominator;
}

// Everything with a destructor lives in the caller: a longjmp passes through here.
bool DecodeJpeg(jpeg_decompress_struct& info, JpegErrors& errors, std::FILE* file, Picture& picture, unsigned char*& inkRow)
{
    if (setjmp(errors.leave) != 0) {
        return picture.surface != nullptr && info.output_scanline > 0;    // what came before the damage is shown
    }
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    if (info.image_width == 0 || info.image_height == 0 || info.image_width > kLargestSide || info.image_height > kLargestSide) {
        return false;
    }
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_BGRA;
    info.scale_num = 1;
    info.scale_denom = JpegScale(info.image_width, info.image_height);
    jpeg_calc_output_dimensions(&info);
    if (double(info.output_width) * info.output_height > kMostPixels) {
        return false;
    }
    jpeg_start_decompress(&info);
    picture.dims = {int(info.image_width), int(info.image_height)};
    picture.surface = CreateSurface(int(info.output_width), int(info.output_height), double(info.output_width) / info.image_width);
    if (picture.surface == nullptr) {
        return false;
    }
    unsigned char* const pixels = cairo_image_surface_get_data(picture.surface.get());
    const size_t stride = size_t(cairo_image_surface_get_stride(picture.surface.get()));
    if (cmyk) {
        inkRow = static_cast<unsigned char*>(std::malloc(size_t(info.output_width) * 4));
        if (inkRow == nullptr) {
            return false;
        }
    }
    while (info.output_scanline < info.output_height) {
        unsigned char* const target = pixels + stride * info.output_scanline;
        JSAMPROW row = cmyk ? inkRow : target;
        jpeg_read_scanlines(&info, &row, 1);
        if (cmyk) {
            ConvertCmykRow(inkRow, reinterpret_cast<uint32_t*>(target), info.output_width);
        }
    }
    jpeg_finish_decompress(&info);
    return true;
}

}    // namespace

Picture LoadJpeg(const char* path)
{
    Picture picture;
    const FilePtr file(std::fopen(path, "rbe"));
    if (file == nullptr) {
        return picture;
    }
    jpeg_decompress_struct info {};
    JpegErrors errors {};
    info.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = OnJpegError;
    errors.manager.emit_message = OnJpegMessage;
    jpeg_create_decompress(&info);
    info.mem->max_memory_to_use = 512L << 20;    // a progressive file wants memory for all of its size
    unsigned char* inkRow = nullptr;
    const bool decoded = DecodeJpeg(info, errors, file.get(), picture, inkRow);
    jpeg_destroy_decompress(&info);
    std::free(inkRow);
    if (!decoded) {
        return {};
    }
    cairo_surface_mark_dirty(picture.surface.get());
    return picture;
}

Picture LoadPng(const char* path)
{
    // ISO/IEC 15948 11.2.2: width and height stand in the header chunk, big-endian, at 16 and 20.
    unsigned char head[24];
    {
        const FilePtr file(std::fopen(path, "rbe"));
        if (file == nullptr || std::fread(head, 1, sizeof head, file.get()) != sizeof head) {
            return {};
        }
    }
    const auto number = [&](int at) { return unsigned(head[at]) << 24 | unsigned(head[at + 1]) << 16 | unsigned(head[at + 2]) << 8 | head[at + 3]; };
    const unsigned width = number(16);
    const unsigned height = number(20);
    if (width == 0 || height == 0 || width > kLargestSide || height > kLargestSide || double(width) * height > kMostPixels) {
        return {};
    }
    Picture picture;
    picture.surface.reset(cairo_image_surface_create_from_png(path));
    if (cairo_surface_status(picture.surface.get()) != CAIRO_STATUS_SUCCESS) {
        return {};
    }
    picture.dims = DeviceDims(picture.surface.get());
    return picture;
}

Picture LoadPicture(const char* path)
{
    unsigned char magic[8] = {};
    {
        const FilePtr file(std::fopen(path, "rbe"));
        if (file == nullptr || std::fread(magic, 1, sizeof magic, file.get()) != sizeof magic) {
            return {};
        }
    }
    constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    if (std::memcmp(magic, kPngSignature, sizeof magic) == 0) {
        return LoadPng(path);
    }
    if (magic[0] == 0xFF && magic[1] == 0xD8) {
        return LoadJpeg(path);
    }
    return {};
}

}    // namespace screen
