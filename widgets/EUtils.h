// Text, size and bitmap helpers that the widgets and the media sources share.
//
// Units:     widths and heights are logical pixels, sizes bytes. "Character" is a Unicode code point of
//            UTF-8 text; a byte that belongs to none counts as a character of its own.
// Errors:    answers false, 0 or -1; only BufferBlit prints. A null text is the empty text.
// Threads:   no state; any thread, as far as the font or bitmap that is passed may be used there.
// Ownership: nothing is kept.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeFont.h"
#include "platform/CascadeGeometry.h"
#include "platform/CascadeString.h"

class EUtils {
public:
    // Sizes.
    static unsigned long long GetFileSize(const char* path);    // 0 when it cannot be read
    static CascadeString GetFileSizeString(unsigned long long size);
    static CascadeString GetPlainSizeString(unsigned long long size);    // as the one above, with kilobytes called so
    static CascadeString GetFileSizeKBString(unsigned long long size);    // "1,234 KB", at least "1 KB"

    // Fitting. Removed characters are replaced by "...", in front of or behind what is left; nothing is
    // ever cut inside a character.
    static CascadeString TrimStringToWidth(const char* text, int maxWidth, const CascadeFont& font, bool fromFront);
    // Keeps the beginning and the last twelve characters, "..." between, until the text is narrower
    // than `maxWidth` or has fewer than sixteen characters.
    static CascadeString TrimStringInMiddle(const char* text, int maxWidth, const CascadeFont& font);
    static int GetLineHeight(const CascadeFont& font);    // of any text on one line
    static int GetWrappedTextHeight(const CascadeFont& font, const CascadeString& text, int maxWidth);
    // The text in lines of at most `maxWidth`, broken at blanks and line feeds; a word that is wider than that
    // has a line of its own.
    static std::vector<CascadeString> WrapText(const CascadeFont& font, const CascadeString& text, int maxWidth);
    static void TrimWrappedText(CascadeString& text, const CascadeFont& font, const CascadeRect& box);

    // Where each character of the text begins, and as the last element the text's length.
    static std::vector<size_t> CharacterOffsets(std::string_view text);

    // Largest count in 0..`max` that `fits`, when all counts below a fitting one fit too; 0 when none
    // does. Asks about small counts first, so that a text of any length is only measured as far as it fits.
    static size_t LargestFitting(size_t max, const std::function<bool(size_t)>& fits);

    // Searching and replacing.
    static void ReplaceString(const char* text, const char* from, const char* to, CascadeString& out);
    static bool RegexMatch(const char* text, const char* pattern, bool caseSensitive);    // POSIX extended, anywhere in the text
    static int IndexOf(const char* haystack, const char* needle);    // bytes; -1 when absent

    // Bitmaps.
    static bool LoadBitmapFromFile(CascadeBitmap& bitmap, const CascadeString& path, const CascadeString& fallback);
    static void CenterRectInScreen(CascadeRect& rect);
    // Hands width x height pixels (rows without padding) to the platform through shared memory. A source
    // rectangle of four zeros is the whole picture.
    static bool BufferBlit(CascadeBitmap& target, const CascadePoint& at, const unsigned char* pixels, const CascadeDims& dims,
        unsigned long bitsPerPixel, const CascadeRect& source);
    // The text with a copy of it below, moved right and down by `offset`, and a rim half as wide, so that it
    // is readable on any picture.
    static void ShadowedTextOut(
        CascadeBitmap& bitmap, CascadePoint at, const char* text, const CascadeFont& font, CascadeColor color, CascadeColor shadow, int offset);
};
