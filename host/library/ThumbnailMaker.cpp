#include "host/library/ThumbnailMaker.h"

#include <cairo.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "host/library/FrameGrab.h"
#include "host/library/RecordingLength.h"

namespace host {
namespace {

constexpr int kMostEntries = 4096;    // of a DVD's folder, which has a few hundred at most
constexpr off_t kVolumeDescriptor = 16 * 2048;    // ECMA-119 6.2.1

std::string Resolved(const std::string& path)
{
    std::array<char, PATH_MAX> whole;
    return realpath(path.c_str(), whole.data()) == nullptr ? "" : whole.data();
}

// An image may be named with its title set: "film.iso~VTS_02".
std::string ResolvedFile(const std::string& path)
{
    const std::string whole = Resolved(path);
    const size_t tilde = path.rfind('~');
    return whole.empty() && tilde != std::string::npos ? Resolved(path.substr(0, tilde)) : whole;
}

std::string EncodePng(SmallPicture& picture)
{
    std::string png;
    cairo_surface_t* const surface = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(picture.pixels.data()), CAIRO_FORMAT_RGB24, picture.width, picture.height, picture.stride * 4);
    const cairo_write_func_t append = [](void* to, const unsigned char* bytes, unsigned count) {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
        return CAIRO_STATUS_SUCCESS;
    };
    const bool written = cairo_surface_write_to_png_stream(surface, append, &png) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return written ? png : "";
}

std::string OnePixelPng()
{
    SmallPicture pixel {1, 1, 1, {0}};
    return EncodePng(pixel);
}

// The number of the title set of "VTS_nn_m.VOB", 0: another name or the menu.
int TitleSetOf(const char* name)
{
    int set = 0;
    int part = 0;
    int end = 0;
    const bool matches
        = (std::sscanf(name, "VTS_%2d_%1d.VOB%n", &set, &part, &end) == 2 || std::sscanf(name, "vts_%2d_%1d.vob%n", &set, &part, &end) == 2);
    return matches && end == 12 && name[12] == '\0' && part > 0 ? std::clamp(set, 0, 99) : 0;
}

std::string MainVideoIn(const std::string& folder)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(folder.c_str()), closedir);
    struct TitleSet {
        off_t bytes = 0;
        std::string first;
    };
    std::array<TitleSet, 100> sets;
    for (int i = 0; dir != nullptr && i < kMostEntries; ++i) {
        const dirent* const entry = readdir(dir.get());
        if (entry == nullptr) {
            break;
        }
        struct stat status { };
        const int number = TitleSetOf(entry->d_name);
        if (number == 0 || fstatat(dirfd(dir.get()), entry->d_name, &status, 0) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        TitleSet& set = sets[size_t(number)];
        set.bytes += status.st_size;
        set.first = set.first.empty() ? entry->d_name : std::min(set.first, std::string(entry->d_name));
    }
    const TitleSet& main = *std::max_element(sets.begin(), sets.end(), [](const TitleSet& a, const TitleSet& b) { return a.bytes < b.bytes; });
    return main.bytes == 0 ? "" : folder + "/" + main.first;
}

bool IsDiscImage(int fd)
{
    char descriptor[6] {};
    return pread(fd, descriptor, sizeof descriptor, kVolumeDescriptor) == sizeof descriptor && std::string_view(descriptor + 1, 5) == "CD001";
}

Grab GrabFromFile(const std::string& file, const std::function<bool()>& stop, SmallPicture& picture)
{
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return Grab::kGivenUp;
    }
    struct stat status { };
    // A file without a byte is one that is about to be written.
    const bool hasBytes = fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
    const Grab grab = hasBytes ? GrabPicture(fd, status.st_size, IsDiscImage(fd), stop, picture) : Grab::kGivenUp;
    close(fd);
    return grab;
}

// Of a plain recording: what a DVD holds are several.
int LengthOfFile(const std::string& file, const std::function<bool()>& stop)
{
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status { };
    const bool isFile = fd >= 0 && fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && !IsDiscImage(fd);
    const int seconds = isFile ? RecordingLength(fd, status.st_size, stop) : 0;
    if (fd >= 0) {
        close(fd);
    }
    return seconds;
}

}    // namespace

std::string MainVideoOfDvd(const std::string& folder)
{
    for (const char* const under : {"", "/VIDEO_TS", "/video_ts"}) {
        if (const std::string video = MainVideoIn(folder + under); !video.empty()) {
            return video;
        }
    }
    return {};
}

ThumbnailMaker::ThumbnailMaker(std::string cacheFolder)
    : m_Cache(std::move(cacheFolder))
{
}

Thumbnail ThumbnailMaker::Make(const std::string& path, const std::function<bool()>& stop) const
{
    const std::string file = ResolvedFile(path);
    struct stat status { };
    if (file.empty() || stat(file.c_str(), &status) != 0 || !(S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))) {
        return {};
    }
    const ThumbnailCache::Subject subject {ThumbnailCache::UriOf(file), status.st_mtime};
    if (std::string known = m_Cache.Find(subject); !known.empty()) {
        const std::optional<int> seconds = ThumbnailCache::LengthIn(known);
        const bool isRecording = S_ISREG(status.st_mode);
        return {known, seconds ? *seconds : isRecording ? LengthOfFile(file, stop) : 0};
    }
    const std::string video = S_ISDIR(status.st_mode) ? MainVideoOfDvd(file) : file;
    if (video.empty() || m_Cache.HasFailed(subject) || stop()) {
        return {};
    }
    SmallPicture picture;
    const Grab grab = GrabFromFile(video, stop, picture);
    if (grab == Grab::kPicture) {
        const std::string png = EncodePng(picture);
        const int seconds = png.empty() || video != file ? 0 : LengthOfFile(file, stop);
        return {png.empty() ? "" : m_Cache.Keep(subject, png, seconds), seconds};
    }
    if (grab == Grab::kNothing) {
        m_Cache.KeepFailure(subject, OnePixelPng());
    }
    return {};
}

}    // namespace host
