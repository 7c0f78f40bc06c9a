// The options that outlive the program, in the platform's settings store. Where the store knows nothing of
// the program yet, an older options file beside it is read once; it is never written.
//
// Units:     those of StartOptions.
// Errors:    what is absent or cannot be read keeps its value; a store that cannot be written is told on
//            standard output.
// Threads:   the user-interface thread.
// Ownership: nothing is kept. The theme is g_ThemeSelect's.
#pragma once

#include <string_view>

#include "app/Parameters.h"
#include "app/RecentFiles.h"

class OptionStore {
public:
    static void Load(const char* appFolder, StartOptions& options, RecentFiles& recent);
    static void Save(const StartOptions& options, const RecentFiles& recent);

    // The older file's text.
    static void ParseLegacy(std::string_view text, StartOptions& options, RecentFiles& recent);
};
