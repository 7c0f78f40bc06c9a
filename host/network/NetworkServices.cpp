#include <cstdio>
#include <future>
#include <memory>
#include <vector>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/base/Pairing.h"
#include "host/base/UiQueue.h"
#include "host/network/ControlAdmission.h"
#include "host/network/ControlCommands.h"
#include "host/network/ControlServer.h"
#include "host/network/HttpStreamTransfer.h"
#include "host/service/NetworkLoop.h"

namespace host {
namespace {

using namespace std::chrono_literals;

// The last replies (the "OK" to a command that ends the program) are worth so long a wait.
constexpr auto kLastReplies = 200ms;

// Used on the user-interface thread alone.
struct Services {
    NetworkLoop loop;
    ControlServer control;
    std::vector<std::future<void>> workers;    // what answers later; the end waits for them
    bool isGuarded = false;    // other devices can connect: each has to be paired

    Services()
        : control(loop, [](uint64_t client, unsigned admission, std::string command) { Hand(client, admission, std::move(command)); })
    {
    }
    ~Services()
    {
        control.Stop(kLastReplies);
        loop.Stop();
    }
    static void Hand(uint64_t client, unsigned admission, std::string command);
    static void Answer(uint64_t client, std::string text);
    static void AnswerLater(uint64_t client, std::function<std::string()> work);
};

std::unique_ptr<Services>& Running()
{
    static std::unique_ptr<Services> services;
    return services;
}

// From the network thread to the user-interface thread and back. The services may be gone by the time that
// the command has its turn, or end while it is carried out.
void Services::Hand(uint64_t client, unsigned admission, std::string command)
{
    PostToUi([client, admission, command = std::move(command)] {
        if (Running() == nullptr) {
            return;
        }
        Pairing* const pairing = ThePairing();
        if (Running()->isGuarded && (pairing == nullptr || admission != pairing->Revision())) {
            const AdmissionReply reply = RunAdmissionCommand(command, pairing);
            if (reply.isAdmitted) {
                Running()->control.Admit(client, pairing->Revision());
            }
            Answer(client, reply.text);
            return;
        }
        ControlReply reply = RunControlCommand(command);
        if (reply.later) {
            AnswerLater(client, std::move(reply.later));
        } else {
            Answer(client, std::move(reply.text));
        }
    });
}

void Services::Answer(uint64_t client, std::string text)
{
    if (Running() != nullptr) {
        Running()->control.Reply(client, std::move(text));
    }
}

void Services::AnswerLater(uint64_t client, std::function<std::string()> work)
{
    if (Running() == nullptr) {
        return;
    }
    std::vector<std::future<void>>& workers = Running()->workers;
    std::erase_if(workers, [](const std::future<void>& worker) { return worker.wait_for(0s) == std::future_status::ready; });
    workers.push_back(std::async(std::launch::async, [client, work = std::move(work)] {
        PostToUi([client, text = work()] { Answer(client, text); });
    }));
}

}    // namespace

bool StartNetworkServices()
{
    if (CurrentHostOptions().opensHttp) {
        PrepareHttp();
    }
    const std::string& where = CurrentHostOptions().ecp;
    if (where == "off" || Running() != nullptr) {
        return true;
    }
    const ListenAddress address = ParseListenAddress(where);
    auto services = std::make_unique<Services>();
    std::string error = address.error;
    if (error.empty() && !services->loop.Start()) {
        error = "out of file descriptors";
    }
    if (error.empty()) {
        error = services->control.Start(address);
    }
    if (!error.empty()) {
        std::fprintf(stderr, "External control is off: %s\n", error.c_str());
        return false;
    }
    services->isGuarded = !address.isLoopback;
    std::printf("External control listens on %s%s\n", address.Text(services->control.Port()).c_str(), services->isGuarded ? ", for paired devices" : "");
    std::fflush(stdout);
    Running() = std::move(services);
    return true;
}

void StopNetworkServices()
{
    // Out of reach first: what is still queued for the user-interface thread finds nothing.
    const std::unique_ptr<Services> services = std::move(Running());
}

}    // namespace host
