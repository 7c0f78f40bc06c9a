// External control as its clients see it: real sockets, and a user-interface thread that carries out.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "host/base/HostHooks.h"
#include "host/base/HostOptions.h"
#include "host/base/KeyNames.h"
#include "host/base/Pairing.h"
#include "host/network/ControlClient.h"
#include "host/network/ControlServer.h"
#include "host/network/ControlWords.h"
#include "platform/CascadeInput.h"
#include "tests/network/FaultyServer.h"
#include "tests/network/UiThread.h"

// In place of the screen's input: what was dispatched, and whether pressed; of the user-interface thread.
static std::vector<std::pair<unsigned long, bool>> g_Keys;
void CascadeInput::DispatchKeyDown(unsigned long key)
{
    g_Keys.emplace_back(key, true);
}
void CascadeInput::DispatchKeyUp(unsigned long key)
{
    g_Keys.emplace_back(key, false);
}

namespace {

constexpr const char* kTimeout = "(nothing within the deadline)";
constexpr const char* kClosed = "(closed)";

class Client {
public:
    explicit Client(uint16_t port, int receiveBuffer = 0)
        : m_Fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (receiveBuffer != 0) {
            setsockopt(m_Fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        }
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_Fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    ~Client() { close(m_Fd); }
    Client(const Client&) = delete;

    bool Send(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const ssize_t count = send(m_Fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<size_t>(count));
        }
        return true;
    }
    void SendNoMore() { shutdown(m_Fd, SHUT_WR); }
    std::string Line()
    {
        while (m_Got.find('\n') == std::string::npos) {
            pollfd wait {m_Fd, POLLIN, 0};
            if (poll(&wait, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count())) <= 0) {
                return kTimeout;
            }
            char bytes[4096];
            const ssize_t count = recv(m_Fd, bytes, sizeof(bytes), 0);
            if (count <= 0) {
                return kClosed;
            }
            m_Got.append(bytes, static_cast<size_t>(count));
        }
        const std::string line = m_Got.substr(0, m_Got.find('\n'));
        m_Got.erase(0, line.size() + 1);
        return line;
    }
    std::string Ask(const std::string& command)
    {
        Send(command + "\n");
        return Line();
    }

private:
    int m_Fd;
    std::string m_Got;
};

class ControlServerTest : public ::testing::Test {
protected:
    ControlServerTest()
    {
        m_Ui.Do([this] {
            host::HostOptions options;
            options.ecp = "127.0.0.1:0";
            host::SetCurrentHostOptions(options);
            host::ClaimCommandPrefix("Test", [this](const std::string& command) { return Carry(command); });
            testing::internal::CaptureStdout();
            m_bStarted = host::StartNetworkServices();
            m_Said = testing::internal::GetCapturedStdout();
        });
        unsigned port = 0;
        EXPECT_TRUE(m_bStarted);
        EXPECT_EQ(std::sscanf(m_Said.c_str(), "External control listens on 127.0.0.1:%u\n", &port), 1) << m_Said;
        m_Port = static_cast<uint16_t>(port);
    }
    ~ControlServerTest() override { m_Ui.Do(host::StopNetworkServices); }

    // On the user-interface thread.
    std::string Carry(const std::string& command)
    {
        m_Carried.push_back(command);
        if (command == "Test long") {
            return std::string(60000, 'x');
        }
        if (command == "Test broken") {
            return "two\r\nlines \xFF";
        }
        return command.substr(std::min<size_t>(5, command.size()));
    }
    std::vector<std::string> Carried()
    {
        std::vector<std::string> carried;
        m_Ui.Do([&] { carried = m_Carried; });
        return carried;
    }

    UiThread m_Ui;
    std::vector<std::string> m_Carried;    // of the user-interface thread
    std::string m_Said;
    bool m_bStarted = false;
    uint16_t m_Port = 0;
};

