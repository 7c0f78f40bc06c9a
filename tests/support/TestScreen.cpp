// The output's resolutions, the graphics folder and the settings store, in memory.
#include <charconv>
#include <utility>

#include "platform/CascadeScreen.h"
#include "platform/CascadeSettings.h"
#include "tests/support/TestInternals.h"
#include "tests/support/TestPlatform.h"

namespace {

struct ScreenState {
    std::vector<CascadeDims> resolutions {{1280, 720}};
    unsigned current = 0;
    bool refuse = false;
    std::vector<unsigned> changes;
    std::string graphics = "/graphics/";
};
ScreenState g_Screen;

TestPlatform::SettingsStore g_Store;
bool g_bRefuseSettings = false;

}    // namespace

CascadeDims CascadeScreen::GetDims()
{
    return {1280, 720};
}

bool CascadeScreen::GetSupportedOutputResolutionAt(unsigned index, CascadeDims& dims)
{
    if (index >= g_Screen.resolutions.size()) {
        return false;
    }
    dims = g_Screen.resolutions[index];
    return true;
}

unsigned CascadeScreen::GetCurrentOutputResolution()
{
    return g_Screen.current;
}

unsigned CascadeScreen::GetCurrentScreenResolution()
{
    return 0;
}

bool CascadeScreen::SetOutputResolution(unsigned index)
{
    if (g_Screen.refuse || index >= g_Screen.resolutions.size()) {
        return false;
    }
    g_Screen.current = index;
    g_Screen.changes.push_back(index);
    return true;
}

bool CascadeScreen::GetOutputResolutionScaleRect(unsigned index, CascadeRect& rect)
{
    CascadeDims dims;
    if (!GetSupportedOutputResolutionAt(index, dims)) {
        return false;
    }
    rect = {0, 0, dims.width, dims.height};
    return true;
}

const char* CascadeGraphicsFolder()
{
    return g_Screen.graphics.c_str();
}

struct CascadeSettings::Impl {
    std::string section;
    const std::string* Find(const char* key) const
    {
        const auto found = g_Store.find(section);
        if (found == g_Store.end() || !found->second.contains(key)) {
            return nullptr;
        }
        return &found->second.at(key);
    }
};

CascadeSettings::CascadeSettings(const char* section)
    : m_pImpl(std::make_unique<Impl>(Impl {section}))
{
}

CascadeSettings::~CascadeSettings() = default;

bool CascadeSettings::SectionExists() const
{
    return g_Store.contains(m_pImpl->section);
}

bool CascadeSettings::CreateSection()
{
    if (!g_bRefuseSettings) {
        g_Store[m_pImpl->section];
    }
    return !g_bRefuseSettings;
}

int CascadeSettings::ReadIntegerValue(const char* key, int defaultValue) const
{
    const std::string* const text = m_pImpl->Find(key);
    int value = 0;
    if (text == nullptr || std::from_chars(text->data(), text->data() + text->size(), value).ptr != text->data() + text->size() || text->empty()) {
        return defaultValue;
    }
    return value;
}

CascadeString CascadeSettings::ReadStringValue(const char* key, const char* defaultValue) const
{
    const std::string* const text = m_pImpl->Find(key);
    return text == nullptr ? CascadeString(defaultValue) : CascadeString(*text);
}

bool CascadeSettings::WriteIntegerValue(const char* key, int value)
{
    return WriteStringValue(key, std::to_string(value).c_str());
}

bool CascadeSettings::WriteStringValue(const char* key, const char* value)
{
    if (g_bRefuseSettings || !SectionExists()) {
        return false;
    }
    g_Store[m_pImpl->section][key] = value == nullptr ? "" : value;
    return true;
}

void TestInternals::ResetScreen()
{
    g_Screen = ScreenState();
    g_Store.clear();
    g_bRefuseSettings = false;
}

namespace TestPlatform {

void SetResolutions(std::vector<CascadeDims> resolutions, unsigned current)
{
    g_Screen.resolutions = std::move(resolutions);
    g_Screen.current = current;
}

void RefuseResolution(bool refuse)
{
    g_Screen.refuse = refuse;
}

const std::vector<unsigned>& ResolutionChanges()
{
    return g_Screen.changes;
}

void SetGraphicsFolder(const std::string& folder)
{
    g_Screen.graphics = folder;
}

SettingsStore& Settings()
{
    return g_Store;
}

void RefuseSettings(bool refuse)
{
    g_bRefuseSettings = refuse;
}

}    // namespace TestPlatform
