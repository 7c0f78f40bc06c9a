#include "host/remote/server/JpegEncoder.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

#include "host/base/ScreenFeed.h"

namespace host {
namespace {

constexpr int kQuality = 72;

struct Errors {
    jpeg_error_mgr manager;
    std::jmp_buf leave;
};

void Leave(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<Errors*>(info->err)->leave, 1);
}

}    // namespace

struct JpegEncoder::State {
    jpeg_compress_struct info {};
    Errors errors {};
    bool isMade = false;
    unsigned char* bytes = nullptr;    // the library's, of the picture at work
    unsigned long size = 0;

    bool Run(const FeedPicture& picture);
};

JpegEncoder::JpegEncoder()
    : m_pState(std::make_unique<State>())
{
    m_pState->info.err = jpeg_std_error(&m_pState->errors.manager);
    m_pState->errors.manager.error_exit = Leave;
    m_pState->errors.manager.output_message = [](j_common_ptr) {};
}

JpegEncoder::~JpegEncoder()
{
    if (m_pState->isMade) {
        jpeg_destroy_compress(&m_pState->info);
    }
}

// Nothing with a destructor lives here: the library leaves by a jump.
bool JpegEncoder::State::Run(const FeedPicture& picture)
{
    if (setjmp(errors.leave) != 0) {
        if (isMade) {
            jpeg_abort_compress(&info);
        }
        return false;
    }
    if (!isMade) {
        jpeg_create_compress(&info);
        isMade = true;
    }
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    info.input_components = 4;
    info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, kQuality, TRUE);
    info.dct_method = JDCT_IFAST;
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPLE*>(picture.pixels.data()) + static_cast<size_t>(info.next_scanline) * static_cast<size_t>(picture.width) * 4;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    return true;
}

std::string JpegEncoder::Encode(const FeedPicture& picture)
{
    m_pState->bytes = nullptr;
    m_pState->size = 0;
    const bool encoded = m_pState->Run(picture);
    std::string file = encoded ? std::string(reinterpret_cast<const char*>(m_pState->bytes), m_pState->size) : std::string();
    std::free(m_pState->bytes);
    return file;
}

}    // namespace host
