// A folder for what a measurement reads, which goes when the program ends.
//
// Errors:  without a place for it: "/tmp" itself.
// Threads: any.
#pragma once

#include <string>

const std::string& BenchFolder();    // without a trailing "/"
