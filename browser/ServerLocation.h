// A place inside a media server, as it is kept to come back to: "upnp:", the server's UUID, then "^", the
// container's identifier, "~" and its name for each container from the root down.
//
// Errors:    Parse answers none for what does not begin so; a token that is no pair is left out.
// Threads:   values.
// Note:      "%", "^" and "~" within identifiers and names are written "%25", "%5E" and "%7E".
#pragma once

#include <optional>
#include <vector>

#include "platform/CascadeString.h"

struct ServerLocation {
    struct Crumb {
        CascadeString id;    // what a browse request names
        CascadeString name;    // for the viewer
    };

    CascadeString uuid;
    std::vector<Crumb> crumbs;    // the first is the server's root

    static std::optional<ServerLocation> Parse(const char* text);
    CascadeString Text() const;
};
