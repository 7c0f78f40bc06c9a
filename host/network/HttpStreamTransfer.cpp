#include "host/network/HttpStreamTransfer.h"

#include <algorithm>
#include <thread>

#include <curl/curl.h>
#include <poll.h>
#include <sys/socket.h>

namespace host {
namespace {

constexpr long kMostRedirections = 5;
constexpr size_t kMostHeaderBytes = 256 * 1024;
constexpr long kReceiveChunk = 64 * 1024;
// What the system may take in beyond the stream's own buffer: bytes that a skip throws away.
constexpr int kSocketBuffer = 512 * 1024;

struct FreeUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct FreeText {
    void operator()(char* text) const { curl_free(text); }
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
struct FreeEasy {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct FreeMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

bool InitCurl()
{
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return ready;
}

// The URL as it goes over the wire: blanks and bytes beyond ASCII encoded, no fragment. Empty: not http.
std::string WireUrl(const std::string& text)
{
    const std::unique_ptr<CURLU, FreeUrl> url(curl_url());
    if (url == nullptr || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_URLENCODE) != CURLUE_OK) {
        return {};
    }
    curl_url_set(url.get(), CURLUPART_FRAGMENT, nullptr, 0);
    char* part = nullptr;
    if (curl_url_get(url.get(), CURLUPART_SCHEME, &part, 0) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, FreeText> scheme(part);
    if (std::string_view(part) != "http" || curl_url_get(url.get(), CURLUPART_URL, &part, 0) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, FreeText> whole(part);
    return part;
}

HttpTransfer::Result::Kind KindOf(CURLcode code)
{
    using Kind = HttpTransfer::Result::Kind;
    switch (code) {
    case CURLE_OK:
        return Kind::kComplete;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::kSilent;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_WRITE_ERROR:    // stopped by the client, which knows why
        return Kind::kDropped;
    default:
        return Kind::kImpossible;
    }
}

int LimitSocket(void*, curl_socket_t socket, curlsocktype)
{
    setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &kSocketBuffer, sizeof(kSocketBuffer));
    return CURL_SOCKOPT_OK;
}

}    // namespace

// The first handle brings the encryption library to life, for some milliseconds.
void PrepareHttp()
{
    static const std::jthread preparing([] {
        if (InitCurl()) {
            const std::unique_ptr<CURL, FreeEasy> easy(curl_easy_init());
        }
    });
}

class HttpTransfer::Impl {
public:
    Impl(const std::string& url, HttpTransferClient& client)
        : m_Client(client)
    {
        if (InitCurl()) {
            m_Url = WireUrl(url);
            m_Multi.reset(curl_multi_init());
            m_Easy.reset(curl_easy_init());
        }
    }
    ~Impl() { Stop(); }

    bool Start(const HttpRequest& request, const HttpPatience& patience);
    void Stop();
    void Resume();
    void SetBodyPatience(Clock::duration silence) { m_Patience.body = silence; }
    bool IsRunning() const { return m_bRunning; }
    std::optional<Result> Perform();
    void Wait(int wakeFd, Clock::time_point until);

private:
    enum class Phase { kConnecting, kHeaders, kBody };

    void SetOptions(const HttpRequest& request);
    Clock::time_point Deadline() const;
    size_t OnHeader(std::string_view line);
    size_t OnBody(const uint8_t* data, size_t length);

    static size_t HeaderCallback(char* data, size_t, size_t length, void* self) { return static_cast<Impl*>(self)->OnHeader({data, length}); }
    static size_t BodyCallback(char* data, size_t, size_t length, void* self)
    {
        return static_cast<Impl*>(self)->OnBody(reinterpret_cast<const uint8_t*>(data), length);
    }
    static int ConnectedCallback(void* self, char*, char*, int, int)
    {
        auto* const transfer = static_cast<Impl*>(self);
        transfer->m_Phase = Phase::kHeaders;
        transfer->m_LastSign = Clock::now();
        return CURL_PREREQFUNC_OK;
    }

    HttpTransferClient& m_Client;
    std::string m_Url;
    std::unique_ptr<CURLM, FreeMulti> m_Multi;
    std::unique_ptr<CURL, FreeEasy> m_Easy;    // gone before the multi handle
    std::unique_ptr<curl_slist, FreeList> m_Headers;
    char m_ErrorText[CURL_ERROR_SIZE] = {};
    HttpPatience m_Patience;
    HttpAnswer m_Answer;
    size_t m_nHeaderBytes = 0;
    Phase m_Phase = Phase::kConnecting;
    bool m_bRunning = false;
    bool m_bPaused = false;
    Clock::time_point m_Started;
    Clock::time_point m_LastSign;
};

void HttpTransfer::Impl::SetOptions(const HttpRequest& request)
{
    CURL* const easy = m_Easy.get();
    curl_easy_reset(easy);
    curl_easy_setopt(easy, CURLOPT_URL, m_Url.c_str());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirections);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "Nuvid");
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // A name lookup that hangs is left behind instead of being waited for.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReceiveChunk);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, LimitSocket);
    const auto connectMs = std::chrono::duration_cast<std::chrono::milliseconds>(m_Patience.connect).count();
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::max<int64_t>(1, connectMs)));
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_ErrorText);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, HeaderCallback);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, BodyCallback);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, ConnectedCallback);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);

    // Positions are those of the bytes sent, so no coding may come between.
    curl_slist* headers = curl_slist_append(nullptr, "Accept-Encoding: identity");
    if (request.ranged) {
        curl_easy_setopt(easy, CURLOPT_RANGE, (std::to_string(request.from) + "-").c_str());
        if (!request.ifRange.empty()) {
            headers = curl_slist_append(headers, ("If-Range: " + request.ifRange).c_str());
        }
    }
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    m_Headers.reset(headers);
}

