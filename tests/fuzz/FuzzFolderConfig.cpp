// A folder's own settings.
#include <cstdint>
#include <string_view>

#include "browser/FolderConfig.h"
#include "browser/TextBytes.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const CascadeString text = TextBytes::Decode(std::string_view(reinterpret_cast<const char*>(data), size));
    const FolderConfig config = FolderConfig::Parse(text.Str());
    const bool inRange = config.iconMode >= FolderConfig::kNotSaid && config.iconMode <= 3 && config.filter >= FolderConfig::kNotSaid && config.filter <= 3;
    // Nothing is longer than what was read, and no line end or carriage return is left in it.
    const bool small = config.password.GetLength() + config.pattern.GetLength() <= text.GetLength();
    Require(inRange && small && config.password.Str().find_first_of("\r\n") == std::string::npos);
    return 0;
}
