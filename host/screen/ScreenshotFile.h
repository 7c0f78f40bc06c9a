// Screenshots: PNG files of the composed screen in the state folder.
//
// Errors:  an empty path; nothing is left behind.
// Threads: any; blocks on the disk.
#pragma once

#include <string>

#include <cairo.h>

namespace screen {

// Answers the path: "screenshots/nuvid-DATE-TIME.png", with a number behind the time when that name is taken.
std::string WriteScreenshot(cairo_surface_t* surface);

}    // namespace screen
