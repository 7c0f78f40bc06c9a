// Where the pictures of the player's dialogs, buttons and icons are: the installed themes, the one in use,
// and the folder of common images that all of them share.
//
// Errors:    a missing theme or picture falls back to the platform's own folder, theme 0.
// Threads:   the user-interface thread.
// Ownership: owns the pictures it hands out; they live until the theme changes or the cache is cleared.
//            One instance for the whole process, `g_ThemeSelect`.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeString.h"

class MThemeSelect {
public:
    enum ThemeBitmaps : unsigned {
        kDialog,
        kButtonNormal,
        kButtonHighlight,
        kButtonDisabled,
        kSmallButtonNormal,
        kSmallButtonHighlight,
        kSmallButtonDisabled,
        kSpinnerNormal,
        kSpinnerHighlight,
        kThemeBitmapCount
    };

    void SetAppFolder(const char* folder);    // with a trailing "/"; looks for themes
    bool SetTheme(const char* name);    // false, and nothing changes but the cache, when there is no such theme

    size_t GetNumThemes() const { return m_Themes.size(); }
    size_t GetThemeIndex() const { return m_nCurrent; }
    const char* GetThemeName() const { return m_Themes[m_nCurrent].name; }
    const char* GetThemeNameAt(unsigned long index) const;    // null past the end

    const CascadeString& GetThemeImagesFolder() const { return m_Themes[m_nCurrent].folder; }
    const CascadeString& GetCommonImagesFolder() const { return m_CommonFolder; }
    CascadeString GetCommonImagePath(const char* name) const;    // whether or not it exists
    CascadeString GetThemeImagePath(const char* name) const;    // of the theme, else of theme 0

    CascadeBitmap* GetThemeBitmap(ThemeBitmaps which);    // never null; empty when no folder has the picture
    void ClearBitmapCache();

private:
    struct Theme {
        CascadeString folder;
        CascadeString name;
    };
    static std::vector<Theme> PlatformTheme();

    CascadeString m_AppFolder;
    CascadeString m_CommonFolder;
    std::vector<Theme> m_Themes = PlatformTheme();    // never empty
    size_t m_nCurrent = 0;
    std::array<std::unique_ptr<CascadeBitmap>, kThemeBitmapCount> m_Bitmaps;
};

extern MThemeSelect g_ThemeSelect;
