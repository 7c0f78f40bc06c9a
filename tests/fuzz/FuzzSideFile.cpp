// The side file of a recording.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "playback/FileSettings.h"
#include "tests/fuzz/Require.h"

namespace {

std::string Format(const FileSettings& settings)
{
    return FormatFileSettings(settings.chapters, settings.bookmarks, settings.state);
}

// Every step leads to a record, whatever is asked from.
void Walk(const BookmarkList& marks)
{
    for (int i = 0; i < marks.Size(); ++i) {
        const tagBookmark& mark = *marks.Get(i);
        const int at = marks.LocateBookmark(&mark);
        Require(at > i && at <= marks.Size());
        for (const int index : {marks.GetNext(&mark), marks.GetPrev(&mark, false), marks.GetPrev(&mark, true)}) {
            Require(marks.Get(index) != nullptr);
        }
    }
}

// What is on the disk comes back whole, or is told to be somebody else's from its first bytes.
void ReadBack(const std::string& text)
{
    const int file = memfd_create("side", MFD_CLOEXEC);
    Require(file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    const auto read = ReadSettingsText(("/proc/self/fd/" + std::to_string(file)).c_str());
    close(file);
    Require(read && IsFileSettings(*read) == IsFileSettings(text) && (!IsFileSettings(text) || *read == text));
}

}    // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const FileSettings settings = ParseFileSettings(text);
    Require(IsFileSettings(text) || Format(settings) == Format(FileSettings()));
    const std::string written = Format(settings);
    Require(IsFileSettings(written) && Format(ParseFileSettings(written)) == written);
    Walk(settings.chapters);
    Walk(settings.bookmarks);
    ReadBack(text);
    return 0;
}
