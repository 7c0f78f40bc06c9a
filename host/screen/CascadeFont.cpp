#include "platform/CascadeFont.h"

#include "host/screen/TextEngine.h"

namespace {

// Sizes of the platform's widget fonts by scheme; a scheme that is not listed is the ordinary one.
constexpr int kWidgetFontSizes[] = {24, 20, 28, 32};

}    // namespace

void CascadeFont::Create(const char* family, int size)
{
    m_Family = family;
    m_nSize = size;
}

CascadeDims CascadeFont::GetTextExtent(const char* text) const
{
    return screen::TextEngine::ForThisThread().Measure(*this, text);
}

CascadeFont GetWidgetFont(int scheme)
{
    const bool known = scheme >= 0 && scheme < int(std::size(kWidgetFontSizes));
    return CascadeFont("system", kWidgetFontSizes[known ? scheme : 0]);
}
