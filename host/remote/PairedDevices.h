// The devices that were paired: what each is called, and the hash of its token. The token itself is kept nowhere.
//
// Units:     at most kMost; one more takes the place of the oldest.
// Errors:    a line that is no record is left out.
// Threads:   one at a time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

class PairedDevices {
public:
    static constexpr size_t kMost = 16;

    struct Device {
        std::string hash;    // SHA-256 of the token, hexadecimal
        std::string label;
    };

    void Add(std::string_view token, std::string label);
    bool Knows(std::string_view token) const;
    bool Forget(std::string_view token);    // whether it was there
    bool ForgetAt(size_t index);
    void Clear() { m_Devices.clear(); }
    const std::vector<Device>& All() const { return m_Devices; }

    // One line a device, "HASH LABEL"; what is stored.
    std::vector<std::string> Lines() const;
    void Take(std::string_view line);

private:
    std::vector<Device> m_Devices;    // the oldest first
};

}    // namespace host
