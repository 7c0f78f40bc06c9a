// Walks through an XML document that came from a network: element begins with attributes, its text, its end.
// Names come without their prefix. Entities other than the five of XML, and document types, end the walk, so
// nothing outside the document is ever read and nothing inside it grows.
//
// Units:   bytes.
// Errors:  Walk answers false at the first thing that is not XML or beyond a limit; what came before was
//          handed out. Broken UTF-8 and lone "&" are mended first, as servers do write such.
// Threads: one at a time. The texts handed out live for the call.
#pragma once

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
    virtual bool OnEnd(std::string_view name, int depth) = 0;    // false: enough, the walk ends

protected:
    ~XmlVisitor() = default;
};

inline constexpr int kDeepestXml = 32;

bool WalkXml(std::string_view document, XmlVisitor& visitor);

// `text` cut to at most `most` bytes at a character's end, control characters as blanks.
std::string TidyText(std::string_view text, size_t most);

}    // namespace host
