// What the loop asked of external control.
#pragma once

#include <functional>
#include <map>
#include <string>

struct NetworkStub {
    int starts = 0;
    int stops = 0;
    std::map<std::string, std::function<std::string(const std::string&)>> handlers;
};
NetworkStub& TheNetwork();
