// Which requests are answered at all: a web page of somebody else must not reach the player through the browser of
// someone at home, whatever names it has its own address resolved to.
//
// Errors:  what is malformed is refused.
// Threads: pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// `host`: the Host field; `arrivedAt`: the numeric address of this device that the connection came to. Only numbers
// and "localhost" are taken: a name could be anybody's (DNS rebinding).
bool IsOurHost(std::string_view host, std::string_view arrivedAt, uint16_t port);

// The Origin field has to be that of a page from here. There is none in requests that are no script's.
bool IsOurOrigin(std::string_view origin, std::string_view host);

// The value of that cookie in a Cookie field (RFC 6265 4.2.1); empty: none.
std::string_view CookieNamed(std::string_view name, std::string_view field);

// The code in a request's body: six digits, blanks between them allowed. Empty: none.
std::string CodeIn(std::string_view body);

}    // namespace host
