#include "platform/CascadeArrays.h"

CascadeTokenArray::CascadeTokenArray(const char* text, const char* separators)
{
    const std::string_view all = text == nullptr ? "" : text;
    const std::string_view between = separators == nullptr ? "" : separators;
    size_t start = all.find_first_not_of(between);
    while (start != std::string_view::npos) {
        const size_t end = all.find_first_of(between, start);
        m_Tokens.emplace_back(all.substr(start, end - start));
        start = all.find_first_not_of(between, end);
    }
}
