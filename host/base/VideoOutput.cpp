#include "host/base/VideoOutput.h"

#include <mutex>

namespace host {
namespace {

VideoSource* g_pSource = nullptr;    // the user-interface thread's
std::mutex g_DimsMutex;
CascadeDims g_OutputDims {1280, 720};    // guarded by g_DimsMutex

}    // namespace

void SetVideoSource(VideoSource* source)
{
    g_pSource = source;
    NotifyVideo();
}

VideoSource* CurrentVideoSource()
{
    return g_pSource;
}

void NotifyVideo()
{
    WakeUi();    // the loop asks the source on every turn
}

CascadeDims OutputDims()
{
    const std::lock_guard lock(g_DimsMutex);
    return g_OutputDims;
}

void SetOutputDims(CascadeDims dims)
{
    const std::lock_guard lock(g_DimsMutex);
    g_OutputDims = dims;
}

}    // namespace host
