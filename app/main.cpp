#include <cstdio>

#include "app/NuvidApp.h"

int main(int argc, char** argv)
{
    // Diagnostics are read while the program runs, through pipes too.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    NuvidApp app;
    return app.Run(argc, argv);
}
