// The one object that pairs devices (host/base/Pairing.h): the code, the devices, what the television shows of
// them, and the settings store that keeps them.
//
// Threads:   construction and destruction on the user-interface thread, which alone touches windows and store; the
//            operations of Pairing from any.
// Ownership: owns its windows. What it has posted to the user-interface thread finds it gone and does nothing.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "host/base/Pairing.h"
#include "host/remote/PairedDevices.h"
#include "host/remote/PairingCode.h"
#include "host/remote/PairingWindows.h"

namespace host {

class PairingDesk : public Pairing {
public:
    // `addresses` says where the phone remote is to be found, for the viewer. Without `isNeeded`, when no server can
    // be reached from elsewhere, the store is left alone.
    PairingDesk(std::function<std::vector<std::string>()> addresses, bool isNeeded);
    ~PairingDesk() override;
    PairingDesk(const PairingDesk&) = delete;
    PairingDesk& operator=(const PairingDesk&) = delete;

    bool ShowCode(const std::string& who) override;
    PairAnswer TryCode(std::string_view code, const std::string& who, std::string& token) override;
    bool Knows(std::string_view token) override;
    void Forget(std::string_view token) override;
    void ForgetAll() override;
    unsigned Revision() override;
    void ShowDevices() override;

private:
    void OnUi(std::function<void(PairingDesk&)> work);
    void ForgetAt(size_t index);
    void Store();
    std::vector<std::string> Labels();

    const std::function<std::vector<std::string>()> m_Addresses;
    const std::shared_ptr<PairingDesk*> m_Self;    // the target is null once this is gone; the user-interface thread's
    CodeWindow m_CodeWindow;
    DevicesWindow m_DevicesWindow;

    std::mutex m_Mutex;
    PairingCode m_Code;    // the rest is guarded by m_Mutex
    PairedDevices m_Devices;
    unsigned m_nRevision = 1;
};

}    // namespace host
