// The folder of volumes: from the kernel's table to the links, and in the company of others.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/library/MountTable.h"
#include "host/library/VolumeFolder.h"
#include "host/library/VolumeKeeper.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryFolder.h"

using namespace host;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Result = VolumeFolder::Result;
using Links = std::map<std::string, std::string>;

namespace {

constexpr const char* kMountInfo = R"(22 27 0:20 / /sys rw,nosuid shared:7 - sysfs sysfs rw
27 0 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw,errors=remount-ro
30 27 8:2 / /boot/efi rw shared:30 - vfat /dev/sda2 rw
31 27 8:3 / /home rw shared:31 - ext4 /dev/sda3 rw
32 27 8:1 /var/lib/box /etc/resolv.conf rw - ext4 /dev/sda1 rw
33 27 0:44 / /run/user/1000 rw shared:33 - tmpfs tmpfs rw
40 27 8:17 / /media/tv/My\040Films\134\011\303\251 rw,nosuid shared:40 - fuseblk /dev/sdb1 rw,user_id=0
41 27 0:50 / /mnt/server rw master:2 propagate_from:1 - nfs4 box:/films rw,vers=4.2
42 27 0:51 / /home/tv/share rw - cifs //box/share rw
43 27 8:17 / /mnt/again rw - fuseblk /dev/sdb1 rw
44 27 0:52 / /mnt/late rw - autofs systemd-1 rw
45 27 8:33 / /mnt/over rw - ext4 /dev/sdc1 rw
46 45 8:34 / /mnt/over rw - ext4 /dev/sdc2 rw
47 27 8:49 / /data rw - btrfs /dev/sdd1 rw
48 27 7:0 / /snap/core/1 ro - squashfs /dev/loop0 ro
49 27 11:0 / /media/cdrom0 ro - udf /dev/sr0 ro
50 27 0:60 / /home/tv/.cache/doc rw - fuse.portal portal rw
51 27 0:61 / / rw - nfs
broken line
)";

Links LinksIn(const std::string& folder)
{
    Links links;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_symlink()) {
            const std::string target = fs::read_symlink(entry.path());
            links[entry.path().filename()] = target.starts_with("/./") ? target.substr(2) : target;
        }
    }
    return links;
}

ino_t InodeOf(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

class VolumeFolderTest : public ::testing::Test {
protected:
    Result Show(const std::vector<VolumeLink>& volumes) { return VolumeFolder(m_Path + "/").Show(volumes); }

    TemporaryFolder m_Parent;
    const std::string m_Path = m_Parent / "Volumes";
};

}    // namespace

TEST(MountTableTest, ChoosesWhatAViewerLooksFor)
{
    const std::vector<Mount> mounts = ParseMounts(kMountInfo);
    EXPECT_EQ(mounts.size(), 17u);
    std::vector<std::string> folders;
    for (const Mount& mount : MountsWithFilms(mounts)) {
        folders.push_back(mount.folder);
    }
    EXPECT_THAT(folders, ElementsAre("/media/tv/My Films\\\té", "/mnt/server", "/home/tv/share", "/mnt/over", "/data", "/media/cdrom0"));
    EXPECT_EQ(MountsWithFilms(mounts)[3].source, "/dev/sdc2");

    EXPECT_TRUE(IsOnNetwork("/mnt/server/a/b", mounts));
    EXPECT_TRUE(IsOnNetwork("/home/tv/share", mounts));
    EXPECT_FALSE(IsOnNetwork("/home/tv/share2", mounts));
    EXPECT_FALSE(IsOnNetwork("/home/tv", mounts));
    EXPECT_THAT(ParseMounts(std::string(100, '\\') + "\n - - -\n\n1 2 3 4 5 6 -\n1 2 3 4 relative 6 - ext4 x"), IsEmpty());
}