TEST_F(ControlServerTest, LinesAreAnsweredOneByOneInOrder)
{
    Client client(m_Port);
    EXPECT_EQ(client.Ask("Test ping"), "ping");
    EXPECT_EQ(client.Ask("TEST Mixed case \xC3\xA4 "), "Mixed case \xC3\xA4 ");
    EXPECT_EQ(client.Ask("Testping"), "Unknown command");
    EXPECT_EQ(client.Ask(" Test ping"), "Unknown command");
    EXPECT_EQ(client.Ask(""), "Unknown command");
    EXPECT_EQ(client.Ask("Test broken"), "two  lines \xEF\xBF\xBD");
    EXPECT_EQ(client.Ask("Test crlf\r"), "crlf");
    // Half lines wait; many lines in one piece are taken one after the other, also when no more can follow.
    std::string many;
    for (int number = 0; number < 500; ++number) {
        many += "Test " + std::to_string(number) + (number % 2 == 0 ? "\r\n" : "\n");
    }
    client.Send("Te");
    EXPECT_EQ(Client(m_Port).Ask("Test other"), "other");
    client.Send("st half\n" + many + "Test never ended");
    client.SendNoMore();
    EXPECT_EQ(client.Line(), "half");
    for (int number = 0; number < 500; ++number) {
        ASSERT_EQ(client.Line(), std::to_string(number));
    }
    EXPECT_EQ(client.Line(), kClosed);
    EXPECT_EQ(Carried().back(), "Test 499");
}

TEST_F(ControlServerTest, RubbishIsHarmless)
{
    Client client(m_Port);
    EXPECT_EQ(client.Ask(std::string(1024 * 1024, 'a')), "Command too long");
    EXPECT_EQ(client.Ask("Test " + std::string(4092, 'b')), "Command too long");
    EXPECT_EQ(client.Ask("Test " + std::string(4091, 'c')), std::string(4091, 'c'));
    EXPECT_EQ(client.Ask("Test " + std::string(4091, 'd') + "\r"), std::string(4091, 'd'));
    EXPECT_EQ(client.Ask("Test \xC3"), "Invalid command");
    EXPECT_EQ(client.Ask(std::string("Test a\0b", 8)), "Invalid command");
    std::string binary;
    for (int byte = 255; byte >= 0; --byte) {
        binary += byte == '\n' ? std::string() : std::string(1, static_cast<char>(byte));
    }
    EXPECT_EQ(client.Ask(binary), "Invalid command");
    EXPECT_EQ(client.Ask("Test alive"), "alive");

    // A page in a browser must not get through to the player.
    Client browser(m_Port);
    browser.Send("POST / HTTP/1.1\r\nContent-Type: text/plain\r\n\r\nTest from a page\n");
    EXPECT_EQ(browser.Line(), "Invalid command");
    EXPECT_EQ(browser.Line(), kClosed);
    const std::vector<std::string> carried = Carried();
    EXPECT_EQ(std::count(carried.begin(), carried.end(), "Test from a page"), 0);
}

TEST_F(ControlServerTest, ManyIdleClientsDoNotHoldUpTheOthersAndTheNumberIsBounded)
{
    std::vector<std::unique_ptr<Client>> idle;
    for (int number = 0; number < 200; ++number) {
        idle.push_back(std::make_unique<Client>(m_Port));
        idle.back()->Send("Test hal");
    }
    EXPECT_EQ(Client(m_Port).Ask("Test among many"), "among many");
    while (idle.size() < host::ControlServer::kMostClients) {
        idle.push_back(std::make_unique<Client>(m_Port));
        ASSERT_EQ(idle.back()->Ask("Test in"), "in");
    }
    // The one among many may not have left yet.
    EXPECT_TRUE(WaitUntil([this] { return Client(m_Port).Line() == "Too many clients"; }));
    idle[7]->Send("f\n");
    EXPECT_EQ(idle[7]->Line(), "half");
    idle.clear();
    EXPECT_TRUE(WaitUntil([this] { return Client(m_Port).Ask("Test room again") == "room again"; }));
}

