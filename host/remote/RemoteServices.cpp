// Starts and ends the phone remote and pairing, and carries the wishes of phones to the user-interface thread.
#include <cstdio>

#include <dlfcn.h>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/base/Module.h"
#include "host/base/ScreenFeed.h"
#include "host/base/UiQueue.h"
#include "host/remote/PairingDesk.h"
#include "host/remote/RemoteAddresses.h"
#include "host/remote/RemoteServer.h"
#include "host/remote/StateJson.h"
#include "host/service/ListenSocket.h"
#include "platform/CascadeApp.h"
#include "platform/CascadeInput.h"
#include "platform/CascadeNowPlaying.h"

namespace host {
namespace {

constexpr const char* kModule = "nuvid-remote.so";

class Services : private RemotePlayer {
public:
    static std::unique_ptr<Services>& Running()
    {
        static std::unique_ptr<Services> services;
        return services;
    }

    explicit Services(const ListenAddress& address, bool pairingIsNeeded)
        : m_Address(address)
        , m_Desk([this] { return Addresses(); }, pairingIsNeeded)
        , m_Listener(m_Loop, [this](GSocket* socket) { Serve(socket); })
    {
        SetPairing(&m_Desk);
    }
    ~Services() override;
    std::string Listen();
    std::vector<std::string> Addresses() const { return m_Listener.Port() == 0 ? std::vector<std::string>() : RemoteAddresses(m_Address, m_Listener.Port()); }

private:
    GMainContext* Context() override { return m_Loop.Context(); }
    void KeyDown(uint32_t key, Done done) override
    {
        OnUi([key] { CascadeInput::DispatchKeyDown(key); }, std::move(done));
    }
    void KeyUp(uint32_t key, Done done) override
    {
        OnUi([key] { CascadeInput::DispatchKeyUp(key); }, std::move(done));
    }
    void KeyHeld(uint32_t key, Done done) override
    {
        OnUi([key] { Hooks().repeatKey(key); }, std::move(done));
    }
    void Type(std::string utf8, Done done) override
    {
        OnUi([utf8 = std::move(utf8)] { Hooks().typeText(utf8); }, std::move(done));
    }
    void AskState(std::function<void(std::string)> answer) override;
    void AskPicture(uint64_t seen, std::function<void(std::shared_ptr<const FeedPicture>)> answer) override;
    Pairing& GetPairing() override { return m_Desk; }
    bool NeedsPairing() const override { return !m_Address.isLoopback; }

    void Serve(GSocket* socket);
    static void OnUi(std::function<void()> work, Done done);

    const ListenAddress m_Address;
    NetworkLoop m_Loop;
    PairingDesk m_Desk;
    ListenSocket m_Listener;
    std::unique_ptr<RemoteServer> m_pServer;    // the remote thread's
    bool m_bLoaded = false;    // the remote thread's: it was tried
};

Services::~Services()
{
    m_Loop.Post([this] {
        m_Listener.Finish();
        m_pServer.reset();
    });
    m_Loop.Stop();
    SetPairing(nullptr);
}

std::string Services::Listen()
{
    return m_Loop.Start() ? m_Listener.Start(m_Address) : "out of file descriptors";
}

// Loads the server for the first phone.
void Services::Serve(GSocket* socket)
{
    if (!m_bLoaded) {
        m_bLoaded = true;
        std::string error;
        void* const module = OpenModule(kModule, error);
        const auto make = module == nullptr ? nullptr : reinterpret_cast<decltype(&NuvidMakeRemoteServer)>(dlsym(module, "NuvidMakeRemoteServer"));
        m_pServer.reset(make == nullptr ? nullptr : make(*this));
        if (m_pServer == nullptr) {
            std::fprintf(stderr, "The phone remote cannot be served: %s\n", error.c_str());
        }
    }
    if (m_pServer != nullptr) {
        m_pServer->Serve(socket);
    } else {
        g_object_unref(socket);
    }
}

// There and back. The services may be gone by the time that the work has its turn.
void Services::OnUi(std::function<void()> work, Done done)
{
    PostToUi([work = std::move(work), done = std::move(done)] {
        if (Running() != nullptr) {
            work();
            Running()->m_Loop.Post(done);
        }
    });
}

void Services::AskState(std::function<void(std::string)> answer)
{
    PostToUi([answer = std::move(answer)] {
        if (Running() == nullptr) {
            return;
        }
        CascadeNowPlaying now;
        if (CascadeApp::s_pTheApp != nullptr) {
            CascadeApp::s_pTheApp->OnNowPlaying(now);
        }
        Running()->m_Loop.Post([answer, json = StateJson(now)] { answer(json); });
    });
}

void Services::AskPicture(uint64_t seen, std::function<void(std::shared_ptr<const FeedPicture>)> answer)
{
    PostToUi([seen, answer = std::move(answer)] {
        if (Running() != nullptr) {
            auto picture = Hooks().screenFeed ? Hooks().screenFeed(seen) : nullptr;
            Running()->m_Loop.Post([answer, picture = std::move(picture)] { answer(picture); });
        }
    });
}

bool IsBeyondLoopback(const std::string& where)
{
    const ListenAddress address = where == "off" ? ListenAddress() : ParseListenAddress(where);
    return address.error.empty() && !address.isLoopback;
}

}    // namespace

bool StartRemoteServices()
{
    const HostOptions& options = CurrentHostOptions();
    const bool off = options.remote == "off";
    const ListenAddress address = off ? ListenAddress() : ParseListenAddress(options.remote);
    auto services = std::make_unique<Services>(address, IsBeyondLoopback(options.remote) || IsBeyondLoopback(options.ecp));
    const std::string error = off ? "" : !address.error.empty() ? address.error : services->Listen();
    if (!error.empty()) {
        std::fprintf(stderr, "The phone remote is off: %s\n", error.c_str());
    }
    for (const std::string& where : services->Addresses()) {
        std::printf("Phone remote: %s\n", where.c_str());
    }
    std::fflush(stdout);
    Services::Running() = std::move(services);
    return error.empty();
}

void StopRemoteServices()
{
    // Out of reach first: what is still queued for the user-interface thread finds nothing.
    const std::unique_ptr<Services> services = std::move(Services::Running());
}

}    // namespace host
