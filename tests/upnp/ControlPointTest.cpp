// The control point as the player uses it: through platform/, with its module, against a real media server
// and against announcements that lie.
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/CascadeMediaServers.h"
#include "platform/CascadeUPnP.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/UiThread.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/upnp/PrivateNetwork.h"

namespace {

constexpr const char* kMinidlna = "/usr/sbin/minidlnad";

// A real server over a folder of its own.
class MediaServer {
public:
    MediaServer(const std::string& name, const std::string& uuid, int port)
        : m_Name(name)
    {
        for (const char* folder : {"media/Movies", "db", "log"}) {
            std::filesystem::create_directories(m_Folder.Path() + "/" + folder);
        }
        for (const char* file : {"alpha.mpg", "beta.mpg"}) {
            std::filesystem::copy_file(NUVID_FIXTURES "/tiny.mpg", m_Folder.Path() + "/media/Movies/" + file);
        }
        std::ofstream(m_Folder.Path() + "/conf") << "port=" << port << "\nmedia_dir=V," << m_Folder.Path() << "/media\nfriendly_name=" << name << "\ndb_dir=" << m_Folder.Path()
                                                 << "/db\nlog_dir=" << m_Folder.Path() << "/log\ninotify=no\nnotify_interval=30\nuuid=" << uuid << "\n";
        Start();
    }
    ~MediaServer() { Stop(SIGTERM); }
    void Start()
    {
        const std::string conf = m_Folder.Path() + "/conf";
        const std::string pid = m_Folder.Path() + "/pid";
        const char* const argv[] = {kMinidlna, "-S", "-f", conf.c_str(), "-P", pid.c_str(), "-i", "lo", nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        for (const int fd : {1, 2}) {
            posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_WRONLY, 0);
        }
        if (posix_spawn(&m_Pid, kMinidlna, &actions, nullptr, const_cast<char**>(argv), environ) != 0) {
            m_Pid = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
    }
    void Stop(int signal)
    {
        if (m_Pid > 0) {
            kill(m_Pid, signal);
            waitpid(m_Pid, nullptr, 0);
            m_Pid = -1;
        }
    }

private:
    const std::string m_Name;
    TemporaryFolder m_Folder;
    pid_t m_Pid = -1;
};

// Watches and browses on the user-interface thread.
class Viewer : public CascadeUPnP {
public:
    explicit Viewer(UiThread& ui)
        : m_Ui(ui)
    {
        m_Ui.Do([this] { CascadeMediaServers::Watch(OnServer, this); });
    }
    ~Viewer() override
    {
        m_Ui.Do([this] {
            CascadeMediaServers::Unwatch(this);
            CancelAVBrowse();
        });
        WaitUntil([this] { return !Asks(); });
    }
    void OnAVBrowseResult(unsigned long, TransactionResult result, unsigned long, AVObjectArray& objects, bool done) override
    {
        const std::lock_guard lock(m_Mutex);
        m_Result = result;
        m_bDone = done;
        for (size_t i = 0; done && i < objects.GetSize(); ++i) {
            const std::unique_ptr<AVObject> object(objects.TakeOwnership(i));
            m_Titles[object->title.Str()] = *object;
        }
    }
    void Ask(const std::string& uuid, const std::string& id)
    {
        m_Ui.Do([&] {
            const std::lock_guard lock(m_Mutex);
            m_bDone = false;
            m_Titles.clear();
            m_Objects.Empty();
            InitiateAVBrowse(uuid, id, "*", "+upnp:class,+dc:title", 0, 0, m_Objects);
        });
    }
    TransactionResult Browse(const std::string& uuid, const std::string& id)
    {
        Ask(uuid, id);
        EXPECT_TRUE(WaitUntil([this] { return IsDone(); }));
        return m_Result;
    }
    void Cancel()
    {
        m_Ui.Do([this] { CancelAVBrowse(); });
    }
    bool IsDone()
    {
        const std::lock_guard lock(m_Mutex);
        return m_bDone;
    }
    bool Asks()
    {
        bool asks = false;
        m_Ui.Do([&] { asks = IsBrowsing(); });
        return asks;
    }
    std::map<std::string, AVObject> Titles()
    {
        const std::lock_guard lock(m_Mutex);
        return m_Titles;
    }
    bool Sees(const std::string& uuid)
    {
        const std::lock_guard lock(m_Mutex);
        return m_Servers.count(uuid) != 0;
    }
    // Asks as an object of its own that is destroyed with its answer already on the way.
    void AskAndDestroy(const std::string& uuid)
    {
        struct Asker : CascadeUPnP {
            void OnAVBrowseResult(unsigned long, TransactionResult, unsigned long, AVObjectArray&, bool) override { ADD_FAILURE() << "called after its end"; }
            AVObjectArray objects;
        };
        m_Ui.Do([&] {
            Asker asker;
            asker.InitiateAVBrowse(uuid, "0", "*", "", 0, 0, asker.objects);
            asker.CancelAVBrowse();
        });
    }
    bool WaitFor(const std::string& uuid, bool present = true)
    {
        return WaitUntil([&] { return Sees(uuid) == present; });
    }

private:
    static void OnServer(const CascadeString& name, const CascadeString& uuid, CascadeMediaServers::Change change, void* context)
    {
        auto* const viewer = static_cast<Viewer*>(context);
        const std::lock_guard lock(viewer->m_Mutex);
        if (change == CascadeMediaServers::kVanished) {
            EXPECT_EQ(viewer->m_Servers.erase(uuid.Str()), 1u);
        } else {
            EXPECT_TRUE(viewer->m_Servers.emplace(uuid.Str(), name.Str()).second) << "told twice";
        }
    }

