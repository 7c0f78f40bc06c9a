// The phone remote's server on real sockets, with a player that writes down what phones ask of it.
#include <algorithm>
#include <condition_variable>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "host/base/Pairing.h"
#include "host/base/ScreenFeed.h"
#include "host/remote/server/PhoneServer.h"
#include "host/service/ListenSocket.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr auto kPatience = 20s;

class WritingPlayer : public host::RemotePlayer, public host::Pairing {
public:
    explicit WritingPlayer(host::NetworkLoop& loop)
        : m_Loop(loop)
    {
    }
    GMainContext* Context() override { return m_Loop.Context(); }
    void KeyDown(uint32_t key, Done done) override { Write("down", key, std::move(done)); }
    void KeyHeld(uint32_t key, Done done) override { Write("hold", key, std::move(done)); }
    void KeyUp(uint32_t key, Done done) override { Write("up", key, std::move(done)); }
    void Type(std::string utf8, Done done) override { Write("type " + utf8, 0, std::move(done)); }
    void AskState(std::function<void(std::string)> answer) override
    {
        m_Loop.Post([answer = std::move(answer)] { answer("{\"state\":\"stopped\"}"); });
    }
    void AskPicture(uint64_t seen, std::function<void(std::shared_ptr<const host::FeedPicture>)> answer) override
    {
        auto picture = std::make_shared<host::FeedPicture>();
        picture->width = 64;
        picture->height = 36;
        picture->number = seen + 1;
        picture->pixels.resize(64 * 36 * 4);
        m_Loop.Post([answer = std::move(answer), picture] { answer(picture); });
    }
    host::Pairing& GetPairing() override { return *this; }
    bool NeedsPairing() const override { return needsPairing; }

    bool ShowCode(const std::string&) override { return true; }
    host::PairAnswer TryCode(std::string_view code, const std::string&, std::string& token) override
    {
        token = "t0ken";
        return code == "123456" ? host::PairAnswer::kPaired : host::PairAnswer::kWrong;
    }
    bool Knows(std::string_view token) override { return known && token == "t0ken"; }
    void Forget(std::string_view) override { known = false; }
    void ForgetAll() override { known = false; }
    unsigned Revision() override { return 1; }
    void ShowDevices() override { Write("devices", 0, [] {}); }

    // Waits until it is the last thing that was written.
    bool Says(const std::string& what)
    {
        std::unique_lock lock(m_Mutex);
        return m_Changed.wait_for(lock, kPatience, [&] { return !m_Log.empty() && m_Log.back() == what; });
    }
    std::atomic<bool> needsPairing {false};
    std::atomic<bool> known {true};

private:
    void Write(const std::string& what, uint32_t key, Done done)
    {
        {
            const std::lock_guard lock(m_Mutex);
            m_Log.push_back(key == 0 ? what : what + " " + std::to_string(key & 0xFF));
        }
        m_Changed.notify_all();
        m_Loop.Post(std::move(done));
    }
    host::NetworkLoop& m_Loop;
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::vector<std::string> m_Log;    // guarded by m_Mutex
};

