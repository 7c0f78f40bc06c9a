#include "host/library/ThumbnailCache.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "host/library/PngText.h"

namespace host {
namespace {

constexpr const char* kUriText = "Thumb::URI";
constexpr const char* kTimeText = "Thumb::MTime";
constexpr const char* kLengthText = "Thumb::Movie::Length";    // seconds
constexpr const char* kOwnSize = "large";    // 256 pixels
constexpr const char* kUsableSizes[] = {"large", "x-large", "xx-large"};    // the smallest that is not too small
constexpr const char* kFailures = "fail/nuvid";

struct GFree {
    void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, GFree>;

std::string NameOf(const std::string& uri)
{
    const GText sum(g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.c_str(), gssize(uri.size())));
    return std::string(sum.get()) + ".png";
}

std::optional<PngTexts> TextsOf(const std::string& file)
{
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return std::nullopt;
    }
    struct stat status { };
    const bool isFile = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    std::optional<PngTexts> texts = isFile ? ReadPngTexts(fd) : std::nullopt;
    close(fd);
    return texts;
}

bool IsOf(const std::string& file, const ThumbnailCache::Subject& subject)
{
    const std::optional<PngTexts> texts = TextsOf(file);
    if (!texts) {
        return false;
    }
    const auto uri = texts->find(kUriText);
    const auto changed = texts->find(kTimeText);
    return uri != texts->end() && uri->second == subject.uri && changed != texts->end() && changed->second == std::to_string(subject.changed);
}

bool MakeFolders(const std::string& folder)
{
    for (size_t slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1)) {
        mkdir(folder.substr(0, slash).c_str(), 0700);    // the last step shows whether it worked
    }
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

bool WriteAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<size_t>(written));
    }
    return true;
}

// Not flushed to the medium: that would hold up the disk for something that can be made again.
bool Replace(const std::string& folder, const std::string& name, const std::string& bytes)
{
    if (!MakeFolders(folder)) {
        return false;
    }
    std::string temporary = folder + "/.nuvid-XXXXXX";
    const int fd = mkostemp(temporary.data(), O_CLOEXEC);    // mode 0600
    if (fd < 0) {
        return false;
    }
    const bool written = WriteAll(fd, bytes);
    if (close(fd) != 0 || !written || rename(temporary.c_str(), (folder + "/" + name).c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

std::string Labelled(const ThumbnailCache::Subject& subject, const std::string& png, int seconds)
{
    return WithPngTexts(png,
        {{kUriText, subject.uri}, {kTimeText, std::to_string(subject.changed)}, {kLengthText, std::to_string(seconds)}, {"Software", "Nuvid"}});
}

}    // namespace

ThumbnailCache::ThumbnailCache(std::string folder)
    : m_Folder(std::move(folder))
{
}

std::string ThumbnailCache::UriOf(const std::string& path)
{
    const GText uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    return uri == nullptr ? "" : uri.get();
}

std::string ThumbnailCache::Find(const Subject& subject) const
{
    for (const char* const size : kUsableSizes) {
        const std::string file = m_Folder + "/" + size + "/" + NameOf(subject.uri);
        if (IsOf(file, subject)) {
            return file;
        }
    }
    return {};
}

std::string ThumbnailCache::Keep(const Subject& subject, const std::string& png, int seconds) const
{
    const std::string folder = m_Folder + "/" + kOwnSize;
    const std::string name = NameOf(subject.uri);
    return Replace(folder, name, Labelled(subject, png, seconds)) ? folder + "/" + name : "";
}

std::optional<int> ThumbnailCache::LengthIn(const std::string& picture)
{
    const std::optional<PngTexts> texts = TextsOf(picture);
    const auto found = texts ? texts->find(kLengthText) : PngTexts::const_iterator();
    if (!texts || found == texts->end()) {
        return std::nullopt;
    }
    int seconds = 0;
    const std::string& text = found->second;
    // Other programs may write a fraction.
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return error == std::errc() && seconds >= 0 && end != text.data() ? std::optional(seconds) : std::nullopt;
}

bool ThumbnailCache::HasFailed(const Subject& subject) const
{
    return IsOf(m_Folder + "/" + kFailures + "/" + NameOf(subject.uri), subject);
}

void ThumbnailCache::KeepFailure(const Subject& subject, const std::string& png) const
{
    Replace(m_Folder + "/" + kFailures, NameOf(subject.uri), Labelled(subject, png, 0));
}

}    // namespace host
