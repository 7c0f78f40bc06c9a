// What phones and other people's web pages send: messages over the WebSocket, and the fields of requests.
#include "host/base/JsonText.h"
#include "host/base/ListenAddress.h"
#include "host/remote/PairedDevices.h"
#include "host/remote/server/PhoneMessage.h"
#include "host/remote/server/RequestRules.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto message = host::ParsePhoneMessage(text);
    if (message && message->IsKey() && message->key == 0) {
        std::abort();
    }
    // No host that is taken may hold anything but a number or "localhost".
    if (host::IsOurHost(text, "127.0.0.1", 4748) && text != "127.0.0.1:4748" && text != "localhost:4748" && text != "[127.0.0.1]:4748"
        && text.find_first_not_of("127.0localhost:4[]8") != std::string::npos) {
        std::abort();
    }
    host::IsOurOrigin(text, "127.0.0.1:4748");
    host::CookieNamed("NuvidRemote", text);
    if (const std::string code = host::CodeIn(text); !code.empty() && code.size() != 6) {
        std::abort();
    }
    host::JsonText(text);
    host::ParseListenAddress(text);
    host::PairedDevices devices;
    devices.Take(text);
    return 0;
}
