// Reads the small text files that people put beside their recordings, whatever wrote them.
//
// Units:     bytes.
// Errors:    an empty text for what is missing, no regular file or unreadable; nothing is printed.
// Threads:   no state; ReadTextFile blocks on the disk.
// Ownership: values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CascadeString.h"

namespace TextBytes {

// A description that is longer was never meant to be read on a television.
inline constexpr size_t kMostBytes = 256 * 1024;

// The text in UTF-8 without carriage returns, up to the first zero byte. A byte order mark says UTF-8 or
// UTF-16 and is left out; without one, bytes that are no UTF-8 are taken for ISO 8859-1.
CascadeString Decode(std::string_view bytes);

// At most the first kMostBytes of the file, decoded.
CascadeString ReadTextFile(const char* path);

std::vector<std::string_view> Lines(std::string_view text);    // split at line feeds

}    // namespace TextBytes