    std::mutex m_Mutex;
    bool m_bDone = false;
    TransactionResult m_Result = kTransactionOK;
    std::map<std::string, AVObject> m_Titles;
    std::map<std::string, std::string> m_Servers;
    AVObjectArray m_Objects;
    UiThread& m_Ui;
};

void Announce(const std::string& uuid, const std::string& location, bool alive = true)
{
    const std::string type = "urn:schemas-upnp-org:device:MediaServer:1";
    const std::string text = "NOTIFY * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nCACHE-CONTROL: max-age=1800\r\nLOCATION: " + location + "\r\nNT: " + type + "\r\nNTS: ssdp:"
        + (alive ? "alive" : "byebye") + "\r\nSERVER: test\r\nUSN: uuid:" + uuid + "::" + type + "\r\n\r\n";
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    in_addr loopback {htonl(INADDR_LOOPBACK)};
    setsockopt(fd, IPPROTO_IP, IP_MULTICAST_IF, &loopback, sizeof loopback);
    sockaddr_in group {};
    group.sin_family = AF_INET;
    group.sin_port = htons(1900);
    inet_pton(AF_INET, "239.255.255.250", &group.sin_addr);
    EXPECT_EQ(sendto(fd, text.data(), text.size(), 0, reinterpret_cast<sockaddr*>(&group), sizeof group), static_cast<ssize_t>(text.size()));
    close(fd);
}

std::string Description(const std::string& uuid, const std::string& control)
{
    return "<root><device><friendlyName>Made up</friendlyName><UDN>uuid:" + uuid
        + "</UDN><serviceList><service><serviceType>urn:schemas-upnp-org:service:ContentDirectory:1</serviceType><controlURL>" + control + "</controlURL></service></serviceList></device></root>";
}

class ControlPointTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!HasPrivateNetwork()) {
            GTEST_SKIP() << "no network namespace can be had";
        }
    }

    UiThread m_Ui;
};

class RealServerTest : public ControlPointTest {
protected:
    void SetUp() override
    {
        if (access(kMinidlna, X_OK) != 0) {
            GTEST_SKIP() << kMinidlna << " is not installed";
        }
        ControlPointTest::SetUp();
    }
};

}    // namespace

