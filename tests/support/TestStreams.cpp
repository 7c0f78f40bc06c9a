// Streams on resources that live in memory, and the scripted classification of streams.
#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/CascadeHTTPStream.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

using TestPlatform::HTTPResource;
using TestPlatform::MPEGScript;

namespace {

std::map<std::string, HTTPResource> g_Resources;
std::function<void()> g_HTTPWait;
std::vector<std::string> g_Opens;

MPEGScript g_Script;
std::vector<unsigned long long> g_ClassifiedAt;

// False: the wait was ended from outside.
bool Wait()
{
    if (g_HTTPWait && !TestInternals::WaitWasEnded()) {
        const bool before = TestInternals::IsWaiting();
        TestInternals::SetWaiting(true);
        g_HTTPWait();
        TestInternals::SetWaiting(before);
    }
    return !TestInternals::WaitWasEnded();
}

}    // namespace

class CascadeHTTPStream::Impl {
public:
    HTTPResource resource;
    unsigned long long position = 0;
    bool open = false;
    bool interrupted = false;
};

CascadeHTTPStream::CascadeHTTPStream()
    : m_pImpl(std::make_unique<Impl>())
{
}

CascadeHTTPStream::~CascadeHTTPStream() = default;

void CascadeHTTPStream::SetConnectTimeout(unsigned long /*microseconds*/) { }

void CascadeHTTPStream::SetReceiveTimeout(unsigned long /*microseconds*/) { }

bool CascadeHTTPStream::Open(const char* url)
{
    *m_pImpl = Impl();
    g_Opens.emplace_back(url == nullptr ? "" : url);
    const auto found = g_Resources.find(g_Opens.back());
    if (!Wait() || found == g_Resources.end()) {
        return false;
    }
    m_pImpl->resource = found->second;
    m_pImpl->open = true;
    return true;
}

unsigned long long CascadeHTTPStream::GetSize()
{
    return m_pImpl->resource.bytes.size() - m_pImpl->position;
}

unsigned long long CascadeHTTPStream::GetPosition()
{
    return m_pImpl->position;
}

bool CascadeHTTPStream::SeekToPosition(unsigned long long position)
{
    if (!m_pImpl->open || position > m_pImpl->resource.bytes.size()) {
        return false;
    }
    m_pImpl->position = position;
    return true;
}

unsigned long CascadeHTTPStream::ReadBytes(unsigned long count, void* buffer)
{
    Impl& impl = *m_pImpl;
    const HTTPResource& resource = impl.resource;
    impl.interrupted = impl.open && (!Wait() || impl.position >= resource.stallAt);
    if (!impl.open || impl.interrupted || impl.position >= resource.bytes.size()) {
        return 0;
    }
    const size_t left = resource.bytes.size() - static_cast<size_t>(impl.position);
    const unsigned long length = std::min({count, resource.longestRead, static_cast<unsigned long>(left)});
    std::memcpy(buffer, resource.bytes.data() + impl.position, length);
    impl.position += length;
    return length;
}

bool CascadeHTTPStream::WasInterrupted() const
{
    return m_pImpl->interrupted;
}

struct CascadeMPEGFile::Impl {
    MPEGScript script;
};

CascadeMPEGFile::CascadeMPEGFile()
    : m_pImpl(std::make_unique<Impl>())
{
    m_pImpl->script.type = kUnsupported;
}

CascadeMPEGFile::~CascadeMPEGFile() = default;

bool CascadeMPEGFile::SetStream(CascadeStream* stream)
{
    if (stream == nullptr) {
        return false;
    }
    g_ClassifiedAt.push_back(stream->GetPosition());
    m_pImpl->script = g_Script;
    return true;
}

CascadeMPEGFile::StreamType CascadeMPEGFile::GetStreamType() const
{
    return m_pImpl->script.type;
}

unsigned CascadeMPEGFile::GetNumPrograms() const
{
    return static_cast<unsigned>(m_pImpl->script.programs.size());
}

unsigned CascadeMPEGFile::GetNumVideoStreams(unsigned program) const
{
    return program < GetNumPrograms() ? static_cast<unsigned>(m_pImpl->script.programs[program].video.size()) : 0;
}

unsigned CascadeMPEGFile::GetNumAudioStreams(unsigned program) const
{
    return program < GetNumPrograms() ? static_cast<unsigned>(m_pImpl->script.programs[program].audio.size()) : 0;
}

CascadeMPEGFile::Program CascadeMPEGFile::GetProgramAt(unsigned program) const
{
    return program < GetNumPrograms() ? m_pImpl->script.programs[program].program : Program();
}

CascadeMPEGFile::VideoStream CascadeMPEGFile::GetVideoStreamAt(unsigned program, unsigned index) const
{
    return index < GetNumVideoStreams(program) ? m_pImpl->script.programs[program].video[index] : VideoStream();
}

CascadeMPEGFile::AudioStream CascadeMPEGFile::GetAudioStreamAt(unsigned program, unsigned index) const
{
    return index < GetNumAudioStreams(program) ? m_pImpl->script.programs[program].audio[index] : AudioStream();
}

void TestInternals::ResetStreams()
{
    g_Resources.clear();
    g_HTTPWait = nullptr;
    g_Opens.clear();
    g_Script = TestPlatform::SimpleProgramStream();
    g_ClassifiedAt.clear();
}

namespace TestPlatform {

void SetHTTPResource(const std::string& url, HTTPResource resource)
{
    g_Resources[url] = std::move(resource);
}

void SetHTTPWait(std::function<void()> whileWaiting)
{
    g_HTTPWait = std::move(whileWaiting);
}

const std::vector<std::string>& HTTPOpens()
{
    return g_Opens;
}

void SetMPEGScript(MPEGScript script)
{
    g_Script = std::move(script);
}

const std::vector<unsigned long long>& ClassifiedAt()
{
    return g_ClassifiedAt;
}

MPEGScript SimpleProgramStream()
{
    MPEGScript script;
    MPEGProgramScript& program = script.programs.emplace_back();
    program.program = {1, 0xE0};
    program.video.push_back({0xE0, 720, 576});
    program.audio.push_back({0xC0, 0, CascadeMPEGFile::kMPEGAudio, ""});
    return script;
}

}    // namespace TestPlatform
