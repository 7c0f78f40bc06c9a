// What a phone is told of the player, as one line of JSON:
//
//   {"state":"playing","title":"a.mpg","position":61000,"duration":5400000,"percent":1.1,
//    "chapters":[0,12.5],"bookmarks":[3.2],"index":1,"count":3}
//
// Units:   milliseconds, -1 where it is not known; percent.
// Threads: pure.
#pragma once

#include <string>

struct CascadeNowPlaying;

namespace host {

std::string StateJson(const CascadeNowPlaying& now);

}    // namespace host
