// One request to a server and its answer, on libcurl. Only http is spoken, also after a redirection.
//
// Units:     times are host::Clock.
// Errors:    a Result with a text for diagnostics. Time-outs: see HttpPatience.
// Threads:   the thread that made it. Nothing blocks but Wait.
// Ownership: owns its connections; the client outlives it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/base/UiQueue.h"
#include "host/network/HttpStreamAnswer.h"

namespace host {

struct HttpPatience {
    Clock::duration connect {};    // until a connection stands
    Clock::duration headers {};    // longest silence before and within the headers; these end within connect + headers
    Clock::duration body {};    // longest silence afterwards, while the client takes bytes
    Clock::time_point answerBy = Clock::time_point::max();    // when the headers have to be complete at the latest
};

// Does in the background, while the program starts, what the first transfer would have to do.
void PrepareHttp();

class HttpTransferClient {
public:
    enum class Take { kTaken, kPause, kStop };
    virtual bool OnAnswer(const HttpAnswer& answer) = 0;    // headers complete; false stops the transfer
    virtual Take OnBytes(const uint8_t* data, size_t length) = 0;    // kPause: the same bytes come again after Resume

protected:
    ~HttpTransferClient() = default;
};

class HttpTransfer {
public:
    struct Result {
        enum class Kind {
            kComplete,    // the whole answer as the server framed it
            kDropped,    // the connection could not be had or broke: worth another try
            kSilent,    // a time-out
            kImpossible    // not http, too many redirections, nonsense
        };
        Kind kind = Kind::kComplete;
        std::string text;
    };

    HttpTransfer(const std::string& url, HttpTransferClient& client);
    ~HttpTransfer();
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

    bool Start(const HttpRequest& request, const HttpPatience& patience);    // false: no memory or no usable URL
    void SetBodyPatience(Clock::duration silence);    // of the transfer under way
    void Stop();    // closes the connection of an answer under way
    void Resume();
    bool IsRunning() const;

    std::optional<Result> Perform();    // does what can be done now; calls the client
    // Sleeps until there is something to do, `wakeFd` is readable or `until`.
    void Wait(int wakeFd, Clock::time_point until);

private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};

}    // namespace host
