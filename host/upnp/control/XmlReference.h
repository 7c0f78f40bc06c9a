// One reference in a text: a character's number, or one of the five entities of XML (1.0, 4.1 and 4.6).
//
// Units:   bytes.
// Errors:  what is no reference has no length.
// Threads: pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host {

struct XmlReference {
    size_t length = 0;    // from "&" to ";"
    uint32_t character = 0;    // of Unicode; also one that XML does not allow
};

inline constexpr size_t kLongestXmlReference = 12;

XmlReference ReadXmlReference(std::string_view text);    // which begins with "&"
bool IsBegunXmlReference(std::string_view text);    // which begins with "&": it may become one with what follows

}    // namespace host
