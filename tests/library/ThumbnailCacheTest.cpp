// The cache as other programs know it: names and texts are those of the standard and of GLib.
#include "host/library/ThumbnailCache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "host/library/PngText.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryFolder.h"

using namespace host;
namespace fs = std::filesystem;

namespace {

// One grey pixel.
const std::string kPng = [] {
    constexpr unsigned char kBytes[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 0, 1, 0, 0, 0, 1, 8, 0, 0, 0, 0,
        0x3A, 0x7E, 0x9B, 0x55, 0, 0, 0, 10, 'I', 'D', 'A', 'T', 0x78, 0x9C, 0x63, 0xF8, 0x0F, 0, 1, 1, 1, 0, 0x1B, 0xB6, 0xEE, 0x56, 0, 0, 0, 0, 'I',
        'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    return std::string(reinterpret_cast<const char*>(kBytes), sizeof kBytes);
}();

const ThumbnailCache::Subject kSubject {"file:///home/jens/photos/me.png", 1078241235};
constexpr const char* kName = "c6ee772d9e49320e97ec29a7eb5b1697.png";    // the standard's own example

mode_t ModeOf(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

std::optional<PngTexts> TextsOf(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY);
    const std::optional<PngTexts> texts = ReadPngTexts(fd);
    close(fd);
    return texts;
}

}    // namespace

TEST(ThumbnailCacheTest, NamesFilesAsEveryProgramDoes)
{
    const std::pair<const char*, const char*> kUris[]
        = {{"/home/jens/photos/me.png", "file:///home/jens/photos/me.png"}, {"/a b/50% #1?.mpg", "file:///a%20b/50%25%20%231%3F.mpg"},
            {"/it's (1) [x] {y}~&=+@;,!$*.ts", "file:///it's%20(1)%20%5Bx%5D%20%7By%7D~&=+@%3B,!$*.ts"}, {"/日.ts", "file:///%E6%97%A5.ts"},
            {"/bad\xff\n.ts", "file:///bad%FF%0A.ts"}, {"relative.mpg", ""}, {"", ""}};
    for (const auto& [path, uri] : kUris) {
        EXPECT_EQ(ThumbnailCache::UriOf(path), uri);
    }
    const TemporaryFolder folder;
    EXPECT_EQ(ThumbnailCache(folder.Path()).Keep(kSubject, kPng), folder / "large/" + kName);
}

TEST(ThumbnailCacheTest, KeepsPicturesForTheUserAlone)
{
    const TemporaryFolder folder;
    const ThumbnailCache cache(folder / "new/thumbnails");
    EXPECT_EQ(cache.Find(kSubject), "");
    const std::string picture = cache.Keep(kSubject, kPng);
    EXPECT_EQ(cache.Find(kSubject), picture);
    EXPECT_EQ(cache.Keep(kSubject, kPng), picture);    // in place of the old one
    EXPECT_EQ(TextsOf(picture), (PngTexts {{"Thumb::URI", kSubject.uri}, {"Thumb::MTime", "1078241235"}, {"Thumb::Movie::Length", "0"}, {"Software", "Nuvid"}}));
    EXPECT_EQ(ModeOf(picture), 0600u);
    EXPECT_EQ(ModeOf(folder / "new/thumbnails/large"), 0700u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "new/thumbnails/large"), {}), 1);

    EXPECT_FALSE(cache.HasFailed(kSubject));
    cache.KeepFailure(kSubject, kPng);
    EXPECT_TRUE(cache.HasFailed(kSubject));
    EXPECT_FALSE(cache.HasFailed({kSubject.uri, kSubject.changed + 1}));
}

TEST(ThumbnailCacheTest, UsesOtherProgramsPicturesThatAreValid)
{
    const TemporaryFolder folder;
    fs::create_directories(folder / "x-large");
    fs::create_directories(folder / "large");
    const ThumbnailCache cache(folder.Path());
    const std::string valid = WithPngTexts(kPng, {{"Thumb::URI", kSubject.uri}, {"Thumb::MTime", "1078241235"}});
    const std::string late = valid.substr(0, valid.size() - 12);    // the end chunk, for texts behind the picture
    const std::string texts = valid.substr(33, valid.size() - kPng.size());

    folder.Write(std::string("x-large/") + kName, kPng.substr(0, kPng.size() - 12) + texts + kPng.substr(kPng.size() - 12));
    EXPECT_EQ(cache.Find(kSubject), folder / "x-large/" + kName);
    folder.Write(std::string("large/") + kName, valid);
    EXPECT_EQ(cache.Find(kSubject), folder / "large/" + kName);

    fs::remove_all(folder / "x-large");
    const std::string other = WithPngTexts(kPng, {{"Thumb::URI", "file:///other"}, {"Thumb::MTime", "1078241235"}});
    const std::string old = WithPngTexts(kPng, {{"Thumb::URI", kSubject.uri}, {"Thumb::MTime", "1078241234"}});
    for (const std::string& wrong : {other, old, kPng, late, valid.substr(0, 40), std::string("GIF89a"), std::string()}) {
        folder.Write(std::string("large/") + kName, wrong);
        EXPECT_EQ(cache.Find(kSubject), "");
    }
    // Every length is a lie once.
    for (size_t i = 8; i + 4 < valid.size(); ++i) {
        std::string lying = valid;
        lying.replace(i, 4, "\xff\xff\xff\xff");
        folder.Write(std::string("large/") + kName, lying);
        cache.Find(kSubject);
    }
    fs::remove(folder / "large/" + kName);
    ASSERT_EQ(mkfifo((folder / "large/" + kName).c_str(), 0600), 0);
    EXPECT_EQ(cache.Find(kSubject), "");
}

TEST(ThumbnailCacheTest, ACacheThatCannotBeWrittenKeepsNothing)
{
    const TemporaryFolder folder;
    const ThumbnailCache cache(folder / "closed/thumbnails");
    fs::create_directory(folder / "closed");
    fs::permissions(folder.Path(), fs::perms(0755));
    const OrdinaryUser user;
    EXPECT_EQ(cache.Keep(kSubject, kPng), "");
    cache.KeepFailure(kSubject, kPng);
    EXPECT_FALSE(cache.HasFailed(kSubject));
}
