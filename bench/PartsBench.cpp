// The feed, the timestamp repair and the snapshot of a folder, each beside the least that the same work can
// cost: the ratio of two neighbours is what counts, not the time.
//
// The player prints to standard output, so results go to standard error.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/BenchFolder.h"
#include "platform/CascadeStream.h"
#include "platform/CascadeTime.h"
#include "playback/MHWDecoder.h"
#include "playback/PackParser.h"
#include "playback/PlaybackGlobals.h"
#include "sources/FileList.h"
#include "tests/support/TestPlatform.h"

namespace {

constexpr size_t kBuffer = 192512;    // one buffer of the decoder
constexpr size_t kPack = 2048;

// Packs of 2048 bytes with a clock reference and a packet with both stamps (ISO/IEC 13818-1 2.5.3.3, 2.4.3.7).
std::vector<unsigned char> ProgramStream(size_t bytes)
{
    std::vector<unsigned char> stream(bytes / kPack * kPack);
    uint64_t clock = 90000;
    for (size_t at = 0; at < stream.size(); at += kPack, clock += 300) {
        unsigned char* p = &stream[at];
        const unsigned char pack[14] = {0, 0, 1, 0xBA, static_cast<unsigned char>(0x44 | (clock >> 27 & 0x18) | (clock >> 28 & 3)), static_cast<unsigned char>(clock >> 20),
            static_cast<unsigned char>((clock >> 12 & 0xF8) | 4 | (clock >> 13 & 3)), static_cast<unsigned char>(clock >> 5), static_cast<unsigned char>((clock << 3 & 0xF8) | 4), 1, 0x01, 0x89,
            0xC3, 0xF8};
        memcpy(p, pack, sizeof pack);
        const size_t length = kPack - sizeof pack - 6;
        const unsigned char packet[19] = {0, 0, 1, 0xE0, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length), 0x80, 0xC0, 10,
            static_cast<unsigned char>(0x31 | (clock >> 29 & 0xE)), static_cast<unsigned char>(clock >> 22), static_cast<unsigned char>((clock >> 14 & 0xFE) | 1),
            static_cast<unsigned char>(clock >> 7), static_cast<unsigned char>((clock << 1 & 0xFE) | 1), static_cast<unsigned char>(0x11 | (clock >> 29 & 0xE)),
            static_cast<unsigned char>(clock >> 22), static_cast<unsigned char>((clock >> 14 & 0xFE) | 1), static_cast<unsigned char>(clock >> 7),
            static_cast<unsigned char>((clock << 1 & 0xFE) | 1)};
        memcpy(p + sizeof pack, packet, sizeof packet);
        memset(p + sizeof pack + sizeof packet, 0x55, kPack - sizeof pack - sizeof packet);
    }
    return stream;
}

constexpr size_t kFilm = 256 << 20;
constexpr size_t kRing = 8;    // buffers, as the player asks for

// The first of so many files that are one film.
std::string Film(int parts)
{
    const std::string folder = BenchFolder() + "/film" + std::to_string(parts);
    const std::string first = folder + "/film1.mpg";
    if (!std::filesystem::exists(first)) {
        std::filesystem::create_directory(folder);
        const std::vector<unsigned char> bytes = ProgramStream(kFilm);
        const size_t each = bytes.size() / static_cast<size_t>(parts);
        for (int n = 0; n < parts; ++n) {
            std::ofstream(folder + "/film" + std::to_string(n + 1) + ".mpg", std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data() + static_cast<size_t>(n) * each), static_cast<std::streamsize>(each));
        }
    }
    return first;
}

std::vector<std::vector<unsigned char>> Ring()
{
    return std::vector<std::vector<unsigned char>>(kRing, std::vector<unsigned char>(kBuffer));
}

