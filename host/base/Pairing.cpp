#include "host/base/Pairing.h"

#include <atomic>

namespace host {
namespace {

std::atomic<Pairing*> g_pPairing {nullptr};

}    // namespace

Pairing* ThePairing()
{
    return g_pPairing;
}

void SetPairing(Pairing* pairing)
{
    g_pPairing = pairing;
}

}    // namespace host
