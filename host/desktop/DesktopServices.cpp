// Starts and ends what a desktop has to do with the player.
#include <cstdlib>
#include <string>

#include <sys/stat.h>

#include "host/base/HostHooks.h"
#include "host/desktop/MprisBus.h"
#include "host/service/NetworkLoop.h"
#include "platform/CascadeApp.h"
#include "platform/CascadeInput.h"

namespace host {
namespace {

class Services {
public:
    static std::unique_ptr<Services>& Running()
    {
        static std::unique_ptr<Services> services;
        return services;
    }

    ~Services()
    {
        m_Loop.Post([this] { m_pBus.reset(); });
        m_Loop.Stop();
    }
    bool Start()
    {
        if (!m_Loop.Start()) {
            return false;
        }
        m_Loop.Post([this] { m_pBus = std::make_unique<MprisBus>(m_Loop.Context(), Player()); });
        return true;
    }

private:
    // To the user-interface thread; the services may be gone by the time that the work has its turn.
    static void OnUi(std::function<void(CascadeApp&)> work)
    {
        PostToUi([work = std::move(work)] {
            if (Running() != nullptr && CascadeApp::s_pTheApp != nullptr) {
                work(*CascadeApp::s_pTheApp);
            }
        });
    }
    static MprisPlayer Player();

    NetworkLoop m_Loop;
    std::unique_ptr<MprisBus> m_pBus;    // the desktop thread's
};

MprisPlayer Services::Player()
{
    MprisPlayer player;
    player.pressKey = [](uint32_t key) {
        OnUi([key](CascadeApp&) {
            CascadeInput::DispatchKeyDown(key);
            CascadeInput::DispatchKeyUp(key);
        });
    };
    player.skip = [](int seconds) { OnUi([seconds](CascadeApp& app) { app.OnSkipWanted(seconds); }); };
    player.open = [](std::string path) { OnUi([path = std::move(path)](CascadeApp& app) { app.OnOpenWanted(path); }); };
    player.quit = [] { OnUi([](CascadeApp& app) { app.Terminate(0); }); };
    player.ask = [](std::function<void(const CascadeNowPlaying&)> answer) {
        OnUi([answer = std::move(answer)](CascadeApp& app) {
            CascadeNowPlaying now;
            app.OnNowPlaying(now);
            Running()->m_Loop.Post([answer, now = std::move(now)] { answer(now); });
        });
    };
    return player;
}

// Without one, asking for it would start one.
bool IsThereASessionBus()
{
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') {
        return true;
    }
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    struct stat status {};
    return folder != nullptr && stat((std::string(folder) + "/bus").c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

}    // namespace

void StartDesktopServices()
{
    if (!IsThereASessionBus()) {
        return;
    }
    auto services = std::make_unique<Services>();
    if (services->Start()) {
        Services::Running() = std::move(services);
    }
}

void StopDesktopServices()
{
    const std::unique_ptr<Services> services = std::move(Services::Running());
}

}    // namespace host