void PlainRead(benchmark::State& state)
{
    const std::string film = Film(1);
    auto ring = Ring();
    int64_t total = 0;
    for (auto _ : state) {
        const int file = open(film.c_str(), O_RDONLY | O_CLOEXEC);
        ssize_t got = 0;
        for (size_t n = 0; (got = read(file, ring[n % kRing].data(), kBuffer)) > 0; ++n) {
            total += got;
        }
        close(file);
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(PlainRead)->Unit(benchmark::kMillisecond);

// The whole film, opening included.
void Feed(benchmark::State& state)
{
    const std::string film = Film(static_cast<int>(state.range(1)));
    TestPlatform::Reset();
    g_bTSFix = state.range(0) != 0;
    auto ring = Ring();
    int64_t total = 0;
    for (auto _ : state) {
        g_LastUITick_ms = CascadeTime::GetUptimeMilliseconds();
        InitPSParser();
        auto stream = std::make_unique<CascadeFileStream>();
        if (!stream->Open(CascadeFile(film.c_str()))) {
            state.SkipWithError("no file");
            return;
        }
        MHWDecoder feeder;
        feeder.SetFiles(film.c_str());
        feeder.SetStream(stream.release());
        feeder.m_bReopened = false;
        feeder.m_bProgramStream = true;
        int64_t fed = 0;
        for (size_t n = 0; !feeder.m_bEOF; ++n) {
            fed += static_cast<int64_t>(feeder.OnFillBuffer(ring[n % kRing].data(), kBuffer));
        }
        if (fed != static_cast<int64_t>(kFilm)) {
            state.SkipWithError("bytes are missing");
            return;
        }
        total += fed;
    }
    g_bTSFix = false;
    state.SetBytesProcessed(total);
}
BENCHMARK(Feed)->ArgNames({"repair", "parts"})->Args({0, 1})->Args({0, 4})->Args({1, 1})->Unit(benchmark::kMillisecond);

class NoOwner : public PackParserOwner {
    bool RestInWalk() override { return true; }
};

// The least that anyone can do who goes from pack to packet by their lengths and believes only what is there:
// each start code, the version of a pack.
void BareWalk(benchmark::State& state)
{
    const std::vector<unsigned char> buffer = ProgramStream(kBuffer);
    int64_t total = 0;
    for (auto _ : state) {
        size_t at = 0;
        unsigned packs = 0;
        while (at + 20 < buffer.size()) {
            const unsigned char* const p = &buffer[at];
            if (p[0] != 0 || p[1] != 0 || p[2] != 1) {
                break;
            }
            if (p[3] != 0xBA) {
                at += 6U + p[4] * 256U + p[5];
            } else if ((p[4] & 0xC0) == 0x40) {
                at += 14 + (p[13] & 7U);
                ++packs;
            } else {
                break;
            }
        }
        benchmark::DoNotOptimize(packs);
        total += static_cast<int64_t>(buffer.size());
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(BareWalk);

void Repair(benchmark::State& state)
{
    const std::vector<unsigned char> fresh = ProgramStream(kBuffer);
    std::vector<unsigned char> buffer = fresh;
    PackParser parser;
    NoOwner owner;
    int64_t total = 0;
    for (auto _ : state) {
        parser.Reset();
        parser.Parse(buffer.data(), static_cast<int>(buffer.size()), owner);
        total += static_cast<int64_t>(buffer.size());
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(Repair);

std::vector<unsigned char> Garbage()
{
    std::mt19937 random(1);
    std::vector<unsigned char> bytes(kBuffer);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random() % 255 + 1);    // no zero, so no start code
    }
    return bytes;
}

void BareSearch(benchmark::State& state)
{
    const std::vector<unsigned char> buffer = Garbage();
    int64_t total = 0;
    for (auto _ : state) {
        size_t found = 0;
        for (size_t at = 0; at + 2 < buffer.size(); ++at) {
            found += buffer[at] == 0 && buffer[at + 1] == 0 && buffer[at + 2] == 1;
        }
        benchmark::DoNotOptimize(found);
        total += static_cast<int64_t>(buffer.size());
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(BareSearch);

void RepairOfGarbage(benchmark::State& state)
{
    std::vector<unsigned char> buffer = Garbage();
    PackParser parser;
    NoOwner owner;
    int64_t total = 0;
    for (auto _ : state) {
        parser.Reset();
        parser.Parse(buffer.data(), static_cast<int>(buffer.size()), owner);
        total += static_cast<int64_t>(buffer.size());
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(RepairOfGarbage);

const std::string& BigFolder()
{
    static const std::string path = [] {
        const std::string name = BenchFolder() + "/many";
        std::filesystem::create_directory(name);
        for (int n = 0; n < 10000; ++n) {
            std::ofstream(name + "/clip" + std::to_string(n) + ".mpg") << 'x';
        }
        return name;
    }();
    return path;
}

void ScanAndStat(benchmark::State& state)
{
    const std::string& folder = BigFolder();
    for (auto _ : state) {
        dirent** entries = nullptr;
        const int count = scandir(folder.c_str(), &entries, nullptr, alphasort);
        long long total = 0;
        for (int n = 0; n < count; ++n) {
            struct stat status {};
            if (stat((folder + "/" + entries[n]->d_name).c_str(), &status) == 0) {
                total += status.st_size;
            }
            free(entries[n]);
        }
        free(entries);
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(ScanAndStat)->Unit(benchmark::kMillisecond);

void Snapshot(benchmark::State& state)
{
    const std::string first = BigFolder() + "/clip0.mpg";
    for (auto _ : state) {
        FileList list;
        list.Create(first.c_str(), nullptr);
        benchmark::DoNotOptimize(list.GetTotalSize());
    }
}
BENCHMARK(Snapshot)->Unit(benchmark::kMillisecond);

}    // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
    reporter.SetOutputStream(&std::cerr);
    reporter.SetErrorStream(&std::cerr);
    if (freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