TEST(VolumeNamesTest, AreCleanAndUniqueAndStay)
{
    const std::pair<const char*, const char*> kNames[] = {{"Films", "Films"}, {"a/b\nc", "a_b_c"}, {".hidden", "_hidden"}, {"..", "_."}, {"", "Disk"},
        {"  ", "Disk"}, {"Vidéos", "Vidéos"}, {"\xff\xfe", "\xef\xbf\xbd\xef\xbf\xbd"}};
    for (const auto& [given, clean] : kNames) {
        EXPECT_EQ(CleanVolumeName(given), clean);
    }
    std::string longName;
    for (int i = 0; i < 100; ++i) {
        longName += "日";
    }
    EXPECT_EQ(CleanVolumeName(longName), longName.substr(0, 120));
    EXPECT_EQ(CleanVolumeName("a" + longName), "a" + longName.substr(0, 117));

    const std::vector<VolumeLink> wanted = {{"Films", "/a"}, {"Films", "/b"}, {"Films", "/c"}};
    EXPECT_THAT(NameVolumes(wanted, {}, {"Films (2)"}),
        ElementsAre(VolumeLink {"Films", "/a"}, VolumeLink {"Films (3)", "/b"}, VolumeLink {"Films (4)", "/c"}));
    // The first is gone: the second keeps the name that the viewer knows.
    EXPECT_THAT(NameVolumes({{"Films", "/c"}, {"Films", "/b"}}, {{"Films", "/a"}, {"Films (2)", "/b"}}, {}),
        ElementsAre(VolumeLink {"Films", "/c"}, VolumeLink {"Films (2)", "/b"}));
    // Another disk in the same place.
    EXPECT_THAT(NameVolumes({{"Music", "/a"}}, {{"Films", "/a"}}, {}), ElementsAre(VolumeLink {"Music", "/a"}));
}

TEST(VolumeNamesTest, LabelsAreReadFromTheDevicesLinks)
{
    const TemporaryFolder devices;
    devices.Write("sdb1", "");
    fs::create_directory(devices / "by-label");
    fs::create_symlink("../sdb1", devices / "by-label/My\\x20Films\\x2f1\\x");
    fs::create_symlink("../gone", devices / "by-label/Gone");
    EXPECT_EQ(VolumeLabels(devices / "by-label"), (std::map<std::string, std::string> {{fs::canonical(devices / "sdb1"), "My Films/1\\x"}}));
    EXPECT_THAT(VolumeLabels(devices / "missing"), IsEmpty());
}

TEST(WantedVolumesTest, TheUsersFilmsComeFirst)
{
    const TemporaryFolder home;
    const std::string films = home / "Films";
    fs::create_directory(films);
    const std::vector<Mount> mounts = ParseMounts(kMountInfo);
    const std::vector<VolumeLink> wanted = WantedVolumes(mounts, {{"/dev/sdd1", "Archive"}}, films, home.Path());
    ASSERT_EQ(wanted.size(), 7u);
    EXPECT_EQ(wanted[0], (VolumeLink {"Videos", films}));
    EXPECT_EQ(wanted[2], (VolumeLink {"server", "/mnt/server"}));
    EXPECT_EQ(wanted[5], (VolumeLink {"Archive", "/data"}));

    const VolumeLink homeLink {"Home", home.Path()};
    EXPECT_THAT(WantedVolumes({}, {}, home / "missing", home.Path()), ElementsAre(homeLink));
    EXPECT_THAT(WantedVolumes({}, {}, home.Path(), home.Path()), ElementsAre(homeLink));
    // Not looked at, and not shown twice.
    EXPECT_EQ(WantedVolumes(mounts, {}, "/mnt/server", home.Path()).size(), 6u);
    EXPECT_EQ(WantedVolumes(mounts, {}, "/mnt/server", home.Path())[0], (VolumeLink {"Videos", "/mnt/server"}));
}

TEST_F(VolumeFolderTest, ShowsWhatIsMountedAndTouchesOnlyWhatChanged)
{
    ASSERT_EQ(Show({{"Films", "/mnt/a"}, {"Films", "/mnt/b"}, {"Videos", "/home/tv"}}), Result::kShown);
    EXPECT_EQ(LinksIn(m_Path), (Links {{"Films", "/mnt/a"}, {"Films (2)", "/mnt/b"}, {"Videos", "/home/tv"}}));
    const ino_t kept = InodeOf(m_Path + "/Films (2)");
    EXPECT_EQ(fs::read_symlink(m_Path + "/Films"), "/./mnt/a");

    ASSERT_EQ(Show({{"Films", "/mnt/b"}, {"Videos", "/home/tv"}, {"Films", "/mnt/a"}}), Result::kShown);
    EXPECT_EQ(InodeOf(m_Path + "/Films (2)"), kept);
    ASSERT_EQ(Show({{"Videos", "/home/tv"}, {"Films", "/mnt/b"}, {"Disc", "/mnt/c"}}), Result::kShown);
    EXPECT_EQ(LinksIn(m_Path), (Links {{"Films (2)", "/mnt/b"}, {"Videos", "/home/tv"}, {"Disc", "/mnt/c"}}));
    EXPECT_EQ(InodeOf(m_Path + "/Films (2)"), kept);
    EXPECT_EQ(Show({}), Result::kShown);
    EXPECT_THAT(LinksIn(m_Path), IsEmpty());
    fs::remove_all(m_Path);
    EXPECT_EQ(Show({{"Disc", "/mnt/c"}}), Result::kShown);    // cleared away under us
    EXPECT_EQ(LinksIn(m_Path).size(), 1u);
}

