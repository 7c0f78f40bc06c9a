// The six digits on the television: how long they count, and how often one may guess.
//
// Units:     times are host::Clock, given by the caller.
// Errors:    guessing is bounded: kTries a code, kCodes codes in kSpan; so one in 60,000 of all codes can be tried
//            in a span.
// Threads:   one at a time.
#pragma once

#include <chrono>
#include <deque>
#include <string>
#include <string_view>

#include "host/base/Pairing.h"
#include "host/base/UiQueue.h"

namespace host {

class PairingCode {
public:
    static constexpr auto kLife = std::chrono::minutes(2);
    static constexpr auto kSpan = std::chrono::minutes(10);
    static constexpr int kTries = 5;
    static constexpr size_t kCodes = 3;

    // A code to be shown; the one that counts already, while it does. Empty: too often. A code that was used does
    // not count towards the limit.
    std::string Show(Clock::time_point now);
    PairAnswer Try(std::string_view code, Clock::time_point now);
    void Drop() { m_Code.clear(); }

    bool IsShown(Clock::time_point now) const { return !m_Code.empty() && now < m_Until; }
    const std::string& Digits() const { return m_Code; }
    Clock::time_point Until() const { return m_Until; }

private:
    std::string m_Code;    // empty: none counts
    Clock::time_point m_Until;
    int m_nTriesLeft = 0;
    std::deque<Clock::time_point> m_Shown;    // within kSpan, and not used
};

// `count` random bytes of the kernel, as hexadecimal digits.
std::string RandomHex(size_t count);

}    // namespace host
