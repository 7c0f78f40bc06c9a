// The browser's folders: read, sorted, filtered and folded, beside a bare scan with the status of each entry; and
// the list that the viewer sees, from the scan to its first painting.
//
// Results go to standard error, as those of PartsBench.cpp.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "bench/BenchFolder.h"
#include "browser/EFileBrowser.h"
#include "browser/FolderScan.h"
#include "platform/RemoteKeys.h"
#include "tests/support/TestPlatform.h"
#include "widgets/EListView.h"

namespace {

// Recordings as people name them: half of them alone, half in parts of four.
const std::string& Recordings(int count)
{
    static std::map<int, std::string> folders;
    std::string& folder = folders[count];
    if (folder.empty()) {
        folder = BenchFolder() + "/" + std::to_string(count) + "/";
        std::filesystem::create_directory(folder);
        for (int i = 0; i < count; ++i) {
            char name[64];
            std::snprintf(name, sizeof name, i % 2 == 0 ? "Recording %05d.mpg" : "Film %05d_%d.VOB", i % 2 == 0 ? i : i / 8, i / 2 % 4 + 1);
            const int file = open((folder + name).c_str(), O_CREAT | O_WRONLY, 0644);
            if (file < 0 || ftruncate(file, 4096 + i) != 0) {
                std::exit(1);
            }
            close(file);
        }
    }
    return folder;
}

void ScanAndStat(benchmark::State& state)
{
    const std::string& folder = Recordings(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        dirent** entries = nullptr;
        const int count = scandir(folder.c_str(), &entries, nullptr, alphasort);
        for (int i = 0; i < count; ++i) {
            struct stat status { };
            benchmark::DoNotOptimize(stat((folder + entries[i]->d_name).c_str(), &status));
            std::free(entries[i]);
        }
        std::free(entries);
    }
}
BENCHMARK(ScanAndStat)->Name("FolderScanAndStat")->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

// By filter: 0 lists everything, 2 folds sequences and looks at sizes.
void FolderRead(benchmark::State& state)
{
    FolderScanRequest request;
    request.folder = Recordings(static_cast<int>(state.range(0)));
    request.filter = static_cast<int>(state.range(1));
    request.minSize = 1;
    const JobStop stop {false};
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadFolder(request, stop).entries.size());
    }
}
BENCHMARK(FolderRead)->ArgNames({"files", "filter"})->ArgsProduct({{10000, 50000}, {0, 2}})->Unit(benchmark::kMillisecond);

EListView* ListOnScreen()
{
    for (CascadeWindow* window : TestPlatform::WindowsOnScreen()) {
        if (window->GetTitle() == "Browser list") {
            return static_cast<EListView*>(window);
        }
    }
    return nullptr;
}

void Ignore(const FileInfo&, EFileBrowser::CallbackReason, void*) {}

// From a finished scan to the list's first painting, on the user-interface thread.
void FirstScreen(benchmark::State& state)
{
    const std::string& folder = Recordings(static_cast<int>(state.range(0)));
    FolderScanRequest request;
    request.folder = folder;
    const JobStop never {false};
    for (auto _ : state) {
        state.PauseTiming();
        TestPlatform::Reset();
        const size_t before = mallinfo2().uordblks;
        std::atomic<bool> scanned {false};
        auto browser = std::make_unique<EFileBrowser>([&](const FolderScanRequest& asked, const JobStop& stop) {
            FolderListing listing = ReadFolder(asked, stop);
            scanned = true;
            return listing;
        });
        browser->BrowseDirectory("", folder.c_str(), folder.c_str(), folder.c_str(), EFileBrowser::kFilterAll, CascadeDirBrowser::kFilesAndFolders, Ignore, nullptr);
        while (!scanned) {
            TestPlatform::Tick();
            usleep(1000);
        }
        usleep(50000);    // the record is handed over
        state.ResumeTiming();
        while (ListOnScreen()->GetItemCount() == 0) {
            TestPlatform::Tick();
        }
        TestPlatform::PaintAll();
        state.PauseTiming();
        state.counters["MB"] = static_cast<double>(mallinfo2().uordblks - before) / 1e6;
        browser.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(FirstScreen)->Name("FolderFirstScreen")->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

}    // namespace
