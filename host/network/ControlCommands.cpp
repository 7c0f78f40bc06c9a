#include "host/network/ControlCommands.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>

#include "host/base/HostHooks.h"
#include "host/base/KeyNames.h"
#include "host/base/Pairing.h"
#include "host/network/ControlWords.h"
#include "platform/CascadeInput.h"

namespace host {
namespace {

using Handler = std::function<std::string(const std::string&)>;

struct Claim {
    std::string prefix;    // as claimed, for help
    Handler handler;
};

// By the prefix in lower case.
std::map<std::string, Claim>& Claims()
{
    static std::map<std::string, Claim> claims;
    return claims;
}

std::string Lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

// Takes the first word off `text`.
std::string_view TakeWord(std::string_view& text)
{
    const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(start);
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

std::optional<unsigned long> KeyOf(std::string_view argument)
{
    const std::string word = Lower(TakeWord(argument));
    if (!TakeWord(argument).empty()) {
        return std::nullopt;
    }
    if (word.starts_with("0x")) {
        uint32_t code = 0;
        const char* const end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data() + 2, end, code, 16);
        return error == std::errc() && stop == end && code != 0 ? std::optional<unsigned long>(code) : std::nullopt;
    }
    const uint32_t key = KeyNamed(word);
    return key == 0 ? std::nullopt : std::optional<unsigned long>(key);
}

std::string DispatchKey(std::string_view argument, bool down, bool up)
{
    const std::optional<unsigned long> key = KeyOf(argument);
    if (!key) {
        return "Unknown key";
    }
    if (down) {
        CascadeInput::DispatchKeyDown(*key);
    }
    if (up) {
        CascadeInput::DispatchKeyUp(*key);
    }
    return "OK";
}

ControlReply RunHostWord(std::string_view rest)
{
    const std::string word = Lower(TakeWord(rest));
    for (const ControlHostWord& row : kHostWords) {
        if (row.name == word) {
            return row.run(rest);
        }
    }
    return kUnknownCommand;
}

}    // namespace

ControlReply PressKeyWord(std::string_view argument)
{
    return DispatchKey(argument, true, true);
}

ControlReply KeyDownWord(std::string_view argument)
{
    return DispatchKey(argument, true, false);
}

ControlReply KeyUpWord(std::string_view argument)
{
    return DispatchKey(argument, false, true);
}

ControlReply ScreenshotWord(std::string_view)
{
    ControlReply reply("Failed");
    if (std::function<std::string()> write = Hooks().takeScreenshot ? Hooks().takeScreenshot() : nullptr) {
        reply.later = [write = std::move(write), failed = reply.text] {
            const std::string path = write();
            return path.empty() ? failed : path;
        };
    }
    return reply;
}

ControlReply StatsWord(std::string_view)
{
    return ControlStats();
}

ControlReply DevicesWord(std::string_view)
{
    if (ThePairing() == nullptr) {
        return "Failed";
    }
    ThePairing()->ShowDevices();
    return "OK";
}

ControlReply UnpairWord(std::string_view)
{
    if (ThePairing() == nullptr) {
        return "Failed";
    }
    ThePairing()->ForgetAll();
    return "OK";
}

ControlReply HelpWord(std::string_view)
{
    std::string help;
    for (const ControlHostWord& row : kHostWords) {
        help += std::string(kHostPrefix) + " " + std::string(row.name) + (row.argument.empty() ? "" : " ") + std::string(row.argument) + "; ";
    }
    help += "keys:";
    for (const KeyName& key : kKeyNames) {
        help += " " + std::string(key.name);
    }
    help += "; others:";
    for (const auto& [lower, claim] : Claims()) {
        help += " " + claim.prefix;
    }
    return help;
}

void ClaimCommandPrefix(const std::string& prefix, std::function<std::string(const std::string& command)> handler)
{
    Claims()[Lower(prefix)] = {prefix, std::move(handler)};
}

ControlReply RunControlCommand(const std::string& command)
{
    std::string_view rest = command;
    const std::string word = Lower(TakeWord(rest));
    if (word == Lower(kHostPrefix)) {
        return RunHostWord(rest);
    }
    const auto found = Claims().find(word);
    // A handler compares from the command's first character on.
    if (found == Claims().end() || command.front() == ' ' || command.front() == '\t') {
        return kUnknownCommand;
    }
    const Handler handler = found->second.handler;    // it may claim others
    return handler ? ControlReply(handler(command)) : ControlReply(kUnknownCommand);
}

}    // namespace host
