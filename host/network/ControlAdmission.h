// What a client from another device has to say first: external control beyond this device is for paired devices.
//
//   Cascade pair          shows a code on the television      "OK", or "Too often"
//   Cascade pair CODE     pairs                               the token, "Wrong code", "No code" or "Too often"
//   Cascade token TOKEN   proves it on later connections      "OK", or "Not paired"
//
// Errors:  everything else is answered "Not paired".
// Threads: the user-interface thread.
#pragma once

#include <string>

namespace host {

class Pairing;

struct AdmissionReply {
    std::string text;
    bool isAdmitted = false;
};

AdmissionReply RunAdmissionCommand(const std::string& command, Pairing* pairing);    // null: nobody can be paired

}    // namespace host
