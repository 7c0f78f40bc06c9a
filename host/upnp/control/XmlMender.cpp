#include "host/upnp/control/XmlMender.h"

#include <algorithm>
#include <memory>

#include <glib.h>

#include "host/upnp/control/XmlReference.h"

namespace host {
namespace {

bool IsControl(unsigned char c)
{
    return c < ' ' && c != '\t' && c != '\n' && c != '\r';
}

bool IsAllowed(uint32_t character)
{
    return character > 0xFF ? character != 0xFFFE && character != 0xFFFF : !IsControl(static_cast<unsigned char>(character));
}

// How much of `text` does not depend on what follows it.
size_t Settled(std::string_view text)
{
    const size_t ending = text.size() - std::min(text.size(), kLongestXmlReference - 1);
    const size_t reference = text.substr(ending).rfind('&');
    if (reference != std::string_view::npos && IsBegunXmlReference(text.substr(ending + reference))) {
        return ending + reference;
    }
    // The first byte of the last character, and how many it says follow it (RFC 3629).
    size_t at = text.size();
    while (at > 0 && text.size() - at < 4) {
        const auto byte = static_cast<unsigned char>(text[--at]);
        if (byte >= 0xC0) {
            const size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
            return text.size() - at < length ? at : text.size();
        }
        if (byte < 0x80) {
            break;
        }
    }
    return text.size();
}

std::string_view WithoutBegin(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    while (!text.empty() && (g_ascii_isspace(text.front()) || text.starts_with(kMark))) {
        text.remove_prefix(text.front() == kMark.front() ? kMark.size() : 1);
    }
    return text;
}

bool IsPlain(std::string_view text)
{
    bool plain = true;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        plain &= byte < 0x80 && !IsControl(byte);
    }
    return plain;
}

std::string OfAllowedCharacters(std::string_view text)
{
    std::string out(text);
    std::replace_if(out.begin(), out.end(), IsControl, ' ');
    if (!g_utf8_validate_len(out.data(), out.size(), nullptr)) {
        const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(out.data(), static_cast<gssize>(out.size())), g_free);
        out = valid.get();
    }
    // U+FFFE and U+FFFF become U+FFFD.
    for (size_t at = out.find("\xEF\xBF"); at != std::string::npos; at = out.find("\xEF\xBF", at + 3)) {
        char& third = out[at + 2];
        third = third == '\xBE' || third == '\xBF' ? '\xBD' : third;
    }
    return out;
}

// False: there is nothing to mend.
bool MendAmpersands(std::string_view text, std::string& mended)
{
    mended.clear();
    size_t taken = 0;
    for (size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        const XmlReference reference = ReadXmlReference(text.substr(at));
        if (reference.length != 0 && IsAllowed(reference.character)) {
            continue;
        }
        mended.append(text.substr(taken, at - taken)).append(reference.length == 0 ? "&amp;" : " ");
        taken = at + std::max<size_t>(reference.length, 1);
    }
    if (taken == 0) {
        return false;
    }
    mended.append(text.substr(taken));
    return true;
}

}    // namespace

std::string_view XmlMender::Mend(std::string_view piece, bool last)
{
    if (!m_Waiting.empty()) {
        m_Joined.swap(m_Waiting);
        m_Waiting.clear();
        piece = m_Joined.append(piece);
    }
    if (!last) {
        const size_t settled = Settled(piece);
        m_Waiting = piece.substr(settled);
        piece = piece.substr(0, settled);
    }
    if (!m_bBegun) {
        piece = WithoutBegin(piece);
        m_bBegun = !piece.empty();
    }
    if (!IsPlain(piece)) {
        m_Joined = OfAllowedCharacters(piece);
        piece = m_Joined;
    }
    return MendAmpersands(piece, m_Mended) ? std::string_view(m_Mended) : piece;
}

}    // namespace host
