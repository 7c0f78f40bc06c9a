// What a scan lists of real folders, and in which order.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "browser/FolderScan.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryFolder.h"

using ::testing::ElementsAre;

namespace {

class FolderScanTest : public ::testing::Test {
protected:
    FolderListing Scan(int filter = 0, const char* pattern = "", uint32_t minSize = 0,
        CascadeDirBrowser::SelectableObjectType selectable = CascadeDirBrowser::kFilesAndFolders)
    {
        FolderScanRequest request;
        request.folder = m_Folder / "";
        request.filter = filter;
        request.pattern = pattern;
        request.minSize = minSize;
        request.selectable = selectable;
        return ReadFolder(request, m_Stop);
    }
    static std::vector<std::string> Names(const FolderListing& listing)
    {
        std::vector<std::string> names;
        for (const FolderEntry& entry : listing.entries) {
            names.push_back(entry.name.Str());
        }
        return names;
    }
    static const FolderEntry* Find(const FolderListing& listing, const std::string& name)
    {
        for (const FolderEntry& entry : listing.entries) {
            if (entry.name == name.c_str()) {
                return &entry;
            }
        }
        ADD_FAILURE() << name << " is not listed";
        return nullptr;
    }
    void MakeFolder(const std::string& name) { ASSERT_EQ(0, mkdir((m_Folder / name).c_str(), 0755)); }
    void Link(const std::string& target, const std::string& name) { ASSERT_EQ(0, symlink(target.c_str(), (m_Folder / name).c_str())); }

    TemporaryFolder m_Folder;
    JobStop m_Stop {false};
};

TEST_F(FolderScanTest, FoldersComeFirstAndCaseDoesNotCount)
{
    m_Folder.WriteEach({"beta.mpg", "Alpha.mpg", "alpha.mpg", "zeta.ts", "_.mpg", "abcdefghZ.mpg", "ABCDEFGHa.mpg"});
    for (const char* name : {"zoo", "Attic", "System Volume Information", "RECYCLER", "recycler"}) {
        MakeFolder(name);
    }
    const FolderListing listing = Scan();
    EXPECT_THAT(Names(listing),
        ElementsAre("Attic", "recycler", "zoo", "_.mpg", "ABCDEFGHa.mpg", "abcdefghZ.mpg", "Alpha.mpg", "alpha.mpg", "beta.mpg", "zeta.ts"));
    for (size_t i = 1; i < listing.entries.size(); ++i) {
        EXPECT_LE(CustomSort(listing.entries[i - 1], listing.entries[i]), 0) << listing.entries[i].name.Text();
    }
    EXPECT_EQ(0, CustomSort(*Find(listing, "Alpha.mpg"), *Find(listing, "alpha.mpg")));
}

TEST_F(FolderScanTest, FiltersByNumberPatternAndSize)
{
    m_Folder.Write("film_1.mpg", std::string(3000, 'x'));
    m_Folder.Write("film_2.mpg", std::string(2000, 'x'));
    m_Folder.Write("film.nuvid", "#Nuvid File. Do not modify\n");
    m_Folder.WriteEach({"film.jpg", "short.MPG", "list.Nuvidlist", "Thumbs.db", "folder.cfg"});
    EXPECT_THAT(Names(Scan(0)), ElementsAre("film.jpg", "film.nuvid", "film_1.mpg", "film_2.mpg", "list.Nuvidlist", "short.MPG"));
    EXPECT_THAT(Names(Scan(1)), ElementsAre("film.jpg", "film_1.mpg", "list.Nuvidlist", "short.MPG"));
    EXPECT_THAT(Names(Scan(3, "", 2001)), ElementsAre("film_1.mpg", "list.Nuvidlist"));
    EXPECT_THAT(Names(Scan(0, "*.mpg")), ElementsAre("film_1.mpg", "film_2.mpg", "list.Nuvidlist", "short.MPG"));
    EXPECT_THAT(Names(Scan(7, "", 0, CascadeDirBrowser::kFoldersOnly)), ElementsAre());

    const FolderListing folded = Scan(2, "", 2001);
    EXPECT_THAT(Names(folded), ElementsAre("film_1.mpg", "list.Nuvidlist"));
    const FolderEntry& film = *Find(folded, "film_1.mpg");
    EXPECT_EQ(3000U, film.size);
    EXPECT_EQ(5000U, film.totalSize);
    EXPECT_EQ(2U, film.parts);
    EXPECT_TRUE(film.hasSideFile);
    EXPECT_STREQ("film.jpg", film.extra);
    EXPECT_FALSE(Find(folded, "list.Nuvidlist")->hasSideFile);
    EXPECT_FALSE(Find(Scan(1), "film.jpg")->hasSideFile);
    EXPECT_GT(folded.hiddenFiles, 0U);
}

TEST_F(FolderScanTest, LinksAndSpecialFilesAreTakenForWhatTheyAre)
{
    MakeFolder("real");
    Link("real", "to folder");
    Link("missing", "stale.mpg");
    Link("ring b", "ring a");
    Link("ring a", "ring b");
    Link("UPNP:12-34", "Server");
    Link("upnp:there", "not a server.mpg");
    m_Folder.Write("upnp:there", "xy");
    ASSERT_EQ(0, mkfifo((m_Folder / "pipe.mpg").c_str(), 0600));
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (m_Folder / "socket.mpg").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(0, bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address));