TEST_F(VolumeFolderTest, LeavesOthersFilesInItAlone)
{
    ASSERT_EQ(Show({{"A", "/mnt/a"}, {"B", "/mnt/b"}, {"C", "/mnt/c"}}), Result::kShown);
    fs::create_symlink("upnp:1234", m_Path + "/Server");
    fs::create_directory(m_Path + "/Disc");
    fs::remove(m_Path + "/A");    // the viewer's own in place of ours
    fs::create_symlink("/elsewhere", m_Path + "/A");
    fs::remove(m_Path + "/B");

    ASSERT_EQ(Show({{"Server", "/mnt/s"}, {"Disc", "/mnt/d"}, {"A", "/mnt/a"}}), Result::kShown);
    EXPECT_EQ(LinksIn(m_Path),
        (Links {{"Server", "upnp:1234"}, {"Server (2)", "/mnt/s"}, {"Disc (2)", "/mnt/d"}, {"A", "/elsewhere"}, {"A (2)", "/mnt/a"}}));
    ASSERT_EQ(Show({}), Result::kShown);
    EXPECT_EQ(LinksIn(m_Path), (Links {{"Server", "upnp:1234"}, {"A", "/elsewhere"}}));
    EXPECT_TRUE(fs::is_directory(m_Path + "/Disc"));
}

TEST_F(VolumeFolderTest, KeepsOutOfAFolderThatIsNotItsOwn)
{
    const std::vector<VolumeLink> volumes = {{"A", "/mnt/a"}};
    const auto isLeftAlone = [&] { return Show(volumes) == Result::kNotOurs; };

    fs::create_directory(m_Path);    // made by the user on purpose
    fs::create_symlink("/mnt/own", m_Path + "/Own");
    EXPECT_TRUE(isLeftAlone());
    EXPECT_EQ(LinksIn(m_Path), (Links {{"Own", "/mnt/own"}}));
    fs::remove(m_Path + "/Own");
    fs::permissions(m_Path, fs::perms(0777));    // others may put something in
    EXPECT_TRUE(isLeftAlone());
    fs::permissions(m_Path, fs::perms(0755));
    EXPECT_EQ(Show({}), Result::kShown);

    fs::rename(m_Path, m_Parent / "real");
    fs::create_symlink("real", m_Path);    // another user's link to a folder of ours
    EXPECT_TRUE(isLeftAlone());
    EXPECT_THAT(LinksIn(m_Parent / "real"), IsEmpty());
    fs::remove(m_Path);
    std::ofstream(m_Path).close();
    EXPECT_TRUE(isLeftAlone());
    fs::remove(m_Path);

    if (getuid() == 0) {
        fs::rename(m_Parent / "real", m_Path);
        fs::permissions(m_Parent.Path(), fs::perms(01777));
        const OrdinaryUser other;
        EXPECT_TRUE(isLeftAlone());
        EXPECT_THAT(LinksIn(m_Path), IsEmpty());
    }
}

TEST_F(VolumeFolderTest, WaitsForAnotherPlayerAndTakesOverWhatOneLeft)
{
    ASSERT_EQ(Show({{"A", "/mnt/a"}}), Result::kShown);
    const int other = open(m_Path.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    EXPECT_EQ(Show({{"B", "/mnt/b"}}), Result::kBusy);
    EXPECT_EQ(LinksIn(m_Path), (Links {{"A", "/mnt/a"}}));
    close(other);

    ASSERT_EQ(Show({{"B", "/mnt/b"}}), Result::kShown);    // what one left that was killed
    EXPECT_EQ(LinksIn(m_Path), (Links {{"B", "/mnt/b"}}));

    // Several at once.
    std::vector<std::thread> players;
    for (int i = 0; i < 4; ++i) {
        players.emplace_back([this] {
            for (int round = 0; round < 50; ++round) {
                static_cast<void>(
                    Show(round % 2 == 0 ? std::vector<VolumeLink> {{"B", "/mnt/b"}, {"C", "/mnt/c"}} : std::vector<VolumeLink> {{"C", "/mnt/c"}}));
            }
        });
    }
    for (std::thread& player : players) {
        player.join();
    }
    ASSERT_EQ(Show({{"C", "/mnt/c"}}), Result::kShown);
    EXPECT_EQ(LinksIn(m_Path), (Links {{"C", "/mnt/c"}}));
}
