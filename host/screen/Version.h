// The version that "--version" says; CMakeLists.txt has the same number.
#pragma once

namespace screen {

inline constexpr const char* kVersionText = "Nuvid 3.6\n";

}    // namespace screen
