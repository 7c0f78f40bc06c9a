#include "host/upnp/control/XmlReference.h"

#include <charconv>

#include <glib.h>

namespace host {
namespace {

uint32_t CharacterOf(std::string_view name)
{
    struct Named {
        std::string_view name;
        char character;
    };
    static constexpr Named kNamed[] = {{"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"amp", '&'}, {"apos", '\''}};
    for (const Named& named : kNamed) {
        if (name == named.name) {
            return static_cast<uint32_t>(named.character);
        }
    }
    if (name.size() < 2 || name[0] != '#') {
        return 0;
    }
    const bool hex = name[1] == 'x';
    const std::string_view digits = name.substr(hex ? 2 : 1);
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
    return error == std::errc() && end == digits.data() + digits.size() && g_unichar_validate(code) != FALSE ? code : 0;
}

}    // namespace

XmlReference ReadXmlReference(std::string_view text)
{
    const size_t end = text.substr(0, kLongestXmlReference).find(';');
    const uint32_t character = end == std::string_view::npos ? 0 : CharacterOf(text.substr(1, end - 1));
    return character == 0 ? XmlReference() : XmlReference {end + 1, character};
}

bool IsBegunXmlReference(std::string_view text)
{
    return text.size() < kLongestXmlReference && text.find(';') == std::string_view::npos;
}

}    // namespace host