TEST_F(ControlServerTest, ClientThatNeverReadsIsClosedAndTheOthersAreServed)
{
    Client deaf(m_Port, 4096);
    Client other(m_Port);
    // The system holds some, the server 64 KiB and a reply; then it is enough.
    bool closed = false;
    for (int number = 0; number < 200 && !closed; ++number) {
        closed = !deaf.Send("Test long\n");
        ASSERT_EQ(other.Ask("Test well"), "well");
    }
    EXPECT_TRUE(WaitUntil([&deaf] { return !deaf.Send("x"); }));
    EXPECT_EQ(other.Ask("Test still"), "still");
    EXPECT_LT(Carried().size(), 420u);
}

TEST_F(ControlServerTest, ClientMayGoBeforeItsReply)
{
    for (int number = 0; number < 50; ++number) {
        Client(m_Port).Send("Test gone\nTest gone\n");
    }
    EXPECT_EQ(Client(m_Port).Ask("Test here"), "here");
}

TEST_F(ControlServerTest, LastReplyIsSentBeforeTheEnd)
{
    // As "quit" does: the command itself leads to the end of the loop, and the services end with it.
    m_Ui.Do([] {
        host::ClaimCommandPrefix("Quit", [](const std::string&) {
            host::PostToUi(host::StopNetworkServices);
            return std::string("OK");
        });
    });
    Client bystander(m_Port);
    EXPECT_EQ(bystander.Ask("Test before"), "before");
    Client client(m_Port);
    client.Send("Quit\nTest not any more\n");
    EXPECT_EQ(client.Line(), "OK");
    EXPECT_EQ(client.Line(), kClosed);
    EXPECT_EQ(bystander.Line(), kClosed);
    const std::vector<std::string> carried = Carried();
    EXPECT_EQ(carried, std::vector<std::string> {"Test before"});
}

TEST_F(ControlServerTest, KeysAndStatistics)
{
    Client client(m_Port);
    EXPECT_EQ(client.Ask("Cascade key select"), "OK");
    EXPECT_EQ(client.Ask("cascade KEYDOWN 0x1001e"), "OK");
    EXPECT_EQ(client.Ask("Cascade keyup Previous"), "OK");
    for (const char* const bad : {"Cascade key", "Cascade key nothing", "Cascade key 0x", "Cascade key 0x0", "Cascade key 0x123456789",
             "Cascade key up down", "Cascade key 65547"}) {
        EXPECT_EQ(client.Ask(bad), "Unknown key") << bad;
    }
    EXPECT_EQ(client.Ask("Cascade"), "Unknown command");
    EXPECT_EQ(client.Ask("Cascade screenshot"), "Failed");
    m_Ui.Do([] {
        using Keys = std::vector<std::pair<unsigned long, bool>>;
        EXPECT_EQ(std::exchange(g_Keys, {}), (Keys {{0x1000B, true}, {0x1000B, false}, {0x1001E, true}, {0x1001E, false}}));
        host::Hooks().windowTitles = [] { return std::vector<std::string> {"a \"b\"\\\n", "\xFF"}; };
    });
    const std::string stats = client.Ask("Cascade stats");
    EXPECT_NE(stats.find("\"windows\":[\"a \\\"b\\\"\\\\\\u000a\",\"\xEF\xBF\xBD\"],"), std::string::npos) << stats;
    m_Ui.Do([] { host::Hooks() = host::HostHooks(); });
}

