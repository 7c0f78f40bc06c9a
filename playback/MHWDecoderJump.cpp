#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "playback/SkipMath.h"

namespace {

// Files that grow or shrink under a jump could send it to and fro for ever.
constexpr int kMostJumpRounds = 1000;

long long CurrentFileSize(const FeedSource& source)
{
    struct stat status { };
    const char* const current = source.m_FileList.GetCurrent();
    if (dynamic_cast<CascadeFileStream*>(source.m_pStream.get()) != nullptr && CascadeFSObject::IsAwake(current) && stat(current, &status) == 0) {
        std::printf("Using stat for file size: ");
        return status.st_size;
    }
    return static_cast<long long>(source.m_pStream->GetPosition() + source.m_pStream->GetSize());
}

}    // namespace

struct MHWDecoder::JumpState {
    FeedSource& source;
    long long target;
    int failedSeeks;
};

bool MHWDecoder::Jump(int distance)
{
    FeedSource& source = m_Source.Current();
    if (!source.m_pStream && !OpenJumpFile(source, source.m_FileList.GetCurrent())) {
        return true;
    }
    const long long way = m_bProgramStream ? TruncateToPack(distance) : distance;
    JumpState jump {source, static_cast<long long>(source.m_pStream->GetPosition()) + way, 0};
    int rounds = 0;
    while (JumpRound(jump)) {
        if (++rounds == kMostJumpRounds) {
            std::printf("Jump does not come to rest. Giving up.\n");
            break;
        }
    }
    std::fflush(stdout);
    return true;
}

// One look at the file that the jump stands in; true when another one is needed.
bool MHWDecoder::JumpRound(JumpState& jump)
{
    FeedSource& source = jump.source;
    const long long size = CurrentFileSize(source);
    std::printf("CurFileSize = %lld\n", size);
    if (size <= 0) {
        std::printf("File size error. Not jumping.\n");
        return false;
    }
    if (jump.target >= size) {
        const auto streamSize = static_cast<long long>(source.m_pStream->GetSize());
        const char* next = source.m_FileList.GetNextFile();
        if (next == nullptr) {
            std::printf("No next file. Seeking to the end of current file\n");
            jump.target = JumpTargetAtEnd(size);
            return true;
        }
        std::printf("Going to next file\n");
        jump.target -= streamSize;
        return OpenJumpFile(source, next);
    }
    if (jump.target < 0) {
        const char* prev = source.m_FileList.GetPrevFile();
        if (prev == nullptr) {
            std::printf("No previous file. Starting from the begining\n");
            jump.target = 0;
            return true;
        }
        std::printf("Going to prev file\n");
        if (!OpenJumpFile(source, prev)) {
            return false;
        }
        jump.target += static_cast<long long>(source.m_pStream->GetSize());
        return true;
    }
    if (m_bProgramStream) {
        jump.target = RoundDownToPack(jump.target);
    }
    if (source.m_pStream->SeekToPosition(static_cast<unsigned long long>(jump.target))) {
        return false;
    }
    std::printf("Try %d: Seek failed!\n", jump.failedSeeks);
    if (++jump.failedSeeks == 2) {
        return false;
    }
    std::printf("Trying reopening the file\n");
    return OpenJumpFile(source, source.m_FileList.GetCurrent());
}

bool MHWDecoder::OpenJumpFile(FeedSource& source, const char* path)
{
    source.m_pStream.reset();
    source.m_pStream.reset(OpenStream(path));
    if (!source.m_pStream) {
        std::printf("Failed to open %s\n", path);
        std::fflush(stdout);
    }
    return source.m_pStream != nullptr;
}
