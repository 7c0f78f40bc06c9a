#include "platform/CascadeMPEGFile.h"

#include <malloc.h>

#include <vector>

#include "host/decoder/AvPointers.h"
#include "host/decoder/StreamKind.h"
#include "host/decoder/StreamScan.h"
#include "platform/CascadeStream.h"

namespace {

constexpr size_t kFirstLook = 128 << 10;

}    // namespace

struct CascadeMPEGFile::Impl {
    StreamType type = kUnsupported;
    std::vector<host::ScannedProgram> programs;
};

CascadeMPEGFile::CascadeMPEGFile() : m_pImpl(std::make_unique<Impl>())
{
    host::PrepareLibrary();
}

CascadeMPEGFile::~CascadeMPEGFile() = default;

bool CascadeMPEGFile::SetStream(CascadeStream* stream)
{
    *m_pImpl = Impl();
    if (stream == nullptr) {
        return false;
    }
    const unsigned long long position = stream->GetPosition();
    std::vector<uint8_t> seen(kFirstLook);
    seen.resize(stream->ReadBytes(seen.size(), seen.data()));
    const bool interrupted = stream->WasInterrupted();
    if (!seen.empty()) {
        m_pImpl->type = host::KindOfStream(seen.data(), seen.size());
    }
    if (m_pImpl->type != kUnsupported) {
        m_pImpl->programs = host::ScanStream(*stream, m_pImpl->type, seen);
    }
    const bool readable = !seen.empty() && !interrupted;
    seen = {};
    malloc_trim(0);    // megabytes that the probing held, in pieces that nothing else would use again
    const bool back = stream->SeekToPosition(position);
    return back && readable;
}

CascadeMPEGFile::StreamType CascadeMPEGFile::GetStreamType() const
{
    return m_pImpl->type;
}

unsigned CascadeMPEGFile::GetNumPrograms() const
{
    return static_cast<unsigned>(m_pImpl->programs.size());
}

unsigned CascadeMPEGFile::GetNumVideoStreams(unsigned program) const
{
    return program < m_pImpl->programs.size() ? static_cast<unsigned>(m_pImpl->programs[program].video.size()) : 0;
}

unsigned CascadeMPEGFile::GetNumAudioStreams(unsigned program) const
{
    return program < m_pImpl->programs.size() ? static_cast<unsigned>(m_pImpl->programs[program].audio.size()) : 0;
}

CascadeMPEGFile::Program CascadeMPEGFile::GetProgramAt(unsigned program) const
{
    return program < m_pImpl->programs.size() ? m_pImpl->programs[program].program : Program();
}

CascadeMPEGFile::VideoStream CascadeMPEGFile::GetVideoStreamAt(unsigned program, unsigned index) const
{
    return index < GetNumVideoStreams(program) ? m_pImpl->programs[program].video[index] : VideoStream();
}

CascadeMPEGFile::AudioStream CascadeMPEGFile::GetAudioStreamAt(unsigned program, unsigned index) const
{
    return index < GetNumAudioStreams(program) ? m_pImpl->programs[program].audio[index] : AudioStream();
}