TEST(ControlWords, AreThoseOfTheirPage)
{
    std::ifstream file(NUVID_SOURCE "/docs/control.md");
    const std::string page {std::istreambuf_iterator<char>(file), {}};
    for (const host::ControlHostWord& word : host::kHostWords) {
        std::string row = "| `Cascade " + std::string(word.name) + (word.argument.empty() ? "" : " NAME\\|0xCODE") + "` |";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
    for (const host::KeyName& key : host::kKeyNames) {
        char row[64];
        std::snprintf(row, sizeof(row), "| `%s` | 0x%X |", std::string(key.name).c_str(), static_cast<unsigned>(key.key));
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
}

TEST(ControlServices, PortInUseOrAStrangeAddressIsSaidAndOffIsQuiet)
{
    const FaultyServer taken([](Wire&, const Asked&, size_t) { });
    UiThread ui;
    ui.Do([&taken] {
        const auto start = [](const std::string& ecp) {
            host::HostOptions options;
            options.ecp = ecp;
            host::SetCurrentHostOptions(options);
            testing::internal::CaptureStderr();
            const bool started = host::StartNetworkServices();
            const std::string said = testing::internal::GetCapturedStderr();
            EXPECT_EQ(started, said.empty());
            host::StopNetworkServices();
            return started;
        };
        EXPECT_FALSE(start(taken.Url("").substr(7)));    // without its scheme
        EXPECT_FALSE(start("example.org:0"));
        EXPECT_TRUE(start("off"));
    });
}

// One device with one token, and a code that is always the same.
struct OnePairing : host::Pairing {
    bool ShowCode(const std::string&) override { return ++shown < 3; }
    host::PairAnswer TryCode(std::string_view code, const std::string&, std::string& token) override
    {
        token = "t0ken";
        known = code == "123456";
        return known ? host::PairAnswer::kPaired : host::PairAnswer::kWrong;
    }
    bool Knows(std::string_view token) override { return known && token == "t0ken"; }
    void Forget(std::string_view) override { }
    void ForgetAll() override
    {
        known = false;
        ++revision;
    }
    unsigned Revision() override { return revision; }
    void ShowDevices() override { }
    int shown = 0;
    bool known = false;
    unsigned revision = 1;
};

TEST(ControlServices, BeyondThisDeviceOnlyPairedClientsAreHeard)
{
    OnePairing pairing;
    UiThread ui;
    uint16_t port = 0;
    ui.Do([&] {
        host::SetPairing(&pairing);
        host::HostOptions options;
        options.ecp = "0.0.0.0:0";
        host::SetCurrentHostOptions(options);
        testing::internal::CaptureStdout();
        EXPECT_TRUE(host::StartNetworkServices());
        const std::string said = testing::internal::GetCapturedStdout();
        EXPECT_NE(said.find("for paired devices"), std::string::npos) << said;
        port = static_cast<uint16_t>(std::stoi(said.substr(said.find(':') + 1)));
    });
    {
        Client first(port);
        for (const char* const command : {"Cascade help", "Cascade key stop", "Cascade unpair", "Cascade token", "Cascade token wrong", "Cascade pairs", ""}) {
            EXPECT_EQ(first.Ask(command), "Not paired") << command;
        }
        EXPECT_EQ(first.Ask("Cascade pair"), "OK");
        EXPECT_EQ(first.Ask("Cascade pair 111111"), "Wrong code");
        EXPECT_EQ(first.Ask("Cascade help"), "Not paired");
        EXPECT_EQ(first.Ask("Cascade pair 123456"), "t0ken");
        EXPECT_TRUE(first.Ask("Cascade help").starts_with("Cascade"));

        Client second(port);
        EXPECT_EQ(second.Ask("Cascade help"), "Not paired");
        EXPECT_EQ(second.Ask("cascade TOKEN t0ken"), "OK");
        EXPECT_TRUE(second.Ask("Cascade help").starts_with("Cascade"));
        EXPECT_EQ(second.Ask("Cascade unpair"), "OK");
        EXPECT_EQ(first.Ask("Cascade help"), "Not paired");
        EXPECT_EQ(second.Ask("Cascade token t0ken"), "Not paired");
    }
    ui.Do([] {
        host::StopNetworkServices();
        host::SetPairing(nullptr);
    });
}

}    // namespace
