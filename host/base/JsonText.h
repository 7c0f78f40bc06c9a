// A text as JSON has it, quotes included (RFC 8259 7). Bytes that are not UTF-8 become U+FFFD.
//
// Threads: pure.
#pragma once

#include <string>
#include <string_view>

namespace host {

std::string JsonText(std::string_view text);

// How many bytes the character at the front of `text` has; 0: it is not UTF-8 (RFC 3629 4). `text` is not empty.
size_t CharacterLength(std::string_view text);

}    // namespace host
