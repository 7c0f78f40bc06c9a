// Reads an XML document that came from a network, as it arrives: element begins with attributes, its text, its
// end. Names come without their prefix. Entities other than the five of XML, and document types, end the
// reading, so nothing outside the document is ever read and nothing inside it grows.
//
// Units:     bytes.
// Errors:    reading ends at the first thing that is not XML or beyond a limit; what came before was handed
//            out. What servers often get wrong is mended first (XmlMender).
// Threads:   one at a time. The texts handed out live for the call.
// Ownership: the visitor outlives the reader.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

class XmlVisitor {
public:
    using Attributes = std::vector<std::pair<std::string_view, std::string_view>>;

    // Depth 1 is the root.
    virtual void OnBegin(std::string_view name, int depth, const Attributes& attributes) = 0;
    virtual void OnText(std::string_view text) = 0;    // of the element that is open; may come in pieces
    virtual bool OnEnd(std::string_view name, int depth) = 0;    // false: enough, the reading ends

protected:
    ~XmlVisitor() = default;
};

inline constexpr int kDeepestXml = 32;
// From one "<" to the next: the parser compares every attribute of an element with every other.
inline constexpr size_t kLongestMarkup = 64 * 1024;

class XmlReader {
public:
    explicit XmlReader(XmlVisitor& visitor);
    ~XmlReader();
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;

    void Take(std::string_view piece);
    bool Finish();    // the document was read to its end, or as far as the visitor wanted

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

bool ReadXml(std::string_view document, XmlVisitor& visitor);

// `text` cut to at most `most` bytes at a character's end, control characters as blanks.
std::string TidyText(std::string_view text, size_t most);

}    // namespace host
