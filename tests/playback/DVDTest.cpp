// Titles of a DVD, from an image and from a copied folder: chapters, playing time, audio streams.
#include <unistd.h>

#include "platform/CascadeStream.h"
#include "sources/IFOCells.h"
#include "tests/playback/PlaybackFixture.h"
#include "tests/sources/DVDFixtures.h"

namespace {

class DVDTest : public PlaybackTest {
protected:
    DVDTest()
    {
        TestPlatform::SetResolutions({{720, 480}});
        m_Engine.SetClient(&m_Client);
    }
    ~DVDTest() override { m_Engine.DoTheClose(); }

    // The fixtures are linked into the test's folder: side files are written beside what is played.
    void Link(const std::string& fixture, const std::string& name)
    {
        std::filesystem::create_symlink(std::string(NUVID_FIXTURES "/") + fixture, m_Folder / name);
    }
    void LinkTitleSet(const std::string& leaveOut)
    {
        for (const auto& entry : std::filesystem::directory_iterator(InFolder(""))) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with("VTS_01") && name != leaveOut) {
                Link("dvd/VIDEO_TS/" + name, name);
            }
        }
    }
    // Opens, and answers what was printed.
    std::string Open(const std::string& path)
    {
        testing::internal::CaptureStdout();
        EXPECT_TRUE(m_Engine.DoTheOpen(path.c_str()));
        return testing::internal::GetCapturedStdout();
    }
    static std::vector<cell_info> Cells(const std::string& set) { return IFOCells(InFolder(set + "_0.IFO").c_str()).GetCells(); }
    std::string Where() { return std::string(m_Engine.GetCurFileName()) + "@" + std::to_string(m_Engine.GetCurFilePosition()); }
    static std::string At(const std::string& name, long long position) { return name + "@" + std::to_string(position); }

    RecordingClient m_Client;
    MDecoder m_Engine;
};

TEST_F(DVDTest, MarksOfATitleSetBelongToItsLocation)
{
    Link("dvd.iso", "film.iso");
    const std::vector<cell_info> cells = Cells("VTS_02");
    ASSERT_EQ(chdir(m_Folder.Path().c_str()), 0);
    const std::string name = "film.iso~VTS_02";
    for (const std::string& path : {m_Folder / name, name}) {    // a name alone too has its side file beside the image
        Open(path);
        EXPECT_EQ(m_Engine.NextChapter(), 2);
        EXPECT_EQ(m_Client.LastText(), "Chapter 2 of 2");
        EXPECT_EQ(Where(), At(name, cells[1].location));
        EXPECT_TRUE(TestDecoder::Pull() == TitleBytes("VTS_02").substr(static_cast<size_t>(cells[1].location), 192512));
        m_Client.texts.clear();
        EXPECT_EQ(m_Engine.NextChapter(), 1);    // neither another item nor another file
        EXPECT_EQ(m_Client.LastText(), "Chapter 1 of 2");

        tagBookmark here {name.c_str(), 1000001};
        ASSERT_TRUE(m_Engine.GoToBookmark(&here));
        EXPECT_TRUE(m_Engine.SetBookmark());
        EXPECT_EQ(m_Engine.PrevChapter(false), 1);
        EXPECT_EQ(m_Engine.NextBookmark(), 1);
        EXPECT_EQ(Where(), At(name, 999424));
        m_Engine.DoTheClose();
        EXPECT_NE(m_Folder.Read(name + ".nuvid").find("b " + At(name, 999424) + "\nz 0\nr " + At(name, 999424) + "\n"), std::string::npos);
        std::filesystem::remove(m_Folder / (name + ".nuvid"));
    }
}

// The size that a jump goes by is the position and the title's size together, on purpose.
TEST_F(DVDTest, JumpsInAnImage)
{
    Link("dvd.iso", "film.iso");
    Open(m_Folder / "film.iso~VTS_02");
    const auto size = static_cast<long long>(m_Engine.GetCurFileSize());
    m_Engine.SkipFW(4);    // 640000 * 4 - 1769472 = 790528
    EXPECT_EQ(m_Engine.GetCurFilePosition(), 790528U);
    testing::internal::CaptureStdout();
    m_Engine.SkipFW(8);    // 3350528 more: behind the end, before the sum
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("CurFileSize = " + std::to_string(size + 790528) + "\nTry 0: Seek failed!\nTrying reopening the file\n"), std::string::npos)
        << printed;
    EXPECT_EQ(m_Engine.GetCurFilePosition(), static_cast<unsigned long long>((size - 2000000) / 2048 * 2048));
    EXPECT_TRUE(m_Engine.ReOpen());
    EXPECT_TRUE(m_Engine.CurStreamIsISO());
}

