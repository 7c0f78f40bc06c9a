#include "host/remote/PairingDesk.h"

#include <ctime>

#include "platform/CascadeSettings.h"

namespace host {
namespace {

constexpr const char* kSection = "PairedDevices";

std::string KeyOf(size_t index)
{
    return "Device" + std::to_string(index + 1);
}

// "192.168.1.7, 21.11.2026": what tells a viewer which one it is.
std::string LabelOf(const std::string& who)
{
    char date[32];
    const time_t now = std::time(nullptr);
    tm local {};
    localtime_r(&now, &local);
    std::strftime(date, sizeof date, "%d.%m.%Y %H:%M", &local);
    return who + ", paired " + date;
}

}    // namespace

PairingDesk::PairingDesk(std::function<std::vector<std::string>()> addresses, bool isNeeded)
    : m_Addresses(std::move(addresses))
    , m_Self(std::make_shared<PairingDesk*>(this))
    , m_DevicesWindow({[this] { return Labels(); }, [this](size_t index) { ForgetAt(index); }})
{
    if (!isNeeded) {
        return;
    }
    const CascadeSettings settings(kSection);
    for (size_t i = 0; i < PairedDevices::kMost && settings.SectionExists(); ++i) {
        m_Devices.Take(settings.ReadStringValue(KeyOf(i).c_str(), "").Str());
    }
}

PairingDesk::~PairingDesk()
{
    *m_Self = nullptr;
}

void PairingDesk::OnUi(std::function<void(PairingDesk&)> work)
{
    PostToUi([self = m_Self, work = std::move(work)] {
        if (*self != nullptr) {
            work(**self);
        }
    });
}

bool PairingDesk::ShowCode(const std::string& who)
{
    const std::lock_guard lock(m_Mutex);
    const std::string digits = m_Code.Show(Clock::now());
    if (digits.empty()) {
        return false;
    }
    OnUi([digits, who, until = m_Code.Until()](PairingDesk& desk) { desk.m_CodeWindow.Display(digits, who, until); });
    return true;
}

PairAnswer PairingDesk::TryCode(std::string_view code, const std::string& who, std::string& token)
{
    const std::lock_guard lock(m_Mutex);
    const PairAnswer answer = m_Code.Try(code, Clock::now());
    if (answer == PairAnswer::kPaired) {
        token = RandomHex(16);
        m_nRevision += m_Devices.All().size() == PairedDevices::kMost ? 1 : 0;    // the oldest is forgotten
        m_Devices.Add(token, LabelOf(who));
        OnUi([](PairingDesk& desk) { desk.Store(); });
    }
    if (answer != PairAnswer::kWrong) {
        OnUi([](PairingDesk& desk) { desk.m_CodeWindow.Vanish(); });
    }
    return answer;
}

bool PairingDesk::Knows(std::string_view token)
{
    const std::lock_guard lock(m_Mutex);
    return m_Devices.Knows(token);
}

void PairingDesk::Forget(std::string_view token)
{
    const std::lock_guard lock(m_Mutex);
    if (m_Devices.Forget(token)) {
        ++m_nRevision;
        OnUi([](PairingDesk& desk) { desk.Store(); });
    }
}

void PairingDesk::ForgetAll()
{
    const std::lock_guard lock(m_Mutex);
    m_Devices.Clear();
    m_Code.Drop();
    ++m_nRevision;
    OnUi([](PairingDesk& desk) {
        desk.m_CodeWindow.Vanish();
        desk.Store();
    });
}

unsigned PairingDesk::Revision()
{
    const std::lock_guard lock(m_Mutex);
    return m_nRevision;
}

void PairingDesk::ShowDevices()
{
    OnUi([](PairingDesk& desk) { desk.m_DevicesWindow.Display(desk.m_Addresses()); });
}

std::vector<std::string> PairingDesk::Labels()
{
    const std::lock_guard lock(m_Mutex);
    std::vector<std::string> labels;
    for (const PairedDevices::Device& device : m_Devices.All()) {
        labels.push_back(device.label);
    }
    return labels;
}

void PairingDesk::ForgetAt(size_t index)
{
    {
        const std::lock_guard lock(m_Mutex);
        m_Devices.ForgetAt(index);
        ++m_nRevision;
    }
    Store();
}

void PairingDesk::Store()
{
    std::vector<std::string> lines;
    {
        const std::lock_guard lock(m_Mutex);
        lines = m_Devices.Lines();
    }
    lines.resize(PairedDevices::kMost);
    CascadeSettings settings(kSection);
    settings.CreateSection();
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string key = KeyOf(i);
        if (settings.ReadStringValue(key.c_str(), "").Str() != lines[i]) {
            settings.WriteStringValue(key.c_str(), lines[i].c_str());
        }
    }
    settings.Flush();
}

}    // namespace host
