// What phones and other people's web pages send: messages over the WebSocket, and the fields of requests.
#include "host/base/JsonText.h"
#include "host/base/ListenAddress.h"
#include "host/remote/PairedDevices.h"
#include "host/remote/server/PhoneMessage.h"
#include "host/remote/server/RequestRules.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto message = host::ParsePhoneMessage(text);
    Require(!message || !message->IsKey() || message->key != 0);
    // No host that is taken may hold anything but a number or "localhost".
    Require(!host::IsOurHost(text, "127.0.0.1", 4748) || text == "127.0.0.1:4748" || text == "localhost:4748" || text == "[127.0.0.1]:4748"
        || text.find_first_not_of("127.0localhost:4[]8") == std::string::npos);
    host::IsOurOrigin(text, "127.0.0.1:4748");
    host::CookieNamed("NuvidRemote", text);
    const std::string code = host::CodeIn(text);
    Require(code.empty() || code.size() == 6);
    host::JsonText(text);
    host::ParseListenAddress(text);
    host::PairedDevices devices;
    devices.Take(text);
    return 0;
}
