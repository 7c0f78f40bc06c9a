#include "app/MThemeSelect.h"

#include <cstdio>
#include <utility>

#include "platform/CascadeFile.h"
#include "platform/CascadeScreen.h"
#include "widgets/EUtils.h"

MThemeSelect g_ThemeSelect;

namespace {

constexpr int kForcedWidth = 270;    // pixels: buttons and spinners of all themes fill the same column

struct BitmapRow {
    const char* picture;    // relative to a theme folder
    bool forceWidth;
};

// On purpose all three states of the small button show the same picture.
constexpr BitmapRow kBitmaps[] = {
    {"common/dialog.png", false},
    {"common/textbutton-narrow-normal.png", true},
    {"common/textbutton-narrow-highlight.png", true},
    {"common/textbutton-narrow-disabled.png", true},
    {"common/textbutton-small-disabled.png", false},
    {"common/textbutton-small-disabled.png", false},
    {"common/textbutton-small-disabled.png", false},
    {"common/spinner-narrow-normal.png", true},
    {"common/spinner-narrow-highlight.png", true},
};
static_assert(sizeof kBitmaps / sizeof kBitmaps[0] == MThemeSelect::kThemeBitmapCount);

}    // namespace

std::vector<MThemeSelect::Theme> MThemeSelect::PlatformTheme()
{
    return {{CascadeString(CascadeGraphicsFolder()), CascadeString("Cascade")}};
}

void MThemeSelect::SetAppFolder(const char* folder)
{
    m_AppFolder = folder;
    m_CommonFolder = m_AppFolder + "Themes/Common/";
    m_Themes = PlatformTheme();
    m_nCurrent = 0;
    ClearBitmapCache();

    const CascadeString themes = m_AppFolder + "Themes";
    if (!CascadeFSObject::Exists(themes)) {
        return;
    }
    std::printf("%s exists\n", themes.Text());
    const CascadeDirScanner scanner(themes);
    for (size_t i = 0; i < scanner.GetNumEntries(); ++i) {
        const CascadeString& name = scanner.GetEntryName(i);
        if (!scanner.EntryIsDirectory(i) || name.Compare("Common", false) == 0) {
            continue;
        }
        m_Themes.push_back({themes + "/" + name + "/", name});
        std::printf("found %s\n", m_Themes.back().folder.Text());
    }
}

bool MThemeSelect::SetTheme(const char* name)
{
    ClearBitmapCache();
    for (size_t i = 0; i < m_Themes.size(); ++i) {
        if (m_Themes[i].name.Compare(name, false) == 0) {
            m_nCurrent = i;
            return true;
        }
    }
    return false;
}

const char* MThemeSelect::GetThemeNameAt(unsigned long index) const
{
    return index < m_Themes.size() ? m_Themes[index].name.Text() : nullptr;
}

CascadeString MThemeSelect::GetCommonImagePath(const char* name) const
{
    return m_CommonFolder + name;
}

CascadeString MThemeSelect::GetThemeImagePath(const char* name) const
{
    const CascadeString own = GetThemeImagesFolder() + name;
    return CascadeFSObject::Exists(own) ? own : m_Themes[0].folder + name;
}

CascadeBitmap* MThemeSelect::GetThemeBitmap(ThemeBitmaps which)
{
    std::unique_ptr<CascadeBitmap>& cached = m_Bitmaps[which];
    if (cached != nullptr) {
        return cached.get();
    }
    const BitmapRow& row = kBitmaps[which];
    auto loaded = std::make_unique<CascadeBitmap>();
    EUtils::LoadBitmapFromFile(*loaded, GetThemeImagesFolder() + row.picture, m_Themes[0].folder + row.picture);
    const int height = loaded->GetDims().height;
    if (row.forceWidth && !loaded->IsEmpty()) {
        auto copy = std::make_unique<CascadeBitmap>();
        if (copy->Create(kForcedWidth, height)) {
            copy->StretchBlit({0, 0, kForcedWidth, height}, *loaded);
            loaded = std::move(copy);
        }
    }
    cached = std::move(loaded);
    return cached.get();
}

void MThemeSelect::ClearBitmapCache()
{
    for (auto& bitmap : m_Bitmaps) {
        bitmap.reset();
    }
}
