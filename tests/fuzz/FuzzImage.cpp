// A DVD image: the input is what stands from its volume descriptor (byte 32768) on.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "sources/DVDISOStream.h"
#include "sources/IFOCells.h"
#include "tests/fuzz/Require.h"

namespace {

constexpr off_t kDescriptor = 32768;

// The same bytes must come in one read and in pieces.
void ReadTwice(CascadeStream& stream, unsigned long long position)
{
    char whole[5000];
    char pieces[sizeof whole];
    Require(stream.SeekToPosition(position));
    const unsigned long count = stream.ReadBytes(sizeof whole, whole);
    Require(count <= stream.GetSize() - position && stream.GetPosition() == position + count);
    Require(stream.SeekToPosition(position));
    unsigned long done = 0;
    for (unsigned long got = 1; got > 0 && done < count; done += got) {
        got = stream.ReadBytes(std::min<unsigned long>(1234, count - done), pieces + done);
    }
    Require(done == count && std::equal(whole, whole + count, pieces));
}

void Use(const CascadeString& path)
{
    DVDISOStream stream;
    if (!stream.Open(path)) {
        return;
    }
    CascadeTemplateArray<FileInfo*> found;
    const CascadeString largest = stream.GetTitleSets(1, &found);
    Require(found.IsEmpty() || !largest.IsEmpty());
    for (FileInfo* info : found) {
        stream.SetVTSRoot(info->path.From(path.GetLength() + 1));
        const unsigned long long size = stream.GetSize();
        Require(size > 1 && !stream.SeekToPosition(size + 1));
        for (const unsigned long long position : {0ULL, size / 2, size}) {
            ReadTwice(stream, position);
        }
        if (CascadeStream* const information = stream.GetIFOStream()) {
            const IFOCells cells(*information);
            ReadTwice(*information, 0);
        }
        delete info;
    }
}

}    // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const int file = memfd_create("image", MFD_CLOEXEC);
    Require(file >= 0 && pwrite(file, data, size, kDescriptor) == static_cast<ssize_t>(size));
    Use(CascadeString::Format("/proc/self/fd/%d", file));
    close(file);
    return 0;
}
