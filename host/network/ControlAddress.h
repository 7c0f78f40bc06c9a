// Where external control listens: HOST:PORT, [HOST]:PORT, or :PORT for 127.0.0.1.
//
// Errors:  a text for standard error. No name is looked up: HOST is a number or "localhost".
// Threads: pure.
#pragma once

#include <cstdint>
#include <string>

namespace host {

struct ControlAddress {
    std::string host;    // numeric
    uint16_t port = 0;    // 0: a free one
    std::string error;    // not empty: why there is no address
};

ControlAddress ParseControlAddress(const std::string& text);

}    // namespace host
