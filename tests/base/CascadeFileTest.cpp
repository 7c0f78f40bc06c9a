#include "platform/CascadeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

namespace {

TEST(CascadeFileTest, TakesPathsApart)
{
    const std::string here = std::filesystem::current_path().string();
    struct Row {
        const char* path;
        std::string name;
        std::string extension;
        std::string full;
        std::string parent;
    };
    const Row rows[] = {
        {"/films/My Film.part.VOB", "My Film.part.VOB", "VOB", "/films/My Film.part.VOB", "/films"},
        {"/films.d/plain", "plain", "", "/films.d/plain", "/films.d"},
        {"/films/VIDEO_TS//", "VIDEO_TS", "", "/films/VIDEO_TS", "/films"},
        {"/films//a.mpg", "a.mpg", "mpg", "/films//a.mpg", "/films"},
        {"/a.mpg", "a.mpg", "mpg", "/a.mpg", "/"},
        {"/", "", "", "/", ""},
        {"", "", "", "", ""},
        {"a.", "a.", "", here + "/a.", here},
        {".//sub/a.mpg", "a.mpg", "mpg", here + "/sub/a.mpg", ".//sub"},
        {".", ".", "", here, std::filesystem::path(here).parent_path().string()},
        {"~/x", "x", "", here + "/~/x", "~"},
    };
    for (const Row& row : rows) {
        const CascadeFile file(row.path);
        EXPECT_EQ(file.GetName(), row.name) << row.path;
        EXPECT_EQ(file.GetFilenameExtension(), row.extension) << row.path;
        EXPECT_EQ(file.GetFullPath(), row.full) << row.path;
        EXPECT_EQ(file.GetParentPath(), row.parent) << row.path;
    }
}

TEST(CascadeFileTest, AsksTheDiskThroughLinks)
{
    const TemporaryFolder folder;
    folder.Write("file", "x");
    ASSERT_EQ(symlink(folder.Path().c_str(), (folder / "to-folder").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", (folder / "dangling").c_str()), 0);
    EXPECT_TRUE(CascadeFSObject((folder / "to-folder").c_str()).IsDirectory());
    EXPECT_FALSE(CascadeFSObject((folder / "file").c_str()).IsDirectory());
    EXPECT_TRUE(CascadeFSObject::Exists((folder / "file").c_str()));
    EXPECT_FALSE(CascadeFSObject::Exists((folder / "dangling").c_str()));
    EXPECT_FALSE(CascadeFSObject::Exists(nullptr));
}

class NoDots : public CascadeFSObject::Selector {
public:
    bool Match(CascadeFSObject& entry) override
    {
        asked.push_back(entry.GetPath().Str());
        return !entry.GetName().Contains(".", true) || entry.IsDirectory();
    }
    std::vector<std::string> asked;
};

TEST(CascadeDirScannerTest, ListsInByteOrderWithoutTheDotEntries)
{
    const TemporaryFolder folder;
    for (const char* const name : {"b_2.vob", "b_10.vob", "B_1.vob", "\xC3\xA4", "z", "a", ".hidden"}) {
        folder.Write(name, "");
    }
    ASSERT_EQ(mkdir((folder / "m.dir").c_str(), 0700), 0);
    ASSERT_EQ(symlink("m.dir", (folder / "n.link").c_str()), 0);

    const CascadeDirScanner scan(folder.Path().c_str());
    std::vector<std::string> names;
    std::vector<std::string> folders;
    for (size_t i = 0; i < scan.GetNumEntries(); ++i) {
        names.push_back(scan.GetEntryName(i).Str());
        if (scan.EntryIsDirectory(i)) {
            folders.push_back(names.back());
        }
    }
    EXPECT_EQ(names, (std::vector<std::string> {".hidden", "B_1.vob", "a", "b_10.vob", "b_2.vob", "m.dir", "n.link", "z", "\xC3\xA4"}));
    EXPECT_EQ(folders, (std::vector<std::string> {"m.dir", "n.link"}));

    // A selector sees the whole path, whether or not the folder was given with a slash at its end.
    NoDots noDots;
    const CascadeDirScanner some((folder.Path() + "/").c_str(), &noDots);
    EXPECT_EQ(some.GetNumEntries(), 5U);
    EXPECT_EQ(some.GetEntryName(1), "m.dir");
    EXPECT_TRUE(some.EntryIsDirectory(1));
    EXPECT_FALSE(some.EntryIsDirectory(0));
    EXPECT_EQ(noDots.asked.front(), folder / ".hidden");

    EXPECT_EQ(CascadeDirScanner((folder / "absent").c_str()).GetNumEntries(), 0U);
    EXPECT_EQ(CascadeDirScanner((folder / "a").c_str()).GetNumEntries(), 0U);
}

}    // namespace
