#include "host/screen/HostKeys.h"

#include <cstdio>
#include <string>

#include "host/base/HostHooks.h"
#include "host/base/Pairing.h"

namespace screen {

void HostKeys::Press(uint32_t key)
{
    if (key == HostKey::kDevices && host::ThePairing() != nullptr) {
        host::ThePairing()->ShowDevices();
    }
    const bool isWriting = m_Writer.valid() && m_Writer.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
    if (key != HostKey::kScreenshot || isWriting || !host::Hooks().takeScreenshot) {
        return;
    }
    if (std::function<std::string()> write = host::Hooks().takeScreenshot()) {
        m_Writer = std::async(std::launch::async, [write = std::move(write)] {
            const std::string path = write();
            std::printf("Screenshot: %s\n", path.empty() ? "failed" : path.c_str());
            std::fflush(stdout);
        });
    }
}

}    // namespace screen
