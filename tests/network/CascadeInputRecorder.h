// Keys that external control dispatched, in place of the screen's input.
#pragma once

#include <utility>
#include <vector>

std::vector<std::pair<unsigned long, bool>>& RecordedKeys();    // code, pressed; user-interface thread
