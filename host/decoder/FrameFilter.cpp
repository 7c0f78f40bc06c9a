#include "host/decoder/FrameFilter.h"

#include <cstdio>
#include <string>

#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace host {
namespace {

constexpr const char* kModule = "nuvid-filter.so";

std::string ProgramFolder()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string whole(path, length > 0 ? static_cast<size_t>(length) : 0);
    return whole.substr(0, whole.rfind('/') + 1);
}

using Maker = decltype(&NuvidMakePictureFilter);

// Beside the program, or one folder above it, where the build has it for its other programs. Never
// unloaded: its library does not expect that.
Maker LoadModule()
{
    const std::string folder = ProgramFolder();
    std::string error;
    for (const std::string& path : {folder + kModule, folder + "../" + kModule}) {
        if (void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            return reinterpret_cast<Maker>(dlsym(module, "NuvidMakePictureFilter"));
        }
        const char* const text = dlerror();
        error = error.empty() && text != nullptr ? text : error;
    }
    std::fprintf(stderr, "Pictures are not deinterlaced: %s\n", error.c_str());
    return nullptr;
}

}    // namespace

PictureFilter* FrameFilter::Module()
{
    if (!m_bModuleAsked) {
        m_bModuleAsked = true;
        static const Maker make = LoadModule();
        m_pFilter.reset(make == nullptr ? nullptr : make());
    }
    return m_pFilter.get();
}

void FrameFilter::Reset()
{
    if (m_pFilter) {
        m_pFilter->Reset();
    }
    m_bWantsFields = false;
}

int FrameFilter::PicturesOf(const AVFrame& frame)
{
    const Deinterlace policy = CurrentHostOptions().deinterlace;
    const bool split = policy == Deinterlace::kOn || (policy != Deinterlace::kOff && frame.interlaced_frame != 0);
    return split && Module() != nullptr ? 2 : 1;
}

void FrameFilter::Filter(FramePtr frame, int64_t duration, std::vector<FramePtr>& out)
{
    const Deinterlace policy = CurrentHostOptions().deinterlace;
    const bool every = policy == Deinterlace::kOn;
    m_bWantsFields = m_bWantsFields || frame->interlaced_frame != 0 || every;
    const bool wanted = m_bWantsFields && policy != Deinterlace::kOff;
    const bool takes = ScreenTakes(frame->format);
    PictureFilter* const filter = wanted || !takes ? Module() : nullptr;
    frame->pkt_duration = duration / PicturesOf(*frame);    // what the filter makes inherits this
    if (filter == nullptr || !filter->Filter(frame, wanted, every, out)) {
        if (takes) {
            out.push_back(std::move(frame));
        }
    }
}

void FrameFilter::Drain(std::vector<FramePtr>& out)
{
    if (m_pFilter) {
        m_pFilter->Drain(out);
    }
}

}    // namespace host