bool HttpTransfer::Impl::Start(const HttpRequest& request, const HttpPatience& patience)
{
    Stop();
    m_Patience = patience;
    if (m_Multi == nullptr || m_Easy == nullptr || m_Url.empty()) {
        return false;
    }
    SetOptions(request);
    m_ErrorText[0] = '\0';
    m_Answer = HttpAnswer();
    m_nHeaderBytes = 0;
    m_Phase = Phase::kConnecting;
    m_bPaused = false;
    m_Started = m_LastSign = Clock::now();
    m_bRunning = curl_multi_add_handle(m_Multi.get(), m_Easy.get()) == CURLM_OK;
    return m_bRunning;
}

void HttpTransfer::Impl::Stop()
{
    if (m_bRunning) {
        m_bRunning = false;
        curl_multi_remove_handle(m_Multi.get(), m_Easy.get());
    }
}

void HttpTransfer::Impl::Resume()
{
    if (m_bRunning && m_bPaused) {
        m_bPaused = false;
        m_LastSign = Clock::now();
        curl_easy_pause(m_Easy.get(), CURLPAUSE_CONT);    // calls OnBody at once
    }
}

size_t HttpTransfer::Impl::OnHeader(std::string_view line)
{
    m_LastSign = Clock::now();
    m_nHeaderBytes += line.size();
    if (m_nHeaderBytes > kMostHeaderBytes) {
        return 0;
    }
    if (m_Phase == Phase::kBody) {
        return line.size();    // a trailer of a chunked body
    }
    if (line != "\r\n" && line != "\n") {
        m_Answer.TakeHeaderLine(line);
        return line.size();
    }
    if (m_Answer.IsInterim()) {
        m_Phase = m_Answer.status < 200 ? Phase::kHeaders : Phase::kConnecting;
        return line.size();
    }
    m_Phase = Phase::kBody;
    return m_Client.OnAnswer(m_Answer) ? line.size() : 0;
}

size_t HttpTransfer::Impl::OnBody(const uint8_t* data, size_t length)
{
    m_LastSign = Clock::now();
    switch (m_Client.OnBytes(data, length)) {
    case HttpTransferClient::Take::kTaken:
        return length;
    case HttpTransferClient::Take::kPause:
        m_bPaused = true;
        return CURL_WRITEFUNC_PAUSE;
    case HttpTransferClient::Take::kStop:
        break;
    }
    return 0;
}

Clock::time_point HttpTransfer::Impl::Deadline() const
{
    if (!m_bRunning || m_bPaused) {
        return Clock::time_point::max();
    }
    const Clock::time_point headers = std::min(m_Started + m_Patience.connect + m_Patience.headers, m_Patience.answerBy);
    switch (m_Phase) {
    case Phase::kConnecting:
        return headers;    // the library minds the connection's own time
    case Phase::kHeaders:
        return std::min(headers, m_LastSign + m_Patience.headers);
    case Phase::kBody:
        break;
    }
    return m_LastSign + m_Patience.body;
}

std::optional<HttpTransfer::Result> HttpTransfer::Impl::Perform()
{
    if (!m_bRunning) {
        return std::nullopt;
    }
    int running = 0;
    curl_multi_perform(m_Multi.get(), &running);
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_Multi.get(), &left)) {
        if (message->msg == CURLMSG_DONE) {
            const CURLcode code = message->data.result;
            const std::string text = m_ErrorText[0] != '\0' ? m_ErrorText : curl_easy_strerror(code);
            Stop();
            return Result {KindOf(code), text};
        }
    }
    if (Clock::now() >= Deadline()) {
        Stop();
        return Result {Result::Kind::kSilent, "the server is silent"};
    }
    return std::nullopt;
}

void HttpTransfer::Impl::Wait(int wakeFd, Clock::time_point until)
{
    constexpr auto kLongest = std::chrono::minutes(10);
    const Clock::time_point now = Clock::now();
    const Clock::time_point end = std::min({until, Deadline(), now + kLongest});
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(std::max(end - now, Clock::duration::zero())).count();
    curl_waitfd wake {wakeFd, CURL_WAIT_POLLIN, 0};
    if (m_Multi == nullptr || curl_multi_poll(m_Multi.get(), &wake, 1, static_cast<int>(ms), nullptr) != CURLM_OK) {
        pollfd alone {wakeFd, POLLIN, 0};    // out of memory
        ::poll(&alone, 1, static_cast<int>(ms));
    }
}

HttpTransfer::HttpTransfer(const std::string& url, HttpTransferClient& client)
    : m_pImpl(std::make_unique<Impl>(url, client))
{
}

HttpTransfer::~HttpTransfer() = default;

bool HttpTransfer::Start(const HttpRequest& request, const HttpPatience& patience)
{
    return m_pImpl->Start(request, patience);
}

void HttpTransfer::SetBodyPatience(Clock::duration silence)
{
    m_pImpl->SetBodyPatience(silence);
}

void HttpTransfer::Stop()
{
    m_pImpl->Stop();
}

void HttpTransfer::Resume()
{
    m_pImpl->Resume();
}

bool HttpTransfer::IsRunning() const
{
    return m_pImpl->IsRunning();
}

std::optional<HttpTransfer::Result> HttpTransfer::Perform()
{
    return m_pImpl->Perform();
}

void HttpTransfer::Wait(int wakeFd, Clock::time_point until)
{
    m_pImpl->Wait(wakeFd, until);
}

}    // namespace host