TEST_F(DVDTest, AnImageWithoutInformationKeepsItsSavedChapters)
{
    std::string image = FileBytes(NUVID_FIXTURES "/dvd.iso");
    size_t renamed = 0;
    for (size_t at = image.find("VTS_02_0.IFO"); at != std::string::npos; at = image.find("VTS_02_0.IFO", at), ++renamed) {
        image.replace(at, 12, "VTS_02_0.XXX");
    }
    ASSERT_GT(renamed, 0U);
    m_Folder.Write("film.iso", image);
    m_Folder.Write("film.iso~VTS_02.nuvid", "#Nuvid File. Do not modify\nc film.iso~VTS_02@2048\n");
    EXPECT_NE(Open(m_Folder / "film.iso~VTS_02").find("IFO: No IFO found in DVD iso.\n"), std::string::npos);
    EXPECT_EQ(m_Engine.GetChapters().Size(), 1);
    EXPECT_EQ(m_Engine.GetDuration(), 0U);
    EXPECT_STREQ(m_Engine.GetAudioStr(0), "Audio 1 of 1");    // what the scanner found
    Open(m_Folder / "film.iso~VTS_07");    // a set that is not there is an empty one
    EXPECT_EQ(m_Engine.GetCurFileSize(), 0U);
    EXPECT_EQ(m_Engine.GetCurFileProgress(), 100);
    EXPECT_EQ(TestDecoder::Pull(), "");
}

TEST_F(DVDTest, AFolderMapsItsChaptersOntoTheFilesThatAreThere)
{
    LinkTitleSet("VTS_01_3.VOB");
    m_Folder.Write("VTS_01_0.VOB", std::string(300000, 'm'));    // the menu counts for no location
    const std::vector<cell_info> cells = Cells("VTS_01");
    const std::string printed = Open(m_Folder / "VTS_01_0.VOB");
    EXPECT_NE(printed.find("\nChapter added VTS_01_1.VOB @ 0\nChapter added VTS_01_1.VOB @ " + std::to_string(cells[1].location)
                  + "\nChapter NOT added. No file for absolute offset " + std::to_string(cells[2].location) + "\n"),
        std::string::npos)
        << printed;
    EXPECT_EQ(m_Engine.GetChapters().Size(), 2);
}

TEST_F(DVDTest, AnyRecordingMayHaveAnInformationFile)
{
    m_Folder.Write("clip1.mpg", Pattern(2000000, 1));
    m_Folder.Write("clip2.mpg", Pattern(2000000, 2));
    m_Folder.Write("clip.nuvid", "#Nuvid File. Do not modify\nc clip1.mpg@4096\n");
    EXPECT_NE(Open(m_Folder / "clip1.mpg").find("IFO: " + m_Folder / "clip.IFO" + " not found\n"), std::string::npos);
    EXPECT_EQ(m_Engine.GetChapters().Size(), 1);    // the saved ones stay

    Link("dvd/VIDEO_TS/VTS_02_0.IFO", "clip.IFO");
    Open(m_Folder / "clip2.mpg");
    EXPECT_EQ(m_Engine.GetChapters().Size(), 2);
    EXPECT_STREQ(m_Engine.GetChapters().Get(1)->name, "clip1.mpg");
    EXPECT_EQ(m_Engine.GetDuration(), 8U);
    m_Engine.DoTheClose();

    std::filesystem::remove(m_Folder / "clip.IFO");
    m_Folder.Write("clip.IFO", "no such thing\n");
    EXPECT_NE(Open(m_Folder / "clip1.mpg").find("Invalid IFO file: " + m_Folder / "clip.IFO" + "\nFound 0 chapters.\n"), std::string::npos);
    EXPECT_EQ(m_Engine.GetChapters().Size(), 0);
    EXPECT_EQ(m_Engine.GetDuration(), 0U);
}

}    // namespace
