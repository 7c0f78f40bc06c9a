#include "sources/IsoDirectory.h"

#include <gtest/gtest.h>

#include "tests/sources/ImageBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr size_t kStart = 4096;    // of the folder that the tests read, in an image with blocks of 512 bytes

class IsoDirectoryTest : public ::testing::Test {
protected:
    // The folder of these bytes, which states `size`.
    IsoDirectoryEntry& Open(const std::string& bytes, size_t size = 2048)
    {
        EXPECT_TRUE(m_Stream.Open(CascadeFile(m_Folder.Write("image", std::string(kStart, 'x') + bytes).c_str())));
        const std::string root = ImageBuilder::Record(std::string(1, '\0'), kStart / 512, size, true);
        const IsoDirectory directory(m_Stream, 512);
        m_pEntry = directory.ReadRoot(std::span(reinterpret_cast<const uint8_t*>(root.data()), root.size()));
        EXPECT_TRUE(directory.ReadEntries(*m_pEntry));
        return *m_pEntry;
    }
    static std::string Names(const IsoDirectoryEntry& folder)
    {
        std::string names;
        for (const auto& directory : folder.directories) {
            names += directory->name.Str() + "/ ";
        }
        for (const auto& file : folder.files) {
            names += file->name.Str() + " ";
        }
        return names;
    }
    static std::string File(const std::string& name) { return ImageBuilder::Record(name, 1, 1, false); }

    TemporaryFolder m_Folder;
    CascadeFileStream m_Stream;
    std::unique_ptr<IsoDirectoryEntry> m_pEntry;
};

TEST_F(IsoDirectoryTest, ReadsNamesPositionsAndKinds)
{
    const std::string own = ImageBuilder::Record(std::string(1, '\0'), 8, 2048, true) + ImageBuilder::Record("\1", 8, 2048, true);
    const IsoDirectoryEntry& folder = Open(own + ImageBuilder::Record("B.VOB;1", 0xFFFFFFFF, 0xFFFFFFFF, false)
        + ImageBuilder::Record("SUB", 3, 4, true) + File("\xC4\xC3.VOB;12") + File("a.vob") + std::string(10, '\0'));
    EXPECT_EQ(Names(folder), "SUB/ B.VOB \xC4\xC3.VOB a.vob ");
    const IsoDirectoryEntry* const file = folder.GetFile("b.Vob");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->position, 0xFFFFFFFFULL * 512);
    EXPECT_EQ(file->size, 0xFFFFFFFFULL);
    EXPECT_EQ(folder.GetFile("SUB"), nullptr);
    EXPECT_EQ(folder.GetDirectory("b.vob"), nullptr);
    ASSERT_NE(folder.GetDirectory("sub"), nullptr);
    EXPECT_EQ(folder.GetDirectory("sub")->position, 1536U);
    EXPECT_EQ(Names(*folder.GetDirectory("sub")), "") << "a folder is read when it is asked for";

    CascadeTemplateArray<IsoDirectoryEntry*> found;
    folder.GetFiles("?.VOB", found);
    ASSERT_EQ(found.GetSize(), 3U);
    EXPECT_STREQ(found[0]->name, "B.VOB");
    EXPECT_STREQ(found[2]->name, "a.vob");
    folder.GetFiles("B.V", found);    // anywhere in the name
    EXPECT_EQ(found.GetSize(), 4U);
    folder.GetFiles("BxVOB", found);
    folder.GetFiles("B+", found);
    EXPECT_EQ(found.GetSize(), 4U);
}

TEST_F(IsoDirectoryTest, EndsAtTheFirstZero)
{
    // On purpose: what a folder has in its next sector is not seen.
    std::string twoSectors = File("A.VOB;1");
    twoSectors.resize(2048);
    EXPECT_EQ(Names(Open(twoSectors + File("B.VOB;1"), 4096)), "A.VOB ");

    // Without a zero in between it goes on.
    std::string full;
    while (full.size() + 40 <= 2048 - 48) {
        full += File("A.VOB;1");
    }
    full += File("FILLING." + std::string(2048 - full.size() - 33 - 8, 'x'));
    ASSERT_EQ(full.size(), 2048U);
    EXPECT_NE(Open(full + File("B.VOB;1"), 4096).GetFile("B.VOB"), nullptr);
    EXPECT_EQ(Open(full + File("B.VOB;1"), 2048).GetFile("B.VOB"), nullptr) << "the folder's own length";
    EXPECT_NE(Open(full, 0).GetFile("A.VOB"), nullptr) << "one sector is always looked at";
}

TEST_F(IsoDirectoryTest, StepsOverRecordsThatAreNone)
{
    EXPECT_EQ(Names(Open(std::string("\x05zzzz", 5) + File("A") + std::string(1, '\x21') + std::string(32, 'z') + File("B"))), "A B ");
    // The last record states more than there is.
    std::string cut = File("A") + File("LAST.VOB;1");
    cut.resize(cut.size() - 3);
    EXPECT_EQ(Names(Open(cut)), "A ");
    EXPECT_EQ(Names(Open("")), "");
    EXPECT_EQ(Names(Open(std::string(1, '\xFF') + std::string(254, 'n'))).size(), 255U - 33 + 2) << "a name that nothing ends but its record";
}

}    // namespace
