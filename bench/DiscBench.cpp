// Titles of DVD images beside plain files, and recordings with very many marks.
//
// The player prints to standard output, so results go to standard error.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "bench/BenchFolder.h"
#include "platform/CascadeStream.h"
#include "playback/FileSettings.h"
#include "sources/DVDISOStream.h"
#include "sources/IFOCells.h"
#include "tests/sources/ImageBuilder.h"

namespace {

constexpr size_t kBuffer = 192512;    // one buffer of the decoder
constexpr size_t kTitle = 96 << 20;    // of three files of whole sectors
constexpr int kMarks = 10000;

// A title of three files in an image, and the image's bytes once more as a plain file; both in the cache.
struct Disc {
    Disc()
    {
        InformationFileBuilder information;
        information.cells = {{1, 1, 0, 20000}, {1, 2, 20001, 40000}};
        information.chains = {{{{1, 1}, {1, 2}}, {0}, 0x014530}};
        information.audio = {InformationFileBuilder::Audio(0, "en")};
        ImageBuilder image;
        image.Add("VTS_01_0.IFO;1", information.Build());
        for (const char* part : {"VTS_01_1.VOB;1", "VTS_01_2.VOB;1", "VTS_01_3.VOB;1"}) {
            image.Add(part, std::string(kTitle / 3, 'v'));
        }
        const std::string bytes = image.Build();
        for (const char* file : {"/film.iso", "/film.mpg"}) {
            std::ofstream(BenchFolder() + file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        }
    }
};

CascadeString OnDisc(const char* name)
{
    [[maybe_unused]] static const Disc written;
    return (BenchFolder() + name).c_str();
}

// From `start` to the end, again and again.
void ReadAll(benchmark::State& state, CascadeStream& stream, unsigned long long start)
{
    std::vector<unsigned char> buffer(kBuffer);
    int64_t total = 0;
    bool there = stream.SeekToPosition(start);
    for (auto _ : state) {
        const unsigned long got = stream.ReadBytes(kBuffer, buffer.data());
        there = there && (got == kBuffer || stream.SeekToPosition(start));
        if (!there) {
            state.SkipWithError("no way back");
            break;
        }
        total += static_cast<int64_t>(got);
    }
    state.SetBytesProcessed(total);
}

void FileRead(benchmark::State& state)
{
    CascadeFileStream stream;
    if (!stream.Open(CascadeFile(OnDisc("/film.mpg")))) {
        state.SkipWithError("no file");
        return;
    }
    // Where the title begins in the image: the cache copies what does not begin with a page a little slower.
    ReadAll(state, stream, stream.GetSize() - kTitle);
}
BENCHMARK(FileRead);

void TitleRead(benchmark::State& state)
{
    DVDISOStream stream;
    if (!stream.Open(OnDisc("/film.iso")) || stream.GetSize() != kTitle) {
        state.SkipWithError("no title");
        return;
    }
    ReadAll(state, stream, 0);
}
BENCHMARK(TitleRead);

// Bytes that this process has read so far.
double BytesRead()
{
    std::ifstream file("/proc/self/io");
    std::string name;
    double bytes = 0;
    file >> name >> bytes;
    return bytes;
}

// All that stands between the path and the first byte of the title, chapters and sound tracks included.
void TitleOpen(benchmark::State& state)
{
    const CascadeString path = OnDisc("/film.iso");
    const double before = BytesRead();
    for (auto _ : state) {
        DVDISOStream stream;
        const bool found = DVDISOStream::IsISOFile(path) && stream.Open(path) && stream.GetSize() > 0 && stream.GetIFOStream() != nullptr;
        if (!found || IFOCells(*stream.GetIFOStream()).GetCells().size() != 2) {
            state.SkipWithError("no title");
            break;
        }
    }
    state.counters["KiB_read"] = benchmark::Counter((BytesRead() - before) / 1024, benchmark::Counter::kAvgIterations);
}
BENCHMARK(TitleOpen)->Unit(benchmark::kMicrosecond);

// Ten thousand bookmarks in the worst order: read, put in order, each visited both ways, written.
void ManyBookmarks(benchmark::State& state)
{
    std::string text = "#Nuvid File. Do not modify\n";
    for (int i = kMarks; i > 0; --i) {
        text += "b a recording with a name of some length_" + std::to_string(i % 3) + ".mpg@" + std::to_string(i * 2048LL) + "\n";
    }
    for (auto _ : state) {
        const FileSettings settings = ParseFileSettings(text);
        int sum = 0;
        for (int i = 0; i < settings.bookmarks.Size(); ++i) {
            const tagBookmark* mark = settings.bookmarks.Get(i);
            sum += settings.bookmarks.GetNext(mark) + settings.bookmarks.GetPrev(mark, true);
        }
        benchmark::DoNotOptimize(sum);
        benchmark::DoNotOptimize(FormatFileSettings(settings.chapters, settings.bookmarks, settings.state));
    }
}
BENCHMARK(ManyBookmarks)->Unit(benchmark::kMillisecond);

}    // namespace
