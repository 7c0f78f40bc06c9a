// A real server on loopback over a folder of its own, started and ended by the test.
#pragma once

#include <filesystem>
#include <string>

#include <sys/types.h>

class Nginx {
public:
    Nginx();    // IsRunning says whether it is there
    ~Nginx();
    Nginx(const Nginx&) = delete;
    Nginx& operator=(const Nginx&) = delete;

    bool IsRunning() const { return m_Pid > 0; }
    std::string Url(const std::string& name) const;
    std::filesystem::path Root() const { return m_Folder / "root"; }
    void Write(const std::string& name, std::string_view bytes, bool append = false) const;

private:
    void Launch();

    std::filesystem::path m_Folder;
    uint16_t m_Port;
    pid_t m_Pid = -1;
};
