#include "platform/CascadeJpegFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>

#include "host/screen/Canvas.h"

using namespace screen;

namespace {

constexpr off_t kLargestFile = 64L << 20;
constexpr unsigned kLargestSide = 16384;
constexpr double kMostJpegPixels = 100e6;
constexpr double kMostPngPixels = 25e6;    // all of it is in memory at once
constexpr long kMostMemory = 256L << 20;    // for the coefficients of a progressive picture
constexpr int kMostScans = 200;    // each goes over the whole picture; ordinary ones have ten
constexpr size_t kBytesPerPixel = 3;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

struct JpegDecoder {
    jpeg_decompress_struct info {};
    jpeg_error_mgr errors {};
    jpeg_progress_mgr progress {};
    std::jmp_buf leave;
    const std::atomic<bool>* stop = nullptr;
    unsigned char* inkRow = nullptr;    // malloc's, as a longjmp passes by

    JpegDecoder();
    ~JpegDecoder();
};

[[noreturn]] void Leave(j_common_ptr info)
{
    std::longjmp(static_cast<JpegDecoder*>(info->client_data)->leave, 1);
}

void OnMessage(j_common_ptr, int) { }

// Called all through the decoding.
void OnProgress(j_common_ptr common)
{
    const auto* const decoder = static_cast<const JpegDecoder*>(common->client_data);
    if ((decoder->stop != nullptr && *decoder->stop) || decoder->info.input_scan_number > kMostScans) {
        Leave(common);
    }
}

JpegDecoder::JpegDecoder()
{
    info.err = jpeg_std_error(&errors);
    errors.error_exit = Leave;
    errors.emit_message = OnMessage;
    info.client_data = this;
    jpeg_create_decompress(&info);
    progress.progress_monitor = OnProgress;
    info.progress = &progress;
    info.mem->max_memory_to_use = kMostMemory;
}

JpegDecoder::~JpegDecoder()
{
    jpeg_destroy_decompress(&info);
    std::free(inkRow);
}

bool IsAllowed(double width, double height, double mostPixels)
{
    return width >= 1 && height >= 1 && width <= kLargestSide && height <= kLargestSide && width * height <= mostPixels;
}

bool ReadJpegHeader(JpegDecoder& decoder, std::FILE* file)
{
    std::rewind(file);
    if (setjmp(decoder.leave) != 0) {
        return false;
    }
    jpeg_stdio_src(&decoder.info, file);
    jpeg_read_header(&decoder.info, TRUE);
    return IsAllowed(decoder.info.image_width, decoder.info.image_height, kMostJpegPixels);
}

// The smallest of the library's eighths that is not smaller than what is wanted.
unsigned Eighths(const jpeg_decompress_struct& info, const CascadeDims& wanted)
{
    unsigned eighths = 1;
    while (eighths < 8 && (info.image_width * eighths / 8 < unsigned(wanted.width) || info.image_height * eighths / 8 < unsigned(wanted.height))) {
        ++eighths;
    }
    return eighths;
}

// Inks to light. Adobe writes them inverted, and so, in practice, does everyone else.
void ConvertCmykRow(const unsigned char* inks, uint32_t* row, unsigned width)
{
    for (unsigned x = 0; x < width; ++x, inks += 4) {
        const unsigned black = inks[3];
        row[x] = 0xFF000000U | (inks[0] * black / 255) << 16 | (inks[1] * black / 255) << 8 | inks[2] * black / 255;
    }
}

// Everything with a destructor lives in the caller: a longjmp passes through here. What came before the damage counts.
bool DecodeRows(JpegDecoder& decoder, const CascadeDims& wanted, SurfacePtr& surface)
{
    jpeg_decompress_struct& info = decoder.info;
    if (setjmp(decoder.leave) != 0) {
        return surface != nullptr && info.output_scanline > 0;
    }
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_BGRA;
    info.scale_num = Eighths(info, wanted);
    info.scale_denom = 8;
    jpeg_start_decompress(&info);
    surface = CreateSurface(int(info.output_width), int(info.output_height), 1);
    decoder.inkRow = static_cast<unsigned char*>(std::malloc(size_t(info.output_width) * 4));
    if (surface == nullptr || decoder.inkRow == nullptr) {
        return false;
    }
    unsigned char* const pixels = cairo_image_surface_get_data(surface.get());
    const size_t stride = size_t(cairo_image_surface_get_stride(surface.get()));
    while (info.output_scanline < info.output_height) {
        unsigned char* const target = pixels + stride * info.output_scanline;
        JSAMPROW row = cmyk ? decoder.inkRow : target;
        jpeg_read_scanlines(&info, &row, 1);
        if (cmyk) {
            ConvertCmykRow(decoder.inkRow, reinterpret_cast<uint32_t*>(target), info.output_width);
        }
    }
    return true;
}

SurfacePtr DecodeJpeg(std::FILE* file, const CascadeDims& wanted, const std::atomic<bool>* stop)
{
    JpegDecoder decoder;
    decoder.stop = stop;
    SurfacePtr surface;
    if (!ReadJpegHeader(decoder, file) || !DecodeRows(decoder, wanted, surface)) {
        return nullptr;
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// ---- PNG

constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};

// ISO/IEC 15948 11.2.2: width and height stand in the header chunk, big-endian, at 16 and 20.
bool ReadPngHeader(std::FILE* file, unsigned& width, unsigned& height)
{
    unsigned char head[24];
    std::rewind(file);
    if (std::fread(head, 1, sizeof head, file) != sizeof head || std::memcmp(head, kPngSignature, sizeof kPngSignature) != 0) {
        return false;
    }
    const auto number = [&](int at) { return unsigned(head[at]) << 24 | unsigned(head[at + 1]) << 16 | unsigned(head[at + 2]) << 8 | head[at + 3]; };
    width = number(16);
    height = number(20);
    return IsAllowed(width, height, kMostPngPixels);
}

struct PngInput {
    std::FILE* file;
    const std::atomic<bool>* stop;
};

cairo_status_t ReadPng(void* closure, unsigned char* data, unsigned length)
{
    const auto* const input = static_cast<const PngInput*>(closure);
    const bool stopped = input->stop != nullptr && *input->stop;
    return !stopped && std::fread(data, 1, length, input->file) == length ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_READ_ERROR;
}

SurfacePtr DecodePng(std::FILE* file, const std::atomic<bool>* stop)
{
    unsigned width = 0;
    unsigned height = 0;
    if (!ReadPngHeader(file, width, height)) {
        return nullptr;
    }
    std::rewind(file);
    PngInput input {file, stop};
    SurfacePtr surface(cairo_image_surface_create_from_png_stream(ReadPng, &input));
    return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

// ---- to the size and bytes that were asked for

bool Resample(cairo_surface_t* from, const CascadeDims& dims, unsigned char* data)
{
    const SurfacePtr scaled = CreateSurface(dims.width, dims.height, 1);
    if (scaled == nullptr) {
        return false;
    }
    const CascadeDims source = DeviceDims(from);
    {
        const CairoPtr cairo(cairo_create(scaled.get()));
        cairo_scale(cairo.get(), double(dims.width) / source.width, double(dims.height) / source.height);
        cairo_set_source_surface(cairo.get(), from, 0, 0);
        cairo_pattern_set_extend(cairo_get_source(cairo.get()), CAIRO_EXTEND_PAD);
        cairo_pattern_set_filter(cairo_get_source(cairo.get()), CAIRO_FILTER_GOOD);
        cairo_paint(cairo.get());
    }
    cairo_surface_flush(scaled.get());
    const unsigned char* const pixels = cairo_image_surface_get_data(scaled.get());
    const size_t stride = size_t(cairo_image_surface_get_stride(scaled.get()));
    for (int y = 0; y < dims.height; ++y) {
        for (int x = 0; x < dims.width; ++x, data += kBytesPerPixel) {
            uint32_t pixel = 0;
            std::memcpy(&pixel, pixels + stride * size_t(y) + size_t(x) * 4, sizeof pixel);
            data[0] = static_cast<unsigned char>(pixel >> 16);
            data[1] = static_cast<unsigned char>(pixel >> 8);
            data[2] = static_cast<unsigned char>(pixel);
        }
    }
    return true;
}

// Never waits for the other end of a pipe.
FilePtr OpenRegular(const char* path)
{
    const int handle = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status = {};
    if (handle < 0 || fstat(handle, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kLargestFile) {
        if (handle >= 0) {
            close(handle);
        }
        return nullptr;
    }
    FilePtr file(fdopen(handle, "rb"));
    if (file == nullptr) {
        close(handle);
    }
    return file;
}

}    // namespace

struct CascadeJpegFile::File {
    FilePtr handle;
    bool isPng = false;
    unsigned width = 0;
    unsigned height = 0;
};

CascadeJpegFile::CascadeJpegFile() = default;
CascadeJpegFile::~CascadeJpegFile() = default;

bool CascadeJpegFile::Open(const char* path)
{
    Close();
    auto file = std::make_unique<File>();
    file->handle = OpenRegular(path);
    if (file->handle == nullptr) {
        return false;
    }
    file->isPng = ReadPngHeader(file->handle.get(), file->width, file->height);
    if (!file->isPng) {
        JpegDecoder decoder;
        if (!ReadJpegHeader(decoder, file->handle.get())) {
            return false;
        }
        file->width = decoder.info.image_width;
        file->height = decoder.info.image_height;
    }
    m_pFile = std::move(file);
    return true;
}

void CascadeJpegFile::Close()
{
    m_pFile.reset();
}

unsigned CascadeJpegFile::GetImageWidth() const
{
    return IsOpen() ? m_pFile->width : 0;
}

unsigned CascadeJpegFile::GetImageHeight() const
{
    return IsOpen() ? m_pFile->height : 0;
}

size_t CascadeJpegFile::GetBitmapDataSize(unsigned width, unsigned height) const
{
    return IsOpen() && IsAllowed(width, height, kMostPngPixels) ? size_t(width) * height * kBytesPerPixel : 0;
}

bool CascadeJpegFile::GetBitmapData(const CascadeRect& rect, unsigned char* data, const std::atomic<bool>* stop)
{
    const CascadeDims dims {rect.width, rect.height};
    if (rect.left != 0 || rect.top != 0 || rect.IsEmpty() || GetBitmapDataSize(unsigned(dims.width), unsigned(dims.height)) == 0) {
        return false;
    }
    std::FILE* const file = m_pFile->handle.get();
    const SurfacePtr picture = m_pFile->isPng ? DecodePng(file, stop) : DecodeJpeg(file, dims, stop);
    const bool stopped = stop != nullptr && *stop;
    return picture != nullptr && !stopped && Resample(picture.get(), dims, data);
}
