#include "host/upnp/control/XmlMender.h"

#include <algorithm>
#include <memory>

#include <glib.h>

namespace host {
namespace {

constexpr size_t kLongestReference = 12;

// Whether "&" at the begin of `rest` begins a reference.
bool IsReference(std::string_view rest)
{
    const size_t end = rest.substr(0, kLongestReference).find(';');
    if (end == std::string_view::npos) {
        return false;
    }
    const std::string_view name = rest.substr(1, end - 1);
    return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos" || name.substr(0, 1) == "#";
}

// How much of `text` does not depend on what follows it.
size_t Settled(std::string_view text)
{
    const size_t ending = text.size() - std::min(text.size(), kLongestReference - 1);
    const size_t reference = text.substr(ending).rfind('&');
    if (reference != std::string_view::npos && text.find(';', ending + reference) == std::string_view::npos) {
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

bool IsAscii(std::string_view text)
{
    unsigned char all = 0;
    for (const char c : text) {
        all |= static_cast<unsigned char>(c);
    }
    return all < 0x80 && text.find('\0') == std::string_view::npos;
}

// False: there is nothing to mend.
bool MendAmpersands(std::string_view text, std::string& mended)
{
    mended.clear();
    size_t taken = 0;
    for (size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        if (!IsReference(text.substr(at))) {
            mended.append(text.substr(taken, at + 1 - taken)).append("amp;");
            taken = at + 1;
        }
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
    if (!IsAscii(piece) && !g_utf8_validate_len(piece.data(), piece.size(), nullptr)) {
        const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(piece.data(), static_cast<gssize>(piece.size())), g_free);
        m_Joined = valid.get();
        piece = m_Joined;
    }
    return MendAmpersands(piece, m_Mended) ? std::string_view(m_Mended) : piece;
}

}    // namespace host
