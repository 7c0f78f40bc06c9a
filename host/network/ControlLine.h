// Cuts the bytes of an external control connection into lines.
//
// Units:   a line has at most kLongestLine bytes without its end (LF or CR LF).
// Errors:  a longer line is dropped to its end and reported once; memory stays bounded whatever comes.
// Threads: one at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

class ControlLineCutter {
public:
    static constexpr size_t kLongestLine = 4096;

    enum class Next { kNone, kLine, kTooLong };

    void Feed(std::string_view bytes);
    // The next whole line in the order received. kNone: the rest waits for its end.
    Next Take(std::string& line);

private:
    std::string m_Bytes;    // not yet taken
    bool m_bDropping = false;    // inside a line that is too long
};

// A command as it may be handed on: UTF-8 and no NUL.
bool IsCleanCommand(std::string_view line);
// A reply as it may be sent: one line of UTF-8, bounded.
std::string CleanReply(std::string reply);
// Whether this is the first line of a web browser's request. A page that a browser shows must not be able
// to send commands in the body of one.
bool IsWebRequest(std::string_view line);

}    // namespace host
