#include "widgets/EIconLoader.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "platform/CascadeFile.h"
#include "platform/CascadeJpegFile.h"
#include "platform/CascadeScreen.h"

namespace {

constexpr size_t kMostIcons = 32;    // a list shows a handful of different ones, or a few thumbnails at a time

bool Load(CascadeBitmap& picture, const char* path)
{
    // A photograph may be of any size; what is too large for a decoder is told by its header.
    if (CascadeFile(path).GetFilenameExtension().Compare("png", false) != 0) {
        CascadeJpegFile header;
        if (!header.Open(path)) {
            return false;
        }
    }
    return picture.CreateFromFile(path);
}

// As large as fits into the square, in its middle.
CascadeRect Fitted(const CascadeDims& dims, int size)
{
    const int longest = std::max({dims.width, dims.height, 1});
    const auto scaled = [&](int side) { return static_cast<int>(std::max<int64_t>(1, int64_t {side} * size / longest)); };
    const int width = scaled(dims.width);
    const int height = scaled(dims.height);
    return {(size - width) / 2, (size - height) / 2, width, height};
}

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
        if (Load(picture, key.first.c_str()) && icon.Create(key.second, key.second)) {
            icon.StretchBlit(Fitted(picture.GetDims(), key.second), picture);
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
    if (m_Loader.IsBusy()) {
        m_Wanted.clear();    // when it is done it asks for painting, and then what is on screen is wanted again
    }
    if (m_Wanted.empty()) {
        return;
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
