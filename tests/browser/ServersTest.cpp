// Media servers in the file browser: found ones, walking through one, and coming back.
#include "tests/browser/BrowserFixture.h"
#include "widgets/EUtils.h"

namespace {

using Object = CascadeUPnP::AVObject;

Object Container(const char* id, const char* title)
{
    Object object;
    object.id = id;
    object.title = title;
    return object;
}

Object Item(const char* id, const char* title, std::initializer_list<CascadeUPnP::AVResource> resources)
{
    Object object = Container(id, title);
    object.isItem = true;
    for (const auto& resource : resources) {
        object.resources.Append(resource);
    }
    return object;
}

CascadeUPnP::AVResource Resource(const char* protocol, const char* url, unsigned long long size = 0, const char* duration = "")
{
    return {protocol, url, duration, size};
}

class ServersTest : public BrowserFixture {
protected:
    using Strings = std::vector<std::string>;

    void EnterServer()
    {
        std::filesystem::create_symlink("upnp:" + std::string(kUuid), m_Folder / "lab");
        OpenAndList();
        MoveTo("lab");
        TestPlatform::PressKey(Remote::kSelect);
    }
    static void Answer(std::vector<Object> objects, CascadeUPnP::TransactionResult result = CascadeUPnP::kTransactionOK)
    {
        EXPECT_TRUE(TestUPnP::Answer({std::move(objects), result}));
    }

    static constexpr const char* kUuid = "00000000-1111-2222-3333-444444444444";
};

}    // namespace

TEST(ServerLocation, ComesBackAsItWas)
{
    const auto plain = ServerLocation::Parse("UPNP:abc^1~Videos^lost^2$7~Films^~^a~b~c");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->uuid, "abc");
    ASSERT_EQ(plain->crumbs.size(), 2u);
    EXPECT_EQ(plain->crumbs[1].id, "2$7");
    EXPECT_EQ(plain->crumbs[1].name, "Films");
    EXPECT_EQ(ServerLocation({"abc", {{"1", "Videos"}, {"2$7", "Films"}}}).Text(), "upnp:abc^1~Videos^2$7~Films");
    const ServerLocation odd {"abc", {{"a^b~c", "100% ~ ^"}, {"%41%7E", "x"}}};
    const auto back = ServerLocation::Parse(odd.Text());
    ASSERT_TRUE(back);
    ASSERT_EQ(back->crumbs.size(), 2u);
    EXPECT_EQ(back->crumbs[0].id, odd.crumbs[0].id);
    EXPECT_EQ(back->crumbs[0].name, odd.crumbs[0].name);
    EXPECT_EQ(back->crumbs[1].id, odd.crumbs[1].id);
    EXPECT_FALSE(ServerLocation::Parse("/films/upnp:abc"));
}

TEST_F(ServersTest, HandOutTheFirstMpegResourceAndTheWayBack)
{
    EnterServer();
    Answer({Container("2", "Video^~")});
    MoveTo("Video^~");
    TestPlatform::PressKey(Remote::kSelect);
    Answer({Item("2$1", "Film",
                {Resource("http-get:*:image/jpeg:*", "http://10.0.0.2/a.jpg"), Resource("http-get:*:VIDEO/MPEG:*", ""), Resource("http-get:*:Video/Mpeg:*", "http://10.0.0.2/a.mpg", 1000000, ""),
                    Resource("http-get:*:video/mpeg:*", "http://10.0.0.2/b.mpg", 2000000, "1:02:03.900")}),
        Item("2$2", "Song", {Resource("http-get:*:audio/mpeg:*", "http://10.0.0.2/a.mp3")})});
    EXPECT_STREQ(List().GetText(1, List().GetColumn("Size")), EUtils::GetFileSizeKBString(1000000));
    EXPECT_STREQ(List().GetText(1, List().GetColumn("Duration")), "1:02:03.900");
    EXPECT_STREQ(List().GetTag(2), "");
    MoveTo("Film");
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_EQ(m_Results.size(), 1u);
    EXPECT_EQ(m_Results[0].reason, EFileBrowser::kItemChosen);
    const FileInfo chosen = m_Results[0].info;
    EXPECT_EQ(chosen.path, "http://10.0.0.2/a.mpg");
    EXPECT_EQ(chosen.title, "Film");
    EXPECT_EQ(chosen.duration, 3723u);
    EXPECT_EQ(chosen.location, ("upnp:" + std::string(kUuid) + "^0~lab^2~Video%5E%7E").c_str());

    // Back to the same item of the same container.
    Prepare();
    m_pBrowser->SetSelectedFile(chosen.path);
    m_pBrowser->BrowseDirectory("Open File", chosen.location, m_Folder.Path().c_str(), m_Folder.Path().c_str(), EFileBrowser::kFilterAll, CascadeDirBrowser::kFilesAndFolders, OnResult, this);
    ASSERT_EQ(TestUPnP::Requests().back().objectId, "2");
    Answer({Item("2$0", "First", {}), Item("2$1", "Film", {Resource("http-get:*:video/mpeg:*", "http://10.0.0.2/a.mpg")})});
    EXPECT_EQ(Cursor(), "Film");
    TestPlatform::PressKey(Remote::kLeft);
    Answer({Container("1", "Music"), Container("2", "Video^~")});
    EXPECT_EQ(Cursor(), "Video^~");
}

