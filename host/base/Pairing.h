// Who beyond this device may drive the player: a code on the television makes a device known, a token in its hands
// proves that later.
//
// Units:     a code is six digits and lives two minutes; a token is 128 random bits as 32 hexadecimal digits.
// Threads:   any.
// Ownership: host/remote owns the one object, from before any server starts until after the last has ended.
#pragma once

#include <string>
#include <string_view>

namespace host {

enum class PairAnswer {
    kPaired,
    kWrong,
    kNoCode,    // none is shown (any more)
    kTooOften,
};

class Pairing {
public:
    virtual ~Pairing() = default;

    // Shows a code on the television. False: too many codes went by unused; not now. `who` is told to the viewer.
    virtual bool ShowCode(const std::string& who) = 0;
    // With kPaired the device is kept, and `token` is its proof.
    virtual PairAnswer TryCode(std::string_view code, const std::string& who, std::string& token) = 0;
    virtual bool Knows(std::string_view token) = 0;
    virtual void Forget(std::string_view token) = 0;
    virtual void ForgetAll() = 0;
    // Another number once any device was forgotten: who was let in before has to prove itself again.
    virtual unsigned Revision() = 0;
    virtual void ShowDevices() = 0;    // on the television, where they can be forgotten
};

// The one object; null: no server of this program needs it.
Pairing* ThePairing();
void SetPairing(Pairing* pairing);

}    // namespace host
