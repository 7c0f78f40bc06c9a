// Parts of the program that are loaded when they are first needed: each brings libraries that most runs can do without.
//
// Errors:    null; `error` says why.
// Threads:   any; blocks on the disk.
// Ownership: never unloaded: the libraries do not expect that.
#pragma once

#include <string>

namespace host {

// `name` is a file beside the program, or one folder above it, where the build has it for its other programs.
void* OpenModule(const std::string& name, std::string& error);

}    // namespace host
