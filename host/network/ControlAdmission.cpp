#include "host/network/ControlAdmission.h"

#include <algorithm>
#include <string_view>

#include "host/base/Pairing.h"

namespace host {
namespace {

constexpr const char* kNotPaired = "Not paired";
constexpr const char* kTooOften = "Too often";

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
    constexpr std::string_view kPair = "Cascade pair";
    constexpr std::string_view kToken = "Cascade token ";
    const std::string_view line = command;
    if (pairing == nullptr) {
        return {kNotPaired};
    }
    if (line == kPair || (line.starts_with(kPair) && line[kPair.size()] == ' ')) {
        return Pair(line.substr(std::min(line.size(), kPair.size() + 1)), *pairing);
    }
    if (line.starts_with(kToken) && pairing->Knows(line.substr(kToken.size()))) {
        return {"OK", true};
    }
    return {kNotPaired};
}

}    // namespace host
