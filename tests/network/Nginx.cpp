#include "tests/network/Nginx.h"

#include <chrono>
#include <fstream>
#include <thread>

#include <arpa/inet.h>
#include <csignal>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/network/FaultyServer.h"

namespace {

constexpr const char* kProgram = "/usr/sbin/nginx";

bool Answers(uint16_t port)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    close(fd);
    return connected;
}

}    // namespace

Nginx::Nginx()
    : m_Port(FreePort())
{
    std::string folder = (std::filesystem::temp_directory_path() / "network-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        return;
    }
    m_Folder = folder;
    std::filesystem::create_directory(Root());
    // Its worker may run as another user.
    std::filesystem::permissions(
        m_Folder, std::filesystem::perms::others_exec | std::filesystem::perms::others_read, std::filesystem::perm_options::add);
    const std::string base = m_Folder.string();
    std::ofstream(m_Folder / "nginx.conf") << "daemon off; master_process off; pid " << base << "/pid; error_log " << base << "/error.log;\n"
                                           << "events {}\nhttp {\n  access_log off;\n"
                                           << "  client_body_temp_path " << base << "/t1; proxy_temp_path " << base << "/t2; fastcgi_temp_path "
                                           << base << "/t3; uwsgi_temp_path " << base << "/t4; scgi_temp_path " << base << "/t5;\n"
                                           << "  server { listen 127.0.0.1:" << m_Port << "; root " << Root().string() << "; }\n}\n";
    Launch();
}

void Nginx::Launch()
{
    const std::string config = (m_Folder / "nginx.conf").string();
    const std::string log = (m_Folder / "error.log").string();
    const std::string prefix = m_Folder.string();
    const char* const arguments[] = {kProgram, "-p", prefix.c_str(), "-e", log.c_str(), "-c", config.c_str(), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, kProgram, nullptr, nullptr, const_cast<char* const*>(arguments), environ) != 0) {
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Answers(m_Port)) {
        if (waitpid(pid, nullptr, WNOHANG) != 0 || std::chrono::steady_clock::now() > deadline) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));    // between two looks at the condition
    }
    m_Pid = pid;
}

Nginx::~Nginx()
{
    if (m_Pid > 0) {
        kill(m_Pid, SIGTERM);
        waitpid(m_Pid, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_Folder, ignored);
}

std::string Nginx::Url(const std::string& name) const
{
    return "http://127.0.0.1:" + std::to_string(m_Port) + "/" + name;
}

void Nginx::Write(const std::string& name, std::string_view bytes, bool append) const
{
    std::ofstream(Root() / name, append ? std::ios::app : std::ios::trunc) << bytes;
}
