// A network namespace of the test program's own: nothing leaves the machine, and no port is taken.
#pragma once

// Whether this process is in one. Entered before main, while the process has one thread; without the right to
// it the tests that announce anything are skipped.
bool HasPrivateNetwork();
