#include "host/remote/PairingCode.h"

#include <cstdio>
#include <cstdlib>

#include <sys/random.h>

namespace host {
namespace {

constexpr uint32_t kCodeCount = 1'000'000;

// A secret that is not random is none: without the kernel's numbers there is no going on.
void FillRandom(void* bytes, size_t count)
{
    auto* at = static_cast<unsigned char*>(bytes);
    while (count > 0) {
        const ssize_t got = getrandom(at, count, 0);
        if (got < 0 && errno != EINTR) {
            std::abort();
        }
        at += got < 0 ? 0 : got;
        count -= got < 0 ? 0 : static_cast<size_t>(got);
    }
}

std::string RandomCode()
{
    // Numbers beyond the last whole million would make small codes likelier.
    constexpr uint32_t kWhole = UINT32_MAX / kCodeCount * kCodeCount;
    uint32_t number = 0;
    do {
        FillRandom(&number, sizeof number);
    } while (number >= kWhole);
    char text[8];
    std::snprintf(text, sizeof text, "%06u", static_cast<unsigned>(number % kCodeCount));
    return text;
}

}    // namespace

std::string RandomHex(size_t count)
{
    std::string bytes(count, '\0');
    FillRandom(bytes.data(), bytes.size());
    std::string text;
    for (const char byte : bytes) {
        constexpr char kDigits[] = "0123456789abcdef";
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

std::string PairingCode::Show(Clock::time_point now)
{
    if (IsShown(now)) {
        return m_Code;
    }
    while (!m_Shown.empty() && now - m_Shown.front() >= kSpan) {
        m_Shown.pop_front();
    }
    if (m_Shown.size() >= kCodes) {
        return {};
    }
    m_Shown.push_back(now);
    m_Code = RandomCode();
    m_Until = now + kLife;
    m_nTriesLeft = kTries;
    return m_Code;
}

PairAnswer PairingCode::Try(std::string_view code, Clock::time_point now)
{
    if (!IsShown(now)) {
        m_Code.clear();
        return PairAnswer::kNoCode;
    }
    // All digits are compared whatever the first ones are: the time taken tells nothing.
    unsigned differs = code.size() == m_Code.size() ? 0 : 1;
    for (size_t i = 0; i < m_Code.size(); ++i) {
        differs |= static_cast<unsigned>(m_Code[i] ^ (i < code.size() ? code[i] : '\0'));
    }
    if (differs == 0) {
        m_Code.clear();
        m_Shown.pop_back();
        return PairAnswer::kPaired;
    }
    if (--m_nTriesLeft == 0) {
        m_Code.clear();
        return PairAnswer::kTooOften;
    }
    return PairAnswer::kWrong;
}

}    // namespace host
