// Gives up root's privileges for a while, so that permissions mean something to a test run by root.
#pragma once

#include <unistd.h>

class OrdinaryUser {
public:
    OrdinaryUser() { Become(kNobody); }
    ~OrdinaryUser() { Become(m_Before); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    static void Become(uid_t user)
    {
        if (getuid() == 0 && seteuid(user) != 0) {
            _exit(1);
        }
    }
    uid_t m_Before = geteuid();
};
