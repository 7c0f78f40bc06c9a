#include "host/base/JsonText.h"

#include <cstdio>

namespace host {

size_t CharacterLength(std::string_view text)
{
    const auto at = [text](size_t index) { return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U; };
    const auto follows = [&at](size_t index, unsigned from = 0x80, unsigned to = 0xBF) { return at(index) >= from && at(index) <= to; };
    const unsigned first = at(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        // No overlong forms, no halves of a surrogate pair.
        return follows(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF) && follows(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        return follows(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

std::string JsonText(std::string_view text)
{
    std::string result = "\"";
    while (!text.empty()) {
        const size_t length = CharacterLength(text);
        const char first = text.front();
        if (length == 0) {
            result += "\xEF\xBF\xBD";
        } else if (first == '"' || first == '\\') {
            result += '\\';
            result += first;
        } else if (length == 1 && static_cast<unsigned char>(first) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(first));
            result += escape;
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result + "\"";
}

}    // namespace host
