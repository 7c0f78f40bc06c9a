// An HTTP server on loopback that misbehaves as a test tells it to.
//
// Threads: the handler runs on a thread per connection; everything else may be called from the test's.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// The resource that all servers here serve, or the part of it that a test wants: noise, always the same.
const std::string& Noise();

struct Asked {
    std::string target;
    std::map<std::string, std::string> headers;    // names in lower case
    std::optional<uint64_t> from;    // of the Range header
    std::string body;    // as long as its Content-Length says
};

// One connection, for one request.
class Wire {
public:
    Wire(int fd, std::atomic<uint64_t>& sent)
        : m_Fd(fd)
        , m_Sent(sent)
    {
    }
    bool Send(std::string_view bytes);    // false: the other side, or the test, is gone
    bool HangUntilClosed();    // answers nothing more; true: the other side closed
    bool IsTakingMore(int milliseconds);    // whether the other side makes room within that time
    void Reset();    // breaks the connection instead of closing it

private:
    int m_Fd;
    std::atomic<uint64_t>& m_Sent;
};

class FaultyServer {
public:
    using Handler = std::function<void(Wire& wire, const Asked& asked, size_t number)>;    // number: 0 for the first request

    explicit FaultyServer(Handler handler);
    ~FaultyServer();
    FaultyServer(const FaultyServer&) = delete;
    FaultyServer& operator=(const FaultyServer&) = delete;

    std::string Url(const std::string& path = "/recording.mpg") const;
    std::vector<Asked> Asks() const;
    uint64_t Sent() const { return m_Sent; }

private:
    void Accept();
    void Serve(int fd);

    Handler m_Handler;
    uint16_t m_Port = 0;    // set with the listener
    int m_Listener = -1;
    std::atomic<uint64_t> m_Sent {0};
    mutable std::mutex m_Mutex;
    std::vector<Asked> m_Asks;    // guarded by m_Mutex
    std::vector<int> m_Fds;    // guarded by m_Mutex; open connections
    std::list<std::thread> m_Serving;    // guarded by m_Mutex
    bool m_bStopping = false;    // guarded by m_Mutex
    std::thread m_Accepting;
};

// Answers as a good server would: the whole of `resource`, or its rest from the place asked for.
std::string GoodHead(std::string_view resource, const Asked& asked, const std::string& more = {});
std::string_view GoodBody(std::string_view resource, const Asked& asked);
void SendGood(Wire& wire, std::string_view resource, const Asked& asked);
std::string WholeHead(size_t length, const std::string& more = {});

// A port that was free a moment ago.
uint16_t FreePort();
