#include "platform/CascadeThumbnail.h"

#include <glib.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/base/UiQueue.h"
#include "host/library/BackgroundThread.h"
#include "host/library/ThumbnailMaker.h"
#include "host/library/ThumbnailService.h"
#include "platform/CascadeApp.h"

namespace host {
namespace {

using namespace std::chrono_literals;

// A worker that is decoding ends within this; one that a dead disk holds is left behind.
constexpr auto kLastStep = 300ms;

struct Job {
    uint64_t number;
    std::string path;
};

// What the worker and the user-interface thread share; it lives as long as either.
struct Desk {
    std::mutex mutex;
    std::condition_variable condition;
    std::deque<Job> waiting;    // guarded by mutex
    uint64_t running = 0;    // guarded by mutex; 0: none
    bool posting = false;    // guarded by mutex
    bool ending = false;    // guarded by mutex
    std::atomic<bool> unwanted {false};    // whether the running job's answer is
};

struct Outstanding {
    CascadeThumbnails::Client* client;
    std::string path;
};

// Used on the user-interface thread alone. Never freed: clients may outlive everything else.
struct Service {
    std::map<uint64_t, Outstanding> outstanding;    // by job number
    uint64_t lastNumber = 0;
    std::shared_ptr<Desk> desk;
    BackgroundThread worker;
};

Service& TheService()
{
    static Service* const service = new Service;
    return *service;
}

void Answer(uint64_t number, const Thumbnail& thumbnail)
{
    auto& outstanding = TheService().outstanding;
    const auto found = outstanding.find(number);
    if (found == outstanding.end()) {
        return;    // cancelled meanwhile
    }
    if (UiWaitDepth() > 0 && CascadeApp::s_pTheApp != nullptr) {    // some event is not over: not into the middle of it
        CascadeApp::s_pTheApp->PostAfterWait([number, thumbnail] { Answer(number, thumbnail); });
        return;
    }
    const Outstanding answered = found->second;
    outstanding.erase(found);    // before the call: the client may ask anew in it, or go
    answered.client->OnThumbnail(answered.path.c_str(), thumbnail.picture.c_str(), thumbnail.seconds);
}

void Work(Desk& desk)
{
    const ThumbnailMaker maker(std::string(g_get_user_cache_dir()) + "/thumbnails");
    std::unique_lock lock(desk.mutex);
    while (true) {
        desk.condition.wait(lock, [&desk] { return desk.ending || !desk.waiting.empty(); });
        if (desk.ending) {
            return;
        }
        const Job job = desk.waiting.front();
        desk.waiting.pop_front();
        desk.running = job.number;
        desk.unwanted = false;
        lock.unlock();
        const Thumbnail thumbnail = maker.Make(job.path, [&desk] { return desk.unwanted.load(); });
        lock.lock();
        desk.running = 0;
        if (desk.ending) {
            return;
        }
        // Outside the lock, which a wake of the loop must not meet; the end waits for it.
        desk.posting = true;
        lock.unlock();
        PostToUi([number = job.number, thumbnail] { Answer(number, thumbnail); });
        lock.lock();
        desk.posting = false;
        desk.condition.notify_all();
    }
}

bool EnsureWorker(Service& service)
{
    if (service.worker.IsStarted()) {
        return true;
    }
    service.desk = std::make_shared<Desk>();
    return service.worker.Start("nuvid-thumbs", [desk = service.desk] { Work(*desk); });
}

}    // namespace

void StopThumbnails()
{
    Service& service = TheService();
    service.outstanding.clear();
    if (service.desk == nullptr) {
        return;
    }
    {
        std::unique_lock lock(service.desk->mutex);
        service.desk->ending = true;
        service.desk->unwanted = true;
        service.desk->condition.notify_all();
        service.desk->condition.wait(lock, [&service] { return !service.desk->posting; });
    }
    service.worker.Finish(kLastStep);
    service.desk = nullptr;
}

}    // namespace host

CascadeThumbnails::Client::~Client()
{
    Cancel(*this);
}

void CascadeThumbnails::Request(const char* path, Client& client)
{
    Cancel(client);
    host::Service& service = host::TheService();
    const uint64_t number = ++service.lastNumber;
    service.outstanding[number] = {&client, path == nullptr ? "" : path};
    if (!host::EnsureWorker(service)) {
        host::PostToUi([number] { host::Answer(number, {}); });
        return;
    }
    const std::lock_guard lock(service.desk->mutex);
    service.desk->waiting.push_back({number, service.outstanding[number].path});
    service.desk->condition.notify_all();
}

void CascadeThumbnails::Cancel(Client& client)
{
    host::Service& service = host::TheService();
    uint64_t number = 0;
    std::erase_if(service.outstanding, [&](const auto& entry) {
        const bool isClients = entry.second.client == &client;
        number = isClients ? entry.first : number;
        return isClients;
    });
    if (number == 0 || service.desk == nullptr) {
        return;
    }
    const std::lock_guard lock(service.desk->mutex);
    std::erase_if(service.desk->waiting, [number](const host::Job& job) { return job.number == number; });
    if (service.desk->running == number) {
        service.desk->unwanted = true;
    }
}