    const FolderListing listing = Scan(2, "", 1);
    close(descriptor);
    EXPECT_TRUE(listing.holdsDevices);
    EXPECT_EQ(FolderEntry::kFolder, Find(listing, "to folder")->kind);
    EXPECT_EQ(FolderEntry::kDevice, Find(listing, "Server")->kind);
    EXPECT_STREQ("12-34", Find(listing, "Server")->extra);
    EXPECT_EQ(FolderEntry::kFile, Find(listing, "not a server.mpg")->kind);
    EXPECT_EQ(2U, Find(listing, "not a server.mpg")->size);
    // What cannot be asked for its size is not held back for it.
    EXPECT_EQ(0U, Find(listing, "stale.mpg")->size);
    EXPECT_EQ(FolderEntry::kFile, Find(listing, "ring a")->kind);
    // Devices stand among the files.
    EXPECT_EQ("real", Names(listing).front());
}

TEST_F(FolderScanTest, SaysWhyThereIsNothing)
{
    EXPECT_EQ(FolderListing::kRead, Scan().state);
    FolderScanRequest request;
    request.folder = m_Folder / "gone/deeper/";
    const FolderListing gone = ReadFolder(request, m_Stop);
    EXPECT_EQ(FolderListing::kGone, gone.state);
    EXPECT_EQ(m_Folder / "", gone.nearestParent.Str());
    m_Folder.Write("file", "x");
    request.folder = m_Folder / "file/";
    EXPECT_EQ(FolderListing::kGone, ReadFolder(request, m_Stop).state);

    MakeFolder("locked");
    ASSERT_EQ(0, chmod((m_Folder / "locked").c_str(), 0));
    ASSERT_EQ(0, chmod(m_Folder.Path().c_str(), 0755));
    request.folder = m_Folder / "locked/";
    {
        const OrdinaryUser user;
        EXPECT_EQ(FolderListing::kUnreadable, ReadFolder(request, m_Stop).state);
    }
    ASSERT_EQ(0, chmod((m_Folder / "locked").c_str(), 0755));
}

TEST_F(FolderScanTest, GivesUpWhenNobodyWaits)
{
    for (int i = 0; i < 100; ++i) {
        m_Folder.Write("file" + std::to_string(i), "x");
    }
    m_Stop = true;
    EXPECT_TRUE(Scan().entries.empty());
}

}    // namespace
