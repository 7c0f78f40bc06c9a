// The thread that talks to the server for one HTTP stream: it keeps the window ahead of the read position
// filled, carries out the reading side's orders, and survives broken connections.
//
// Units:     positions are bytes of the resource.
// Errors:    in HttpStreamShared::state and error. A connection that breaks is taken up again at the same
//            byte, a bounded number of times. One that falls silent is replaced once after half the time, as
//            it may have died unnoticed; a server that is silent for the whole time is given up.
// Threads:   made, woken and destroyed by the reading side. Destruction is immediate, whatever is under way.
// Ownership: the shared part outlives it.
#pragma once

#include <string>
#include <thread>

#include "host/network/HttpStreamShared.h"
#include "host/network/HttpStreamTransfer.h"

namespace host {

struct HttpTimeouts {
    Clock::duration connect {};
    Clock::duration silence {};
};

class HttpStreamReader final : private HttpTransferClient {
public:
    HttpStreamReader(std::string url, HttpTimeouts timeouts, HttpStreamShared& shared);
    ~HttpStreamReader();
    HttpStreamReader(const HttpStreamReader&) = delete;
    HttpStreamReader& operator=(const HttpStreamReader&) = delete;

    void Wake();    // an order was given, or the transfer may flow again

private:
    void Run();
    bool TakeOrders();
    void BeginOrder(uint64_t target, bool probe, std::optional<uint64_t> size);
    void Ask(uint64_t from, std::string ifRange = {});
    void AskAgain(std::string ifRange = {});

    bool OnAnswer(const HttpAnswer& answer) override;
    Take OnBytes(const uint8_t* data, size_t length) override;

    void Finish(const HttpTransfer::Result& result);
    void FinishJudged(const std::string& text);
    void Complete();
    void TryAgain(const std::string& text);
    void EndSilence(const std::string& text);
    void End();
    void Fail(const std::string& text);
    void NoteSize(const HttpJudgement& judgement);

    HttpStreamShared& m_Shared;
    const HttpTimeouts m_Timeouts;
    const std::string m_Url;
    const int m_nWakeFd;

    // The thread's own from here on.
    HttpTransfer* m_pTransfer = nullptr;
    uint64_t m_nOrder = 0;    // the one being carried out
    bool m_bProbe = false;
    bool m_bRangesFail = false;    // this server's ranges are of no use
    bool m_bGrown = false;    // the resource has grown since it was opened
    int m_nProbes = 0;
    HttpRequest m_Request;
    bool m_bAnswered = false;
    HttpJudgement m_Judgement;
    std::string m_Validator;    // of the resource as last answered
    uint64_t m_nBodyAt = 0;    // position of the next byte that the server sends
    uint64_t m_nEndAtTry = 0;    // the window's end when the request was sent
    int m_nTries = 0;    // in a row without a new byte
    bool m_bReplaced = false;    // the connection, for its silence; until the next byte
    Clock::time_point m_LastByte;
    Clock::time_point m_AskAt = Clock::time_point::max();    // when to try again

    std::thread m_Thread;    // last: it starts when everything else stands
};

}    // namespace host
