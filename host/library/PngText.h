// The text chunks of a PNG file (ISO/IEC 15948 11.3.4.3), in which a thumbnail says whose it is.
//
// Errors:  a file that is no whole PNG has no texts.
// Threads: any; reading blocks on the disk.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace host {

using PngTexts = std::map<std::string, std::string>;    // keyword, Latin-1 text

// The same picture with the texts behind its header. `png` comes from an encoder, so it is whole.
std::string WithPngTexts(const std::string& png, const PngTexts& texts);

// From an open file, which any program may have written. Long and compressed texts are passed over.
std::optional<PngTexts> ReadPngTexts(int fd);

}    // namespace host
