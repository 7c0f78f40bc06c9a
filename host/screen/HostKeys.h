// Keys that are the host's own: they never reach the application.
//
// Threads:   the user-interface thread.
// Ownership: waits at its end for a picture that is still being written.
#pragma once

#include <cstdint>
#include <future>

namespace screen {

// Beyond the remote control's codes; docs/remote.md lists them with the others.
namespace HostKey {
inline constexpr uint32_t kScreenshot = 0x20001;    // writes the composed screen as a PNG, and says where
inline constexpr uint32_t kDevices = 0x20002;    // shows the phone remote's address and the paired devices
inline constexpr bool IsOne(uint32_t key) { return key == kScreenshot || key == kDevices; }
}    // namespace HostKey

class HostKeys {
public:
    void Press(uint32_t key);

private:
    std::future<void> m_Writer;
};

}    // namespace screen
