// A decoder that records its calls and is fed when the test pulls.
#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "platform/MPEGDecoder.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

constexpr uint32_t kMostBuffers = 32;
constexpr uint32_t kLargestBuffer = 192512;

std::mutex g_Mutex;
std::vector<std::string> g_Calls;    // guarded by g_Mutex
std::map<std::string, bool> g_Results;    // guarded by g_Mutex
std::function<void(uint32_t)> g_OnRest;    // guarded by g_Mutex
int g_nRests = 0;    // guarded by g_Mutex
std::atomic<bool> g_bBeingStopped {false};
bool g_bStarving = false;

struct Ring {
    MPEGDecoder* decoder = nullptr;
    bool open = false;
    bool streaming = false;
    unsigned long bufferSize = 0;
    std::vector<std::vector<unsigned char>> buffers;    // each gets its memory when it is first offered
    size_t next = 0;
};
Ring g_Ring;

bool Record(const char* operation, std::initializer_list<int64_t> arguments)
{
    std::string call = std::string(operation) + "(";
    for (const int64_t argument : arguments) {
        call += (call.back() == '(' ? "" : ",") + std::to_string(argument);
    }
    const std::lock_guard lock(g_Mutex);
    g_Calls.push_back(call + ")");
    const auto result = g_Results.find(operation);
    return result == g_Results.end() || result->second;
}

std::string OperationOf(const std::string& call)
{
    return call.substr(0, call.find('('));
}

}    // namespace

class MPEGDecoder::Impl { };

MPEGDecoder::MPEGDecoder()
{
    g_Ring = {};
    g_Ring.decoder = this;
}

MPEGDecoder::~MPEGDecoder()
{
    if (g_Ring.decoder == this) {
        g_Ring = {};
    }
}

bool MPEGDecoder::NewOpen(uint32_t numBuffers, uint32_t bufferSize, uint32_t clockSource1, uint32_t recoveryMode1, uint32_t clockSource2,
    uint32_t recoveryMode2, bool flag1, bool flag2, bool flag3, bool flag4, uint32_t audioSyncThreshold)
{
    if (!Record("NewOpen",
            {numBuffers, bufferSize, clockSource1, recoveryMode1, clockSource2, recoveryMode2, flag1, flag2, flag3, flag4, audioSyncThreshold})) {
        return false;
    }
    g_Ring = {};
    g_Ring.decoder = this;
    g_Ring.open = true;
    g_Ring.bufferSize = bufferSize == 0 ? kLargestBuffer : bufferSize;
    g_Ring.buffers.resize(numBuffers == 0 ? kMostBuffers : numBuffers);
    return true;
}

bool MPEGDecoder::SelectPIDs(bool bProgramStream, uint32_t nPCRPID, uint32_t nVideoPID, uint32_t nAudioPID, uint32_t nSSID, bool bAC3Audio)
{
    return Record("SelectPIDs", {bProgramStream, nPCRPID, nVideoPID, nAudioPID, nSSID, bAC3Audio});
}

bool MPEGDecoder::ResumeStreaming(bool normalSpeed)
{
    const bool result = Record("ResumeStreaming", {normalSpeed}) && g_Ring.open && g_Ring.decoder == this;
    g_Ring.streaming = g_Ring.streaming || result;
    return result;
}

bool MPEGDecoder::PauseStreaming()
{
    const bool result = Record("PauseStreaming", {});
    if (result && g_Ring.decoder == this) {
        g_Ring.streaming = false;
    }
    return result;
}

bool MPEGDecoder::Close()
{
    const bool result = Record("Close", {});
    if (result && g_Ring.decoder == this) {
        g_Ring.open = false;
        g_Ring.streaming = false;
    }
    return result;
}

bool MPEGDecoder::SetOutputAndScaleRects(const CascadeRect& output, const CascadeRect& scale)
{
    return Record("SetOutputAndScaleRects", {output.left, output.top, output.width, output.height, scale.left, scale.top, scale.width, scale.height});
}

bool MPEGDecoder::IsStarving() const
{
    return g_bStarving;
}

bool MPEGDecoder::IsBeingStopped() const
{
    return g_bBeingStopped;
}

bool MPEGDecoder::RestUnlessStopped(uint32_t milliseconds) const
{
    std::function<void(uint32_t)> onRest;
    {
        const std::lock_guard lock(g_Mutex);
        ++g_nRests;
        onRest = g_OnRest;
    }
    TestPlatform::Advance(milliseconds);
    if (onRest) {
        onRest(milliseconds);
    }
    return g_bBeingStopped;
}

void TestInternals::ResetDecoder()
{
    const std::lock_guard lock(g_Mutex);
    g_Calls.clear();
    g_Results.clear();
    g_OnRest = nullptr;
    g_nRests = 0;
    g_bBeingStopped = false;
    g_bStarving = false;
    g_Ring = {};
}

namespace TestDecoder {

std::vector<std::string> Calls()
{
    const std::lock_guard lock(g_Mutex);
    return g_Calls;
}

void ClearCalls()
{
    const std::lock_guard lock(g_Mutex);
    g_Calls.clear();
}

int Count(const std::string& operation)
{
    const std::vector<std::string> calls = Calls();
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) { return OperationOf(call) == operation; }));
}

std::string Last(const std::string& operation)
{
    const std::vector<std::string> calls = Calls();
    const auto found = std::find_if(calls.rbegin(), calls.rend(), [&](const std::string& call) { return OperationOf(call) == operation; });
    return found == calls.rend() ? "" : *found;
}

void SetResult(const std::string& operation, bool result)
{
    const std::lock_guard lock(g_Mutex);
    g_Results[operation] = result;
}

bool IsOpen()
{
    return g_Ring.open;
}

bool IsStreaming()
{
    return g_Ring.streaming;
}

unsigned NumBuffers()
{
    return static_cast<unsigned>(g_Ring.buffers.size());
}

std::string Pull(unsigned long length)
{
    if (!g_Ring.streaming) {
        ADD_FAILURE() << "a decoder that is not streaming asks for no data";
        return {};
    }
    std::vector<unsigned char>& buffer = g_Ring.buffers[g_Ring.next];
    g_Ring.next = (g_Ring.next + 1) % g_Ring.buffers.size();
    buffer.resize(g_Ring.bufferSize);
    const unsigned long offered = length == 0 ? g_Ring.bufferSize : std::min(length, g_Ring.bufferSize);
    unsigned long filled = g_Ring.decoder->OnFillBuffer(buffer.data(), offered);
    if (filled > offered) {
        ADD_FAILURE() << "a buffer of " << offered << " bytes was said to hold " << filled;
        filled = offered;
    }
    return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(filled)};
}

std::string PullBytes(size_t atLeast)
{
    std::string bytes;
    while (bytes.size() < atLeast) {
        const std::string more = Pull();
        if (more.empty()) {
            break;
        }
        bytes += more;
    }
    return bytes;
}

void Fail()
{
    if (g_Ring.decoder != nullptr) {
        g_Ring.decoder->OnDecoderError();
    }
}

void SetStarving(bool starving)
{
    g_bStarving = starving;
}

void SetBeingStopped(bool stopped)
{
    g_bBeingStopped = stopped;
}

void SetOnRest(std::function<void(uint32_t ms)> onRest)
{
    const std::lock_guard lock(g_Mutex);
    g_OnRest = std::move(onRest);
}

int Rests()
{
    const std::lock_guard lock(g_Mutex);
    return g_nRests;
}

}    // namespace TestDecoder
