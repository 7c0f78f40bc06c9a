// Small pictures of the screen as JPEG files.
//
// Errors:    empty: the library refused or had no memory.
// Threads:   one at a time.
// Ownership: keeps the library's tables for the next picture.
#pragma once

#include <memory>
#include <string>

namespace host {

struct FeedPicture;

class JpegEncoder {
public:
    JpegEncoder();
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    std::string Encode(const FeedPicture& picture);

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

}    // namespace host