TEST_F(RealServerTest, IsFoundBrowsedAndLost)
{
    const std::string one = "00000000-0000-0000-0000-000000000001";
    const std::string two = "00000000-0000-0000-0000-000000000002";
    MediaServer first("First", one, 8201);
    Viewer viewer(m_Ui);
    ASSERT_TRUE(viewer.WaitFor(one));
    ASSERT_TRUE(WaitUntil([&] { return viewer.Browse(one, "64$0") == CascadeUPnP::kTransactionOK && viewer.Titles().size() == 2; }));
    const CascadeUPnP::AVObject alpha = viewer.Titles().at("alpha");
    EXPECT_TRUE(alpha.isItem);
    ASSERT_EQ(alpha.resources.GetSize(), 1u);
    EXPECT_TRUE(alpha.resources[0].protocolInfo.Contains("video/mpeg", false));
    EXPECT_EQ(alpha.resources[0].url.Str().rfind("http://127.0.0.1:8201/", 0), 0u);
    EXPECT_EQ(viewer.Browse("uuid:" + one, "no such container"), CascadeUPnP::kTransactionRefused);

    // A second one comes; both are told to who watches anew; it says good-bye.
    MediaServer second("Second", two, 8202);
    ASSERT_TRUE(viewer.WaitFor(two));
    {
        Viewer later(m_Ui);
        EXPECT_TRUE(later.WaitFor(one));
        EXPECT_TRUE(later.WaitFor(two));
    }
    second.Stop(SIGTERM);
    EXPECT_TRUE(viewer.WaitFor(two, false));
    // One that dies says nothing, and one that is back nothing new; both are noticed all the same.
    first.Stop(SIGKILL);
    EXPECT_NE(viewer.Browse(one, "0"), CascadeUPnP::kTransactionOK);
    EXPECT_TRUE(viewer.WaitFor(one, false));
    first.Start();
    EXPECT_TRUE(viewer.WaitFor(one));
}

TEST_F(RealServerTest, IsLookedForWhenItIsAskedFirst)
{
    const std::string uuid = "00000000-0000-0000-0000-000000000003";
    MediaServer server("Third", uuid, 8203);
    Viewer viewer(m_Ui);
    EXPECT_EQ(viewer.Browse(uuid, "0"), CascadeUPnP::kTransactionOK);
    EXPECT_EQ(viewer.Titles().count("Browse Folders"), 1u);
    EXPECT_EQ(viewer.Browse("00000000-ffff-ffff-ffff-ffffffffffff", "0"), CascadeUPnP::kTransactionNoDevice);
}

TEST_F(ControlPointTest, TrustsNothingOutsideTheNetwork)
{
    Viewer viewer(m_Ui);
    FaultyServer good([](Wire& wire, const Asked& asked, size_t) {
        std::string body = Description(asked.target.substr(1), "/ctl");
        if (asked.target == "/elsewhere") {
            body = Description("elsewhere", "http://8.8.8.8/ctl");
        } else if (asked.target == "/entity") {
            body = "<!DOCTYPE root [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>" + body;
        } else if (asked.target == "/huge") {
            body.insert(0, 1024 * 1024, ' ');
        }
        wire.Send(WholeHead(body.size()) + body);
    });
    FaultyServer moved([&](Wire& wire, const Asked&, size_t) {
        wire.Send("HTTP/1.1 302 Found\r\nLocation: " + good.Url("/moved") + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    Announce("foreign", "http://198.51.100.7/foreign");
    Announce("named", "http://localhost/named");
    Announce("moved", moved.Url("/moved"));
    for (const char* name : {"elsewhere", "entity", "huge", "trusted"}) {
        Announce(name, good.Url(std::string("/") + name));
    }
    ASSERT_TRUE(viewer.WaitFor("trusted"));
    EXPECT_TRUE(good.WaitForAsks(4));
    EXPECT_TRUE(moved.WaitForAsks(1));
    // Asked in turn, each was judged before this one is.
    Announce("last", good.Url("/last"));
    ASSERT_TRUE(viewer.WaitFor("last"));
    for (const char* name : {"foreign", "named", "moved", "elsewhere", "entity", "huge"}) {
        EXPECT_FALSE(viewer.Sees(name)) << name;
    }
    for (const char* name : {"trusted", "last"}) {
        Announce(name, good.Url("/"), false);
        EXPECT_TRUE(viewer.WaitFor(name, false));
    }
}

TEST_F(ControlPointTest, CancelsAtOnceAndForgetsWhatIsDestroyed)
{
    FaultyServer slow([](Wire& wire, const Asked& asked, size_t) {
        if (asked.target == "/slow") {
            const std::string body = Description("slow", "/ctl");
            wire.Send(WholeHead(body.size()) + body);
        } else {
            wire.HangUntilClosed();
        }
    });
    {
        Viewer viewer(m_Ui);
        Announce("slow", slow.Url("/slow"));
        ASSERT_TRUE(viewer.WaitFor("slow"));
        viewer.Ask("slow", "0");
        ASSERT_TRUE(WaitUntil([&] { return slow.Asks().back().target == "/ctl"; }));
        viewer.Cancel();
        EXPECT_TRUE(WaitUntil([&] { return viewer.IsDone(); }));
        viewer.AskAndDestroy("slow");
        viewer.Ask("slow", "0");
    }
    Announce("slow", slow.Url("/slow"), false);
}