TEST_F(ServersTest, ThatFailOrTakeTooLongCanBeLeft)
{
    EnterServer();
    const TestUPnP::Request request = TestUPnP::Requests().at(0);
    EXPECT_EQ(request.deviceUUID + " " + request.objectId + " " + request.filter + " " + request.sortCriteria, std::string(kUuid) + " 0 * +upnp:class,+dc:title");
    testing::internal::CaptureStdout();
    Answer({}, CascadeUPnP::kTransactionConnectionLost);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Match Count: 0\nError: failed\n");
    EXPECT_EQ(Names(), Strings({".."}));
    Press(Remote::kLeft);
    MoveTo("lab");
    TestPlatform::PressKey(Remote::kSelect);
    // Exit while the server is asked: its answer lists what has come.
    TestPlatform::PressKey(Remote::kExit);
    EXPECT_TRUE(m_Results.empty());
    EXPECT_TRUE(TestUPnP::WasCancelled());
    Answer({Container("1", "Music")}, CascadeUPnP::kTransactionCancelled);
    EXPECT_EQ(Names(), Strings({"..", "Music"}));
    // An answer to a browser that has gone elsewhere is not taken.
    MoveTo("Music");
    TestPlatform::PressKey(Remote::kSelect);
    m_pBrowser->SetCurrentFolder(m_Folder.Path().c_str());
    WaitForListing();
    Answer({Container("9", "Late")});
    EXPECT_EQ(Names(), Strings({"lab"}));
}

TEST_F(ServersTest, AppearAndVanishInTheTopFolder)
{
    m_Folder.WriteEach({"a.mpg", "b.mpg", "c.mpg"});
    OpenAndList();
    MoveTo("b.mpg");
    ASSERT_EQ(TestUPnP::Report("First", "u1"), 1);
    TestUPnP::Report("Second", "u2");
    EXPECT_EQ(Names(), Strings({"a.mpg", "b.mpg", "c.mpg", "First", "Second"}));
    testing::internal::CaptureStdout();
    TestUPnP::Report("Second", "u2");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Not mounting UPnP Device: Second\n");
    TestUPnP::Report("First", "u1", CascadeMediaServers::kVanished);
    EXPECT_EQ(Names(), Strings({"a.mpg", "b.mpg", "c.mpg", "Second"}));
    EXPECT_EQ(Cursor(), "b.mpg");
    // Into the one that is left, and back onto it although it is only found later.
    MoveTo("Second");
    TestPlatform::PressKey(Remote::kSelect);
    ASSERT_EQ(TestUPnP::Requests().back().deviceUUID, "u2");
    EXPECT_EQ(TestUPnP::Report("First", "u1"), 0);
    Answer({Container("1", "Music")});
    Press(Remote::kSelect);
    EXPECT_EQ(Cursor(), "a.mpg");
    TestUPnP::Report("First", "u1");
    TestUPnP::Report("Second", "u2");
    EXPECT_EQ(Cursor(), "Second");
    // The cursor's own server goes.
    TestUPnP::Report("Second", "u2", CascadeMediaServers::kVanished);
    EXPECT_EQ(Cursor(), "First");
    TestPlatform::PressKey(Remote::kExit);
    EXPECT_EQ(m_Results.size(), 1u);
    EXPECT_EQ(TestUPnP::Report("Third", "u3"), 0);
}
