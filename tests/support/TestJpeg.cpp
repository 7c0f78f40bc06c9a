// Picture files that are decoded without a decoder: their size is real, their pixels tell where they stand.
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/CascadeJpegFile.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::JpegDecoding;

namespace {

std::mutex g_Mutex;
std::condition_variable g_Changed;
JpegDecoding g_Decoding = JpegDecoding::kRuns;    // guarded by g_Mutex
int g_nHeld = 0;    // guarded by g_Mutex

// A flag wakes nobody, so it is looked at every now and then.
void WaitWhileHeld(const std::atomic<bool>* stop)
{
    std::unique_lock lock(g_Mutex);
    ++g_nHeld;
    const auto stopped = [&] { return stop != nullptr && *stop && g_Decoding != JpegDecoding::kHeldDeaf; };
    while (g_Decoding != JpegDecoding::kRuns && !stopped()) {
        g_Changed.wait_for(lock, std::chrono::milliseconds(1));
    }
    --g_nHeld;
}

}    // namespace

struct CascadeJpegFile::File {
    CascadeDims dims;
};

CascadeJpegFile::CascadeJpegFile() = default;
CascadeJpegFile::~CascadeJpegFile() = default;

bool CascadeJpegFile::Open(const char* path)
{
    const CascadeDims dims = TestInternals::SizeOfPicture(path);
    m_pFile = dims.width > 0 && dims.height > 0 ? std::make_unique<File>(File {dims}) : nullptr;
    return IsOpen();
}

unsigned CascadeJpegFile::GetImageWidth() const
{
    return IsOpen() ? static_cast<unsigned>(m_pFile->dims.width) : 0;
}

unsigned CascadeJpegFile::GetImageHeight() const
{
    return IsOpen() ? static_cast<unsigned>(m_pFile->dims.height) : 0;
}

size_t CascadeJpegFile::GetBitmapDataSize(unsigned width, unsigned height) const
{
    return IsOpen() ? size_t {width} * height * 3 : 0;
}

bool CascadeJpegFile::GetBitmapData(const CascadeRect& rect, unsigned char* data, const std::atomic<bool>* stop)
{
    WaitWhileHeld(stop);
    if (!IsOpen() || rect.IsEmpty() || (stop != nullptr && *stop)) {
        return false;
    }
    for (int y = 0; y < rect.height; ++y) {
        for (int x = 0; x < rect.width; ++x, data += 3) {
            data[0] = static_cast<unsigned char>(x);
            data[1] = static_cast<unsigned char>(y);
            data[2] = 0x55;
        }
    }
    return true;
}

void TestInternals::ResetJpegs()
{
    TestPlatform::SetJpegDecoding(JpegDecoding::kRuns);
}

namespace TestPlatform {

void SetJpegDecoding(JpegDecoding decoding)
{
    const std::lock_guard lock(g_Mutex);
    g_Decoding = decoding;
    g_Changed.notify_all();
}

int JpegsHeld()
{
    const std::lock_guard lock(g_Mutex);
    return g_nHeld;
}

}    // namespace TestPlatform
