#include "host/upnp/control/Exchange.h"

#include <utility>
#include <vector>

namespace host {
namespace {

constexpr unsigned kSilenceSeconds = 10;    // a server that says nothing for so long is given up
constexpr size_t kPiece = 64 * 1024;

}    // namespace

Owned<SoupSession> NewSession()
{
    Owned<SoupSession> session(soup_session_new());
    soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_CONTENT_DECODER);
    soup_session_set_proxy_resolver(session.get(), nullptr);
    soup_session_set_timeout(session.get(), kSilenceSeconds);
    soup_session_set_user_agent(session.get(), "Nuvid");
    return session;
}

struct Exchange::State : std::enable_shared_from_this<Exchange::State> {
    Owned<SoupMessage> message;
    Owned<GCancellable> cancel {g_cancellable_new()};
    Owned<GInputStream> stream;
    GSource* timer = nullptr;
    size_t mostBytes = 0;
    std::vector<char> piece;    // a read that was cancelled may still hold it
    size_t got = 0;    // of the body
    OnDone onDone;    // empty: over
    std::function<void(std::string_view)> onPiece;
    Answer answer;

    using Self = std::shared_ptr<State>;

    ~State()
    {
        StopTimer();
    }

    void StopTimer()
    {
        if (timer != nullptr) {
            g_source_destroy(timer);
            g_source_unref(timer);
            timer = nullptr;
        }
    }
    void Finish(Outcome outcome)
    {
        StopTimer();
        g_cancellable_cancel(cancel.get());
        if (const OnDone done = std::exchange(onDone, nullptr)) {
            answer.outcome = outcome;
            done(std::move(answer));
        }
    }
    void FinishFailed(const GError* error)
    {
        Finish(g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ? Outcome::kTimedOut : Outcome::kLost);
    }
    void Read()
    {
        g_input_stream_read_async(stream.get(), piece.data(), piece.size(), G_PRIORITY_DEFAULT, cancel.get(), &State::OnRead, new Self(shared_from_this()));
    }
    void Begin(GInputStream* opened, const GError* error)
    {
        stream.reset(opened);
        if (opened == nullptr) {
            FinishFailed(error);
            return;
        }
        answer.status = soup_message_get_status(message.get());
        const goffset length = soup_message_headers_get_content_length(soup_message_get_response_headers(message.get()));
        if (!onPiece && length > 0 && static_cast<uint64_t>(length) > mostBytes) {
            Finish(Outcome::kTooLarge);
        } else {
            piece.resize(kPiece);
            Read();
        }
    }
    void Take(gssize length, const GError* error)
    {
        if (length < 0) {
            FinishFailed(error);
            return;
        }
        got += static_cast<size_t>(length);
        const std::string_view taken(piece.data(), static_cast<size_t>(length));
        if (length == 0) {
            Finish(Outcome::kAnswered);
        } else if (got > mostBytes) {
            Finish(Outcome::kTooLarge);
        } else {
            if (onPiece) {
                onPiece(taken);
            } else {
                answer.body += taken;
            }
            Read();
        }
    }

    static void OnSent(GObject* session, GAsyncResult* result, gpointer self)
    {
        const std::unique_ptr<Self> state(static_cast<Self*>(self));
        GError* error = nullptr;
        GInputStream* const opened = soup_session_send_finish(SOUP_SESSION(session), result, &error);
        if ((*state)->onDone) {
            (*state)->Begin(opened, error);
        } else if (opened != nullptr) {
            g_object_unref(opened);
        }
        g_clear_error(&error);
    }
    static void OnRead(GObject* stream, GAsyncResult* result, gpointer self)
    {
        const std::unique_ptr<Self> state(static_cast<Self*>(self));
        GError* error = nullptr;
        const gssize length = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, &error);
        if ((*state)->onDone) {
            (*state)->Take(length, error);
        }
        g_clear_error(&error);
    }
    static gboolean OnTime(gpointer self)
    {
        const Self state = static_cast<State*>(self)->shared_from_this();
        state->Finish(Outcome::kTimedOut);
        return G_SOURCE_REMOVE;
    }
};

Exchange::Exchange(SoupSession* session, Question question, OnDone onDone)
    : m_pState(std::make_shared<State>())
{
    State& state = *m_pState;
    state.onDone = std::move(onDone);
    state.onPiece = std::move(question.onPiece);
    state.mostBytes = question.mostBytes;
    state.timer = g_timeout_source_new_seconds(question.mostSeconds);
    state.message.reset(soup_message_new(question.soapAction.empty() ? "GET" : "POST", question.url.c_str()));
    const bool good = state.message != nullptr;
    if (good && !question.soapAction.empty()) {
        const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> body(g_bytes_new(question.body.data(), question.body.size()), g_bytes_unref);
        soup_message_set_request_body_from_bytes(state.message.get(), "text/xml; charset=\"utf-8\"", body.get());
        soup_message_headers_append(soup_message_get_request_headers(state.message.get()), "SOAPAction", question.soapAction.c_str());
    }
    if (good) {
        soup_message_add_flags(state.message.get(), SOUP_MESSAGE_NO_REDIRECT);
        soup_session_send_async(session, state.message.get(), G_PRIORITY_DEFAULT, state.cancel.get(), &State::OnSent, new State::Self(m_pState));
    } else {
        g_source_set_ready_time(state.timer, 0);
    }
    g_source_set_callback(state.timer, &State::OnTime, &state, nullptr);
    g_source_attach(state.timer, g_main_context_get_thread_default());
}

Exchange::~Exchange()
{
    m_pState->onDone = nullptr;
    m_pState->StopTimer();
    g_cancellable_cancel(m_pState->cancel.get());
}

}    // namespace host
