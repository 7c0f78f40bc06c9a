#include "browser/LinkTargets.h"

#include <sys/stat.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

struct Asking {
    std::string folder;
    std::vector<std::string> names;
    std::mutex mutex;
    std::condition_variable answered;
    std::vector<LinkTarget> targets;    // of the names so far
    bool givenUp = false;
};

LinkTarget AskOne(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return {};
    }
    return {S_ISDIR(status.st_mode) ? LinkTarget::kFolder : LinkTarget::kFile, status.st_size};
}

void AskAll(Asking& asking, size_t from)
{
    for (size_t i = from; i < asking.names.size(); ++i) {
        const LinkTarget target = AskOne(asking.folder + asking.names[i]);
        const std::lock_guard lock(asking.mutex);
        if (asking.givenUp) {
            return;
        }
        asking.targets.push_back(target);
        asking.answered.notify_all();
    }
}

// The answers that come while no single one takes too long.
std::vector<LinkTarget> AskFrom(const std::string& folder, const std::vector<std::string>& names, size_t from, const JobStop& stop)
{
    const auto asking = std::make_shared<Asking>();
    asking->folder = folder;
    asking->names = names;
    try {
        std::thread([asking, from] { AskAll(*asking, from); }).detach();
    } catch (const std::system_error&) {
        return {};
    }
    const size_t wanted = names.size() - from;
    std::unique_lock lock(asking->mutex);
    for (size_t before = 0; asking->targets.size() < wanted && !stop; before = asking->targets.size()) {
        if (!asking->answered.wait_for(lock, std::chrono::milliseconds(LinkTargets::kPatienceMs), [&] { return asking->targets.size() > before; })) {
            break;
        }
    }
    asking->givenUp = true;
    return asking->targets;
}

}    // namespace

std::vector<LinkTarget> LinkTargets::Ask(const std::string& folder, const std::vector<std::string>& names, const JobStop& stop)
{
    std::vector<LinkTarget> targets;
    for (int silent = 0; targets.size() < names.size() && silent < kMostSilent && !stop; ++silent) {
        const std::vector<LinkTarget> answers = AskFrom(folder, names, targets.size(), stop);
        targets.insert(targets.end(), answers.begin(), answers.end());
        if (targets.size() < names.size()) {
            targets.push_back({LinkTarget::kSilent, 0});
        }
    }
    targets.resize(names.size(), {LinkTarget::kSilent, 0});
    return targets;
}
