#include <cstdio>

#include "app/NuvidApp.h"

int main(int argc, char** argv)
{
    // Diagnostics are read while the program runs, through pipes too: each line leaves at once, and as a
    // whole. The library takes a buffer of this size only from its caller.
    static char buffer[1 << 16];
    std::setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
    NuvidApp app;
    return app.Run(argc, argv);
}
