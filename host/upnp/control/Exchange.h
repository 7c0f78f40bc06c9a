// One question to a web server of the network, and its answer, bounded in size and time.
//
// Units:     sizes are bytes.
// Errors:    in Outcome; a redirection is an answer like any other and is not followed.
// Threads:   the control point's thread, whose main context runs; the answer never comes out of the
//            constructor.
// Ownership: destruction ends the exchange; `onDone` is not called afterwards. It may destroy the exchange.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <libsoup/soup.h>

namespace host {

struct ReleaseObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T> using Owned = std::unique_ptr<T, ReleaseObject>;

// No proxy, no cookies, no compressed answers: what is bounded is what was sent.
Owned<SoupSession> NewSession();

class Exchange {
public:
    enum class Outcome { kAnswered, kLost, kTimedOut, kTooLarge };
    struct Answer {
        Outcome outcome = Outcome::kLost;
        unsigned status = 0;
        std::string body;    // empty when it was taken in pieces
    };
    struct Question {
        std::string url;
        std::string soapAction;    // empty: a GET
        std::string body;
        size_t mostBytes = 0;
        unsigned mostSeconds = 0;    // for all of it
        // Takes the body as it arrives, also the begin of one too large; must not destroy the exchange.
        std::function<void(std::string_view)> onPiece;
    };
    using OnDone = std::function<void(Answer)>;

    Exchange(SoupSession* session, Question question, OnDone onDone);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

private:
    struct State;
    std::shared_ptr<State> m_pState;    // also held by the library's calls under way
};

}    // namespace host
