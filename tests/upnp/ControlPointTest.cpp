// The control point as the player uses it: through platform/, with its module, against announcements that lie.
#include <map>
#include <mutex>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/CascadeMediaServers.h"
#include "platform/CascadeUPnP.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/UiThread.h"
#include "tests/upnp/PrivateNetwork.h"

namespace {

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
    void OnAVBrowseResult(unsigned long, TransactionResult result, unsigned long, AVObjectArray&, bool done) override
    {
        const std::lock_guard lock(m_Mutex);
        m_Result = result;
        m_bDone = done;
    }
    void Ask(const std::string& uuid, const std::string& id)
    {
        m_Ui.Do([&] {
            const std::lock_guard lock(m_Mutex);
            m_bDone = false;
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
    // Announced until it is seen: at first nobody may listen yet.
    bool HearsOf(const std::string& uuid, const std::string& location)
    {
        return WaitUntil([&] {
            Announce(uuid, location);
            return Sees(uuid);
        });
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
    std::map<std::string, std::string> m_Servers;
    AVObjectArray m_Objects;
    UiThread& m_Ui;
};

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

}    // namespace

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
    ASSERT_TRUE(viewer.HearsOf("trusted", good.Url("/trusted")));
    Announce("foreign", "http://198.51.100.7/foreign");
    Announce("named", "http://localhost/named");
    Announce("moved", moved.Url("/moved"));
    for (const char* name : {"elsewhere", "entity", "huge"}) {
        Announce(name, good.Url(std::string("/") + name));
    }
    EXPECT_TRUE(WaitUntil([&] { return good.Asks().back().target == "/huge" && !moved.Asks().empty(); }));
    // Asked in turn, each was judged before this one is.
    ASSERT_TRUE(viewer.HearsOf("last", good.Url("/last")));
    {
        Viewer later(m_Ui);    // who watches anew is told what is there
        EXPECT_TRUE(later.WaitFor("trusted") && later.WaitFor("last"));
        EXPECT_EQ(later.Browse("nobody", "0"), CascadeUPnP::kTransactionNoDevice);
    }
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
        ASSERT_TRUE(viewer.HearsOf("slow", slow.Url("/slow")));
        viewer.Ask("slow", "0");
        ASSERT_TRUE(WaitUntil([&] { return slow.Asks().back().target == "/ctl"; }));
        viewer.Cancel();
        EXPECT_TRUE(WaitUntil([&] { return viewer.IsDone(); }));
        viewer.AskAndDestroy("slow");
        viewer.Ask("slow", "0");
    }
    Announce("slow", slow.Url("/slow"), false);
}
