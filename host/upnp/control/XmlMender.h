// Makes readable what servers get wrong in XML: bytes that are no UTF-8 become replacement characters, characters
// that XML does not allow (1.0, 2.2; titles of broadcasts begin with such) blanks, an "&" that begins no reference
// "&amp;". Entities of a document's own are none. What precedes the document, blanks or a byte order mark, goes.
//
// Units:   bytes.
// Errors:  none: every text comes out readable.
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
    bool m_bBegun = false;
    std::string m_Waiting;
    std::string m_Joined;
    std::string m_Mended;
};

}    // namespace host
