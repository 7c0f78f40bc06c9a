// A playlist, and the same once more after it was written.
#include <cstdint>
#include <string_view>

#include "app/Playlist.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<CascadeString> paths = Playlist::Parse(text, "/films");
    for (const CascadeString& path : paths) {
        // Nothing is relative any more, and no line is longer than what was read and the folder.
        const char first = path.Text()[0];
        Require((first == '/' || first == ':' || path.Str().starts_with("http://")) && path.GetLength() <= size + 8);
    }
    // What was written is read as the same items, but where an item is longer than a line may be or holds a line's end.
    bool plain = true;
    for (const CascadeString& path : paths) {
        plain = plain && path.GetLength() < 500 && path.Str().find_first_of("\r\n") == std::string::npos;
    }
    Require(!plain || Playlist::Parse(Playlist::Format(paths), "/elsewhere") == paths);
    return 0;
}
