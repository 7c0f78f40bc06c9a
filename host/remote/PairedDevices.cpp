#include "host/remote/PairedDevices.h"

#include <algorithm>
#include <memory>

#include <glib.h>

namespace host {
namespace {

constexpr size_t kTokenDigits = 32;
constexpr size_t kHashDigits = 64;

bool IsHex(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

// Empty: no token.
std::string HashOf(std::string_view token)
{
    if (token.size() != kTokenDigits || !IsHex(token)) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> hash(g_compute_checksum_for_string(G_CHECKSUM_SHA256, token.data(), static_cast<gssize>(token.size())), &g_free);
    return hash.get();
}

}    // namespace

void PairedDevices::Add(std::string_view token, std::string label)
{
    if (m_Devices.size() >= kMost) {
        m_Devices.erase(m_Devices.begin());
    }
    m_Devices.push_back({HashOf(token), std::move(label)});
}

bool PairedDevices::Knows(std::string_view token) const
{
    const std::string hash = HashOf(token);
    return !hash.empty() && std::any_of(m_Devices.begin(), m_Devices.end(), [&hash](const Device& device) { return device.hash == hash; });
}

bool PairedDevices::Forget(std::string_view token)
{
    const std::string hash = HashOf(token);
    return !hash.empty() && std::erase_if(m_Devices, [&hash](const Device& device) { return device.hash == hash; }) != 0;
}

bool PairedDevices::ForgetAt(size_t index)
{
    if (index >= m_Devices.size()) {
        return false;
    }
    m_Devices.erase(m_Devices.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

std::vector<std::string> PairedDevices::Lines() const
{
    std::vector<std::string> lines;
    for (const Device& device : m_Devices) {
        lines.push_back(device.hash + " " + device.label);
    }
    return lines;
}

void PairedDevices::Take(std::string_view line)
{
    const std::string_view hash = line.substr(0, line.find(' '));
    if (hash.size() == kHashDigits && IsHex(hash) && m_Devices.size() < kMost) {
        const std::string_view label = line.substr(std::min(line.size(), hash.size() + 1));
        m_Devices.push_back({std::string(hash), std::string(label)});
    }
}

}    // namespace host
