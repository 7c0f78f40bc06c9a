// Where a server of the host listens: HOST:PORT, [HOST]:PORT, or :PORT for 127.0.0.1.
//
// Errors:  a text for standard error. No name is looked up: HOST is a number or "localhost".
// Threads: pure.
#pragma once

#include <cstdint>
#include <string>

namespace host {

struct ListenAddress {
    std::string host;    // numeric
    uint16_t port = 0;    // 0: a free one
    bool isLoopback = true;    // no other device can reach it; the others have to be paired
    std::string error;    // not empty: why there is no address

    std::string Text(uint16_t listening) const;    // "127.0.0.1:80", "[::1]:80"
};

ListenAddress ParseListenAddress(const std::string& text);

}    // namespace host