class Client {
public:
    explicit Client(uint16_t port)
        : m_Fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
        , m_nPort(port)
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, connect(m_Fd, reinterpret_cast<sockaddr*>(&address), sizeof address));
    }
    ~Client() { close(m_Fd); }
    Client(const Client&) = delete;

    void Send(std::string_view bytes) { [[maybe_unused]] const ssize_t sent = send(m_Fd, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    // Until the text has come; false: the end came first.
    bool Await(const std::string& text)
    {
        const auto deadline = host::Clock::now() + kPatience;
        while (m_Got.find(text) == std::string::npos) {
            pollfd wait {m_Fd, POLLIN, 0};
            char bytes[4096];
            if (host::Clock::now() > deadline || poll(&wait, 1, 1000) < 0) {
                return false;
            }
            const ssize_t count = wait.revents == 0 ? 0 : recv(m_Fd, bytes, sizeof bytes, 0);
            if (wait.revents != 0 && count <= 0) {
                return false;
            }
            m_Got.append(bytes, size_t(count));
        }
        m_Got.erase(0, m_Got.find(text) + text.size());
        return true;
    }
    bool IsCutOff() { return !Await("(never)") && host::Clock::now() < m_Begin + kPatience; }
    void Request(const std::string& line, const std::string& fields = {})
    {
        const std::string host = "127.0.0.1:" + std::to_string(m_nPort);
        Send(line + " HTTP/1.1\r\nHost: " + host + "\r\nOrigin: http://" + host + "\r\n" + fields + "\r\n");
    }
    bool Upgrade(const std::string& fields = {})
    {
        Request("GET /socket", "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n" + fields);
        return Await("HTTP/1.1 101") && Await("\r\n\r\n");
    }
    // A frame that is masked with zeros (RFC 6455 5.2).
    void Say(const std::string& text, char opcode = '\x81')
    {
        Send(opcode + std::string(1, char(0x80 | text.size())) + "\0\0\0\0"s + text);
    }

private:
    int m_Fd;
    uint16_t m_nPort;
    std::string m_Got;
    host::Clock::time_point m_Begin = host::Clock::now();
};

class PhoneServerTest : public ::testing::Test {
protected:
    PhoneServerTest()
        : player(loop)
        , listener(loop, [this](GSocket* socket) { server->Serve(socket); })
    {
        EXPECT_TRUE(loop.Start());
        loop.Post([this] { server = std::make_unique<host::PhoneServer>(player); });
        EXPECT_EQ("", listener.Start(host::ParseListenAddress("127.0.0.1:0")));
    }
    // With connections still open.
    void TearDown() override
    {
        loop.Post([this] {
            listener.Finish();
            server.reset();
        });
        loop.Stop();
    }
    uint16_t Port() const { return listener.Port(); }

    host::NetworkLoop loop;
    WritingPlayer player;
    std::unique_ptr<host::PhoneServer> server;    // the loop's
    host::ListenSocket listener;
};

TEST_F(PhoneServerTest, KeysArriveAndEndWithTheFingerOrThePhone)
{
    {
        Client phone(Port());
        ASSERT_TRUE(phone.Upgrade());
        ASSERT_TRUE(phone.Await("stopped"));
        phone.Say("got state");
        phone.Say("1 down left");
        EXPECT_TRUE(phone.Await("{\"ok\":1}"));
        phone.Say("2 hold left");
        EXPECT_TRUE(player.Says("hold 14"));
        phone.Say("9 keep left");
        EXPECT_TRUE(phone.Await("{\"ok\":9}"));
        EXPECT_TRUE(player.Says("up 14"));    // no sign of the finger for a while
        phone.Say("3 up left");
        EXPECT_TRUE(phone.Await("{\"ok\":3}"));
        phone.Say("4 type \xC3\xA9");
        EXPECT_TRUE(player.Says("type \xC3\xA9"));
        phone.Say("5 type");
        EXPECT_TRUE(player.Says("type \b"));
        phone.Say("6 down up");
        EXPECT_TRUE(player.Says("down 12"));
    }
    EXPECT_TRUE(player.Says("up 12"));
}

TEST_F(PhoneServerTest, PicturesWaitForTheLastOne)
{
    Client phone(Port());
    ASSERT_TRUE(phone.Upgrade());
    phone.Say("view on");
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(phone.Await("\xFF\xD8")) << i;
        EXPECT_TRUE(phone.Await("\xFF\xD9")) << i;
        phone.Say("got picture");
    }
}

TEST_F(PhoneServerTest, WhoIsNotPairedIsOutsideAndWhoIsForgottenIsCutOff)
{
    player.needsPairing = true;
    Client stranger(Port());
    EXPECT_FALSE(stranger.Upgrade());
    Client wrong(Port());
    wrong.Request("POST /pair", "Content-Length: 6\r\n");
    wrong.Send("654321");
    EXPECT_TRUE(wrong.Await("HTTP/1.1 403"));
    Client right(Port());
    right.Request("POST /pair", "Content-Length: 7\r\n");
    right.Send("123 456");
    EXPECT_TRUE(right.Await("HTTP/1.1 204"));
    EXPECT_TRUE(right.Await("NuvidRemote=t0ken;"));
    Client phone(Port());
    ASSERT_TRUE(phone.Upgrade("Cookie: NuvidRemote=t0ken\r\n"));
    phone.Say("1 down up");
    EXPECT_TRUE(player.Says("down 12"));
    player.known = false;
    EXPECT_TRUE(phone.IsCutOff());
    EXPECT_TRUE(player.Says("up 12"));
}

TEST_F(PhoneServerTest, NonsenseEndsAConnectionAndNothingElse)
{
    const std::string start = "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    for (const std::string& bytes : {"\xFF\xFF\xFF"s, "\r\n\r\n"s, "\0\0\0\0"s, start + std::string(300000, 'x'), "GET * HTTP/1.1\r\n\r\n"s, "CONNECT a:1 HTTP/1.1\r\n\r\n"s,
             start + "Content-Length: 18446744073709551615\r\n\r\n", start + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFFF\r\n", "POST /pair HTTP/1.1\r\n\r\n"s}) {
        Client client(Port());
        client.Send(bytes);
    }
    for (const std::string& frame : {"\x81\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\x81\xFE\xFF\xFF"s, "\xF1\x80\0\0\0\0"s, "\x01\x81\0\0\0\0x\x81\x81\0\0\0\0x"s, "\x88\x81\0\0\0\0x"s,
             "\x81\x05hello"s, "\x82\x81\0\0\0\0x"s, "\x81\x82\0\0\0\0\xC3\x28"s}) {
        Client client(Port());
        ASSERT_TRUE(client.Upgrade());
        client.Send(frame);
    }
    Client phone(Port());
    ASSERT_TRUE(phone.Upgrade());
    phone.Say("devices");
    EXPECT_TRUE(player.Says("devices"));
}

TEST_F(PhoneServerTest, EachDeviceHasSoManyConnections)
{
    std::vector<std::unique_ptr<Client>> clients;
    for (size_t i = 0; i < host::Connections::kMostOfOne + 5; ++i) {
        clients.push_back(std::make_unique<Client>(Port()));
        clients.back()->Send("GET / HTTP/1.1\r\n");
    }
    EXPECT_TRUE(clients.back()->IsCutOff());    // the others have ten seconds
}

}    // namespace
