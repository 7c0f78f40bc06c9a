// Makes readable what servers get wrong in XML: bytes that are no UTF-8 become replacement characters, an "&"
// that begins no reference (XML 1.0, 4.1 and 4.6) becomes "&amp;". Entities of a document's own are none.
//
// Threads: one at a time.
#pragma once

#include <string>
#include <string_view>

namespace host {

class XmlMender {
public:
    // What is ready of all that was given so far, valid until the next call. A character or a reference that the
    // piece ends in waits for the next one, unless it is the last.
    std::string_view Mend(std::string_view piece, bool last);

private:
    std::string m_Waiting;
    std::string m_Joined;
    std::string m_Mended;
};

}    // namespace host
