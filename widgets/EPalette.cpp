#include "widgets/EPalette.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/CascadeArrays.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "platform/CascadeStream.h"
#include "widgets/EUtils.h"

namespace {

constexpr char kFileName[] = "theme.cfg";
constexpr unsigned long kLongestFile = 16 * 1024;
constexpr int kLargestRadius = 40;
constexpr int kShadow = 4;    // reach of the soft edge around a panel
constexpr CascadeColor kShade = 0x00000022;    // of each of its steps
constexpr CascadeColor kGloss = 0xFFFFFF59;

struct ColorRow {
    const char* name;
    CascadeColor EPalette::*value;
};
constexpr ColorRow kColors[] = {
    {"accent", &EPalette::accent},
    {"accentdeep", &EPalette::accentDeep},
    {"onaccent", &EPalette::onAccent},
    {"paneltop", &EPalette::panelTop},
    {"panelbottom", &EPalette::panelBottom},
    {"rim", &EPalette::rim},
    {"text", &EPalette::text},
    {"quiet", &EPalette::quiet},
    {"key", &EPalette::key},
};
struct RadiusRow {
    const char* name;
    int EPalette::*value;
};
constexpr RadiusRow kRadii[] = {{"panelradius", &EPalette::panelRadius}, {"rowradius", &EPalette::rowRadius}};

std::string ReadWhole(const char* path)
{
    CascadeFileStream stream;
    if (!CascadeFSObject::Exists(path) || CascadeFSObject(path).IsDirectory() || !stream.Open(CascadeFile(path))) {
        return {};
    }
    std::string bytes(kLongestFile, '\0');
    bytes.resize(stream.ReadBytes(kLongestFile, bytes.data()));
    return bytes;
}

// "#RRGGBB" is opaque.
bool ParseColor(const std::string& text, CascadeColor& color)
{
    const bool shaped
        = (text.size() == 7 || text.size() == 9) && text[0] == '#' && text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    if (shaped) {
        const auto value = static_cast<CascadeColor>(std::strtoul(text.c_str() + 1, nullptr, 16));
        color = text.size() == 7 ? value << 8 | 0xFF : value;
    }
    return shaped;
}

CascadeColor Between(CascadeColor a, CascadeColor b)
{
    return ((a >> 1) & 0x7F7F7F7F) + ((b >> 1) & 0x7F7F7F7F) + (a & b & 0x01010101);
}

void TakeLine(EPalette& palette, const std::string& line)
{
    const size_t equals = line.find('=');
    if (equals == std::string::npos) {
        return;
    }
    const std::string name = line.substr(0, equals);
    const std::string value = line.substr(equals + 1);
    for (const ColorRow& row : kColors) {
        if (name == row.name) {
            ParseColor(value, palette.*row.value);
        }
    }
    for (const RadiusRow& row : kRadii) {
        if (name == row.name) {
            palette.*row.value = std::clamp(std::atoi(value.c_str()), 0, kLargestRadius);
        }
    }
}

}    // namespace

EPalette EPalette::Load(const char* folder)
{
    EPalette palette;
    std::string text = ReadWhole(CascadeString(folder) + kFileName);
    if (text.empty()) {
        text = ReadWhole(CascadeString(CascadeGraphicsFolder()) + kFileName);
    }
    std::erase(text, '\r');
    const CascadeTokenArray lines(text.c_str(), "\n");
    for (size_t i = 0; i < lines.GetSize(); ++i) {
        TakeLine(palette, lines[i].Str());
    }
    return palette;
}

void EPalette::PaintGround(CascadeBitmap& bitmap, const CascadeRect& rect) const
{
    CascadeRect ground = rect;
    ground.InsetRect(kShadow + 1, kShadow + 1);
    bitmap.FillRoundedRect(ground, panelRadius, panelBottom | 0xFF);
}

void EPalette::PaintPanel(CascadeBitmap& bitmap, const CascadeRect& rect) const
{
    CascadeRect panel = rect;
    for (int i = 0; i < kShadow; ++i) {
        bitmap.FillRoundedRect(panel, panelRadius + kShadow - i, kShade);
        panel.InsetRect(1, 1);
    }
    bitmap.FillGradient(panel, panelRadius, panelTop, panelBottom, true);
    bitmap.StrokeRoundedRect(panel, panelRadius, 2, rim);
}

// From halfway to the deep colour: the accent itself is too bright behind a text.
void EPalette::PaintFocus(CascadeBitmap& bitmap, const CascadeRect& rect, int radius) const
{
    bitmap.FillGradient(rect, radius, Between(accent, accentDeep), accentDeep, true);
    bitmap.StrokeRoundedRect(rect, radius, 2, kGloss);
}
