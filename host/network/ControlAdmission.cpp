#include "host/network/ControlAdmission.h"

#include <algorithm>
#include <string_view>

#include "host/base/Pairing.h"

namespace host {
namespace {

constexpr const char* kNotPaired = "Not paired";
constexpr const char* kTooOften = "Too often";

// The first word, in lower case; `text` becomes what follows the blank behind it.
std::string TakeWord(std::string_view& text)
{
    const size_t end = std::min(text.find(' '), text.size());
    std::string word(text.substr(0, end));
    std::transform(word.begin(), word.end(), word.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

AdmissionReply Pair(std::string_view code, Pairing& pairing)
{
    if (code.empty()) {
        return {pairing.ShowCode("A program on the network") ? "OK" : kTooOften};
    }
    std::string token;
    switch (pairing.TryCode(code, "A program", token)) {
    case PairAnswer::kPaired:
        return {token, true};
    case PairAnswer::kWrong:
        return {"Wrong code"};
    case PairAnswer::kNoCode:
        return {"No code"};
    case PairAnswer::kTooOften:
        break;
    }
    return {kTooOften};
}

}    // namespace

AdmissionReply RunAdmissionCommand(const std::string& command, Pairing* pairing)
{
    std::string_view rest = command;
    const bool isOurs = TakeWord(rest) == "cascade";
    const std::string word = TakeWord(rest);
    if (pairing != nullptr && isOurs && word == "pair") {
        return Pair(rest, *pairing);
    }
    if (pairing != nullptr && isOurs && word == "token" && pairing->Knows(rest)) {
        return {"OK", true};
    }
    return {kNotPaired};
}

}    // namespace host
