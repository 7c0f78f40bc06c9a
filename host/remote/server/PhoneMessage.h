// What a phone says over its WebSocket, one message a line of text:
//
//   NUMBER down KEY    NUMBER hold KEY    NUMBER up KEY    a key of the remote, by its name (KeyNames.h)
//   NUMBER keep KEY                                        the finger is still on it, which means nothing more
//   NUMBER type C                                          one character, or nothing after "type": backspace
//   view on            view off                            whether it looks at the picture
//   got state          got picture                         it has shown what came last
//   devices                                                shows the paired devices on the television
//
// NUMBER is the phone's own; it is answered with it, so that the phone knows that the key has arrived.
//
// Errors:  anything else is no message.
// Threads: pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

struct PhoneMessage {
    enum class Kind { kDown, kHold, kUp, kKeep, kType, kViewOn, kViewOff, kGotState, kGotPicture, kDevices };
    static constexpr size_t kLongest = 128;    // bytes

    Kind kind = Kind::kDown;
    uint32_t number = 0;
    uint32_t key = 0;
    std::string_view text;    // within the line

    bool IsKey() const { return kind <= Kind::kKeep; }
};

std::optional<PhoneMessage> ParsePhoneMessage(std::string_view line);

}    // namespace host
