#include "platform/CascadeSettings.h"

#include <string>
#include <utility>

#include "host/store/SettingsFile.h"

struct CascadeSettings::Impl {
    std::string section;
    std::shared_ptr<SettingsFile> file = SettingsFile::Get();
};

CascadeSettings::CascadeSettings(const char* section)
    : m_pImpl(std::make_unique<Impl>())
{
    m_pImpl->section = section == nullptr ? "" : section;
}

CascadeSettings::~CascadeSettings()
{
    Flush();
}

bool CascadeSettings::SectionExists() const
{
    return m_pImpl->file->HasSection(m_pImpl->section);
}

bool CascadeSettings::CreateSection()
{
    return m_pImpl->file->AddSection(m_pImpl->section);
}

int CascadeSettings::ReadIntegerValue(const char* key, int defaultValue) const
{
    int value = 0;
    return m_pImpl->file->ReadNumber(m_pImpl->section, key, value) ? value : defaultValue;
}

CascadeString CascadeSettings::ReadStringValue(const char* key, const char* defaultValue) const
{
    std::string value;
    return m_pImpl->file->ReadText(m_pImpl->section, key, value) ? CascadeString(std::move(value)) : CascadeString(defaultValue);
}

bool CascadeSettings::WriteIntegerValue(const char* key, int value)
{
    return WriteStringValue(key, std::to_string(value).c_str());
}

bool CascadeSettings::WriteStringValue(const char* key, const char* value)
{
    return m_pImpl->file->WriteText(m_pImpl->section, key, value);
}

bool CascadeSettings::Flush()
{
    return m_pImpl->file->Flush();
}
