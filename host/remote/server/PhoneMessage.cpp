#include "host/remote/server/PhoneMessage.h"

#include <algorithm>
#include <charconv>

#include "host/base/JsonText.h"
#include "host/base/KeyNames.h"

namespace host {
namespace {

using Kind = PhoneMessage::Kind;

struct PlainRow {
    std::string_view line;
    Kind kind;
};
constexpr PlainRow kPlain[] = {
    {"view on", Kind::kViewOn},
    {"view off", Kind::kViewOff},
    {"got state", Kind::kGotState},
    {"got picture", Kind::kGotPicture},
    {"devices", Kind::kDevices},
};

struct WordRow {
    std::string_view word;
    Kind kind;
};
constexpr WordRow kWords[] = {
    {"down", Kind::kDown},
    {"hold", Kind::kHold},
    {"up", Kind::kUp},
    {"keep", Kind::kKeep},
    {"type", Kind::kType},
};

std::string_view TakeWord(std::string_view& text)
{
    const size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

// One character that can be typed: no control character.
bool IsTyped(std::string_view text)
{
    return text.empty() || (CharacterLength(text) == text.size() && static_cast<unsigned char>(text.front()) >= 0x20 && text.front() != '\x7F');
}

}    // namespace

std::optional<PhoneMessage> ParsePhoneMessage(std::string_view line)
{
    PhoneMessage message;
    if (line.size() > PhoneMessage::kLongest) {
        return std::nullopt;
    }
    for (const PlainRow& row : kPlain) {
        if (row.line == line) {
            message.kind = row.kind;
            return message;
        }
    }
    const std::string_view number = TakeWord(line);
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), message.number);
    if (number.empty() || error != std::errc() || end != number.data() + number.size()) {
        return std::nullopt;
    }
    const std::string_view word = TakeWord(line);
    for (const WordRow& row : kWords) {
        if (row.word == word) {
            message.kind = row.kind;
            message.key = message.IsKey() ? KeyNamed(line) : 0;
            message.text = message.IsKey() ? std::string_view() : line;
            const bool good = message.IsKey() ? message.key != 0 : IsTyped(line);
            return good ? std::optional(message) : std::nullopt;
        }
    }
    return std::nullopt;
}

}    // namespace host
