// The lines of a text as a reader with a buffer of a fixed size sees them: a line that does not fit comes in
// pieces, each of which counts as a line.
//
// Units:   bytes.
// Threads: any.
#pragma once

#include <cstddef>
#include <string_view>

class TextLines {
public:
    TextLines(std::string_view text, size_t longest)
        : m_Rest(text)
        , m_nLongest(longest)
    {
    }

    // The next line with its line end, when that still fits; false at the end.
    bool Next(std::string_view& line)
    {
        if (m_Rest.empty()) {
            return false;
        }
        const size_t feed = m_Rest.find('\n');
        const size_t whole = feed == std::string_view::npos ? m_Rest.size() : feed + 1;
        line = m_Rest.substr(0, whole < m_nLongest ? whole : m_nLongest);
        m_Rest.remove_prefix(line.size());
        return true;
    }

    // Without any run of carriage returns and line feeds at its end.
    static std::string_view WithoutEnd(std::string_view line)
    {
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) {
            line.remove_suffix(1);
        }
        return line;
    }

private:
    std::string_view m_Rest;
    size_t m_nLongest;
};
