#include "host/network/ControlLine.h"

#include <algorithm>
#include <memory>

#include <glib.h>

namespace host {
namespace {

constexpr size_t kLongestReply = 64 * 1024;

}    // namespace

void ControlLineCutter::Feed(std::string_view bytes)
{
    if (m_bDropping && bytes.find('\n') == std::string_view::npos) {
        return;
    }
    m_Bytes += bytes;
}

ControlLineCutter::Next ControlLineCutter::Take(std::string& line)
{
    const size_t end = m_Bytes.find('\n');
    if (end == std::string::npos) {
        // One more for the CR of a line end that is still to come.
        if (m_Bytes.size() > kLongestLine + 1) {
            m_bDropping = true;
        }
        if (m_bDropping) {
            m_Bytes.clear();
        }
        return Next::kNone;
    }
    const size_t length = end != 0 && m_Bytes[end - 1] == '\r' ? end - 1 : end;
    const bool tooLong = m_bDropping || length > kLongestLine;
    m_bDropping = false;
    if (!tooLong) {
        line.assign(m_Bytes, 0, length);
    }
    m_Bytes.erase(0, end + 1);
    return tooLong ? Next::kTooLong : Next::kLine;
}

bool IsCleanCommand(std::string_view line)
{
    return g_utf8_validate(line.data(), static_cast<gssize>(line.size()), nullptr) != FALSE;
}

std::string CleanReply(std::string reply)
{
    if (reply.size() > kLongestReply) {
        reply.resize(kLongestReply);
    }
    std::replace_if(
        reply.begin(), reply.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
    const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(reply.data(), static_cast<gssize>(reply.size())), &g_free);
    return valid.get();
}

bool IsWebRequest(std::string_view line)
{
    constexpr std::string_view kVersion = " HTTP/";
    const size_t methodEnd = line.find(' ');
    const size_t version = line.rfind(kVersion);
    if (methodEnd == 0 || methodEnd == std::string_view::npos || version == std::string_view::npos) {
        return false;
    }
    const std::string_view method = line.substr(0, methodEnd);
    const std::string_view number = line.substr(version + kVersion.size());
    return std::all_of(method.begin(), method.end(), [](char c) { return c >= 'A' && c <= 'Z'; }) && number.size() <= 3;
}

}    // namespace host
