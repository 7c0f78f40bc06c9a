#include "browser/ServerLocation.h"

#include "platform/CascadeArrays.h"

namespace {

constexpr const char* kPrefix = "upnp:";
constexpr size_t kPrefixLength = 5;

struct Escape {
    char character;
    const char* code;
};
constexpr Escape kEscapes[] = {{'%', "%25"}, {'^', "%5E"}, {'~', "%7E"}};

std::string Written(const std::string& text)
{
    std::string written;
    for (const char c : text) {
        std::string part(1, c);
        for (const Escape& escape : kEscapes) {
            part = c == escape.character ? escape.code : part;
        }
        written += part;
    }
    return written;
}

std::string Read(const std::string& text)
{
    std::string read;
    for (size_t at = 0; at < text.size(); ++at) {
        read += text[at];
        for (const Escape& escape : kEscapes) {
            if (text[at] == '%' && text.compare(at, 3, escape.code) == 0) {
                read.back() = escape.character;
                at += 2;
                break;
            }
        }
    }
    return read;
}

}    // namespace

std::optional<ServerLocation> ServerLocation::Parse(const char* text)
{
    const CascadeString whole(text);
    if (whole.Compare(kPrefix, false, false, kPrefixLength) != 0) {
        return std::nullopt;
    }
    ServerLocation location;
    const CascadeTokenArray tokens(whole, "^");
    location.uuid = tokens[0].From(kPrefixLength);
    for (size_t i = 1; i < tokens.GetSize(); ++i) {
        const CascadeTokenArray pair(tokens[i], "~");
        if (pair.GetSize() == 2) {
            location.crumbs.push_back({Read(pair[0].Str()), Read(pair[1].Str())});
        }
    }
    return location;
}

CascadeString ServerLocation::Text() const
{
    std::string text = kPrefix + uuid.Str();
    for (const Crumb& crumb : crumbs) {
        text += "^" + Written(crumb.id.Str()) + "~" + Written(crumb.name.Str());
    }
    return CascadeString(text);
}
