// The information file beside a recording.
#include <cstdint>
#include <string_view>

#include "browser/EInfoFile.h"
#include "browser/TextBytes.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const CascadeString text = TextBytes::Decode(std::string_view(reinterpret_cast<const char*>(data), size));
    // No encoding makes more than three bytes of one.
    Require(text.GetLength() <= size * 3);
    EInfoFile info;
    info.ParseText(text);
    size_t fields = 0;
    for (const CascadeString* field : {&info.title, &info.description, &info.genre, &info.rating, &info.director, &info.writer, &info.year, &info.actors}) {
        fields += field->GetLength();
    }
    // What is taken out of the text is no more than the text, and a text always says something.
    Require(fields <= text.GetLength() && (fields > 0 || text.IsEmpty()));
    return 0;
}
