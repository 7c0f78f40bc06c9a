#include "tests/network/FaultyServer.h"

#include <algorithm>
#include <random>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A proxy of the surroundings has no business between the tests and their own servers.
[[maybe_unused]] const int g_NoProxy = setenv("no_proxy", "*", 1);

int Listen(uint16_t& port)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(fd, 64) != 0
        || getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        std::abort();
    }
    port = ntohs(address.sin_port);
    return fd;
}

Asked Parse(const std::string& head)
{
    Asked asked;
    const size_t targetAt = head.find(' ') + 1;
    asked.target = head.substr(targetAt, head.find(' ', targetAt) - targetAt);
    for (size_t at = head.find("\r\n") + 2; at < head.size();) {
        const size_t end = head.find("\r\n", at);
        const std::string line = head.substr(at, end - at);
        at = end + 2;
        const size_t colon = line.find(": ");
        if (colon == std::string::npos) {
            break;
        }
        std::string name = line.substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        asked.headers[name] = line.substr(colon + 2);
    }
    const auto range = asked.headers.find("range");
    if (range != asked.headers.end()) {
        asked.from = std::stoull(range->second.substr(6));
    }
    return asked;
}

}    // namespace

const std::string& Noise()
{
    static const std::string noise = [] {
        std::string bytes(12 * 1024 * 1024 + 77, '\0');
        std::mt19937 random(4747);
        std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
        return bytes;
    }();
    return noise;
}

bool Wire::Send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = send(m_Fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        m_Sent += static_cast<uint64_t>(count);
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

bool Wire::HangUntilClosed()
{
    char byte = 0;
    return recv(m_Fd, &byte, 1, 0) <= 0;
}

bool Wire::IsTakingMore(int milliseconds)
{
    pollfd room {m_Fd, POLLOUT, 0};
    return poll(&room, 1, milliseconds) > 0;
}

void Wire::Reset()
{
    const linger now {1, 0};
    setsockopt(m_Fd, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
}

FaultyServer::FaultyServer(Handler handler)
    : m_Handler(std::move(handler))
    , m_Listener(Listen(m_Port))
    , m_Accepting([this] { Accept(); })
{
}

FaultyServer::~FaultyServer()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_bStopping = true;
        for (const int fd : m_Fds) {
            shutdown(fd, SHUT_RDWR);
        }
    }
    shutdown(m_Listener, SHUT_RDWR);
    m_Accepting.join();
    for (std::thread& thread : m_Serving) {
        thread.join();
    }
    close(m_Listener);
}

std::string FaultyServer::Url(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(m_Port) + path;
}

std::vector<Asked> FaultyServer::Asks() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Asks;
}

void FaultyServer::Accept()
{
    while (true) {
        const int fd = accept4(m_Listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(m_Mutex);
        if (fd < 0 || m_bStopping) {
            close(fd);
            return;
        }
        const int buffer = 64 * 1024;
        setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &buffer, sizeof(buffer));
        m_Fds.push_back(fd);
        m_Serving.emplace_back([this, fd] { Serve(fd); });
    }
}

void FaultyServer::Serve(int fd)
{
    std::string head;
    char byte = 0;
    while (!head.ends_with("\r\n\r\n") && recv(fd, &byte, 1, 0) == 1) {
        head += byte;
    }
    if (head.ends_with("\r\n\r\n")) {
        Asked asked = Parse(head);
        const auto length = asked.headers.find("content-length");
        while (length != asked.headers.end() && asked.body.size() < std::stoull(length->second) && recv(fd, &byte, 1, 0) == 1) {
            asked.body += byte;
        }
        size_t number = 0;
        {
            const std::lock_guard lock(m_Mutex);
            number = m_Asks.size();
            m_Asks.push_back(asked);
        }
        Wire wire(fd, m_Sent);
        m_Handler(wire, asked, number);
    }
    const std::lock_guard lock(m_Mutex);
    m_Fds.erase(std::find(m_Fds.begin(), m_Fds.end(), fd));
    close(fd);
}

std::string WholeHead(size_t length, const std::string& more)
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(length) + "\r\nConnection: close\r\n" + more + "\r\n";
}

std::string GoodHead(std::string_view resource, const Asked& asked, const std::string& more)
{
    const std::string size = std::to_string(resource.size());
    const uint64_t from = asked.from.value_or(0);
    if (asked.from && from >= resource.size()) {
        return "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Range: bytes */" + size + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }
    if (!asked.from) {
        return WholeHead(resource.size(), "Accept-Ranges: bytes\r\n" + more);
    }
    return "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes " + std::to_string(from) + "-" + std::to_string(resource.size() - 1) + "/" + size
        + "\r\nContent-Length: " + std::to_string(resource.size() - from) + "\r\nConnection: close\r\n" + more + "\r\n";
}

std::string_view GoodBody(std::string_view resource, const Asked& asked)
{
    return resource.substr(std::min<size_t>(asked.from.value_or(0), resource.size()));
}

void SendGood(Wire& wire, std::string_view resource, const Asked& asked)
{
    wire.Send(GoodHead(resource, asked));
    wire.Send(GoodBody(resource, asked));
}

uint16_t FreePort()
{
    uint16_t port = 0;
    close(Listen(port));
    return port;
}
