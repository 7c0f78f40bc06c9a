#include "widgets/KeyboardField.h"

#include "widgets/EUtils.h"

namespace {

constexpr char kDot[] = "\u2022";

// A whole code point and no control character (C0, DEL, C1).
bool IsPrintable(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) {
        return first >= 0x20 && first < 0x7F;
    }
    const bool c1 = first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    const bool overlong
        = (first == 0xE0 && static_cast<unsigned char>(character[1]) < 0xA0) || (first == 0xF0 && static_cast<unsigned char>(character[1]) < 0x90);
    const bool surrogate = first == 0xED && static_cast<unsigned char>(character[1]) >= 0xA0;
    const bool beyond = first == 0xF4 && static_cast<unsigned char>(character[1]) >= 0x90;
    return !c1 && !overlong && !surrogate && !beyond;
}

}    // namespace

void KeyboardField::SetText(const char* utf8)
{
    m_Text.Empty();
    Append(utf8);
}

bool KeyboardField::Append(const char* utf8)
{
    const std::string_view typed = utf8 == nullptr ? "" : utf8;
    const std::vector<size_t> offsets = EUtils::CharacterOffsets(typed);
    size_t count = Characters();
    const size_t before = count;
    for (size_t i = 0; i + 1 < offsets.size() && count < m_nMax; ++i) {
        const std::string_view character = typed.substr(offsets[i], offsets[i + 1] - offsets[i]);
        if (IsPrintable(character)) {
            m_Text = m_Text + CascadeString(character);
            ++count;
        }
    }
    return count > before;
}

bool KeyboardField::Backspace()
{
    const std::vector<size_t> offsets = EUtils::CharacterOffsets(m_Text.Str());
    if (offsets.size() < 2) {
        return false;
    }
    m_Text = m_Text.Left(offsets[offsets.size() - 2]);
    return true;
}

size_t KeyboardField::Characters() const
{
    return EUtils::CharacterOffsets(m_Text.Str()).size() - 1;
}

CascadeString KeyboardField::Dots() const
{
    CascadeString dots;
    for (size_t i = Characters(); i > 0; --i) {
        dots += kDot;
    }
    return dots;
}
