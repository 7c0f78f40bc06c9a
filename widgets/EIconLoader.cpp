#include "widgets/EIconLoader.h"

#include <algorithm>
#include <mutex>

#include "platform/CascadeScreen.h"

namespace {

constexpr size_t kMostIcons = 64;    // a list shows a handful of different ones

}    // namespace

struct EIconLoader::Batch {
    std::vector<Key> wanted;
    std::mutex mutex;
    std::vector<std::pair<Key, CascadeBitmap>> loaded;    // guarded by mutex

    void Run(const std::atomic<bool>& stop);
};

// Each is drawn at its size here, so that painting a row only copies it.
void EIconLoader::Batch::Run(const std::atomic<bool>& stop)
{
    for (const Key& key : wanted) {
        if (stop) {
            return;
        }
        CascadeBitmap picture;
        CascadeBitmap icon;
        if (picture.CreateFromFile(key.first.c_str()) && icon.Create(key.second, key.second)) {
            icon.StretchBlit({0, 0, key.second, key.second}, picture);
        }
        const std::lock_guard lock(mutex);
        loaded.emplace_back(key, std::move(icon));
    }
}

EIconLoader::EIconLoader(CascadeWindow& window)
    : m_nResolution(CascadeScreen::GetCurrentOutputResolution())
    , m_Loader(window)
{
}

void EIconLoader::TakeLoaded()
{
    if (m_pBatch == nullptr) {
        return;
    }
    const std::lock_guard lock(m_pBatch->mutex);
    for (auto& [key, icon] : m_pBatch->loaded) {
        m_Icons.insert_or_assign(key, std::move(icon));
    }
    m_pBatch->loaded.clear();
}

const CascadeBitmap* EIconLoader::Find(const char* path, int size)
{
    if (*path == '\0') {
        return nullptr;
    }
    TakeLoaded();
    Key key(path, size);
    const auto found = m_Icons.find(key);
    if (found != m_Icons.end()) {
        return found->second.IsEmpty() ? nullptr : &found->second;
    }
    if (std::find(m_Wanted.begin(), m_Wanted.end(), key) == m_Wanted.end()) {
        m_Wanted.push_back(std::move(key));
    }
    return nullptr;
}

void EIconLoader::LoadWanted()
{
    if (m_Wanted.empty() || m_Loader.IsBusy()) {
        return;    // what is being read asks for painting when it is there, and then this is called again
    }
    TakeLoaded();
    std::erase_if(m_Wanted, [this](const Key& key) { return m_Icons.contains(key); });
    if (m_Icons.size() + m_Wanted.size() > kMostIcons) {
        m_Icons.clear();
    }
    m_pBatch = std::make_shared<Batch>();
    m_pBatch->wanted = std::move(m_Wanted);
    m_Wanted.clear();
    m_Loader.Start([batch = m_pBatch](const std::atomic<bool>& stop) { batch->Run(stop); });
}

void EIconLoader::Refresh()
{
    TakeLoaded();
    const unsigned resolution = CascadeScreen::GetCurrentOutputResolution();
    std::erase_if(m_Icons, [&](const auto& entry) { return entry.second.IsEmpty() || resolution != m_nResolution; });
    m_nResolution = resolution;
}

void EIconLoader::Stop()
{
    m_Loader.Stop();
    m_Wanted.clear();
}
