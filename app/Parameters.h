// The application's command line: dash parameters and files to play, in the order given.
//
// Units:     as told at the members.
// Errors:    an unknown parameter is told on standard output and skipped; a missing or bad number is 0.
// Threads:   the user-interface thread.
// Ownership: the parser keeps references to both of its arguments.
#pragma once

#include <cstdint>

#include "platform/CascadeString.h"

// What can be set at the start. The initial values are the defaults.
struct StartOptions {
    uint32_t minFileSize = 0;    // bytes: the browser hides smaller files
    uint32_t titleSetThreshold = 0;    // bytes: from which on the browser offers a DVD's title sets
    CascadeString browseFolder = "/tmp/Volumes/";
    CascadeString browseRoot = "/tmp/Volumes/";    // the browser never goes above it
    bool showIcons = true;
    int fontSize = 40;    // points
    uint32_t infoTimeoutMs = 2500;    // how long a status text stays
    int iconSize = 0;    // of the browser: 0 small, 2 large, 3 extra large
    int resumeTimeout = 0;    // seconds; 0: the question waits for ever
    int browserMode = 0;    // the browser's filter as it is now, in the numbers of the options menu
    int browserModeDefault = 0;    // and as it is at the next start
    bool hideSize = false;
    bool menuAtEnd = false;
    bool exitAtEnd = false;
    bool menuEnabled = true;
    bool maxBuffer = false;
    bool browserDelete = true;
    bool resumeEnabled = true;
    bool browserWithBack = false;
    bool tsFix = false;
    bool unattended = false;    // the menu key quits
};

class ParameterParser {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void SetVideoRes(unsigned index, int value) = 0;    // -1: the number was missing or 0
        virtual void AddFile(const char* path, const CascadeString& title) = 0;
    };

    ParameterParser(StartOptions& options, Client& client)
        : m_Options(options)
        , m_Client(client)
    {
    }
    void Take(const char* argument);

private:
    friend struct ParameterTable;

    StartOptions& m_Options;
    Client& m_Client;
    CascadeString m_NextTitle;    // of the file argument that follows
};
