#include "host/remote/server/PhoneServer.h"

#include <cstring>

#include <netinet/in.h>
#include <netinet/tcp.h>

#include "host/base/Pairing.h"
#include "host/remote/server/PageFiles.h"
#include "host/remote/server/RequestRules.h"

namespace host {
namespace {

constexpr const char* kCookie = "NuvidRemote";
constexpr const char* kSocketPath = "/socket";
constexpr const char* kBodyKey = "nuvid-body";
constexpr size_t kLongestBody = 64;    // bytes; a code has six
constexpr guint kTooManyRequests = 429;    // RFC 6585 4
constexpr double kPairBurst = 10;    // requests of pairing, of all devices together
constexpr double kPairPerSecond = 0.2;

const char* RequestField(SoupServerMessage* message, const char* name)
{
    const char* const value = soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
    return value == nullptr ? "" : value;
}

std::string Token(SoupServerMessage* message)
{
    const char* const cookies = soup_message_headers_get_list(soup_server_message_get_request_headers(message), "Cookie");
    return cookies == nullptr ? std::string() : std::string(CookieNamed(kCookie, cookies));
}

void SetField(SoupServerMessage* message, const char* name, const std::string& value)
{
    soup_message_headers_replace(soup_server_message_get_response_headers(message), name, value.c_str());
}

void Respond(SoupServerMessage* message, guint status, const char* type = nullptr, std::string_view body = {})
{
    soup_server_message_set_status(message, status, nullptr);
    if (type != nullptr) {
        soup_server_message_set_response(message, type, SOUP_MEMORY_COPY, body.data(), body.size());
    }
}

// Whatever a browser could be talked into doing with the page, it is told not to.
void SetPolicies(SoupServerMessage* message, const std::string& host)
{
    SetField(message, "Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; manifest-src 'self'; connect-src 'self' ws://" + host
            + "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    SetField(message, "X-Content-Type-Options", "nosniff");
    SetField(message, "X-Frame-Options", "DENY");
    SetField(message, "Referrer-Policy", "no-referrer");
    SetField(message, "Cross-Origin-Resource-Policy", "same-origin");
    SetField(message, "Cross-Origin-Opener-Policy", "same-origin");
    SetField(message, "Connection", "close");    // each connection carries one request; Connections says why
}

}    // namespace

const PhoneServer::Route PhoneServer::kRoutes[] = {
    {"GET", "/session", &PhoneServer::Session},
    {"POST", "/code", &PhoneServer::ShowCode},
    {"POST", "/pair", &PhoneServer::Pair},
    {"POST", "/leave", &PhoneServer::Leave},
};

PhoneServer::PhoneServer(RemotePlayer& player)
    : m_Player(player)
    , m_pSoup(soup_server_new("server-header", "Nuvid", nullptr))
    , m_Connections(player.Context())
    , m_Phones(player)
    , m_PairRate(kPairBurst, kPairPerSecond)
{
    // Unpacking would let a small message grow large, and there is nothing to be packed.
    soup_server_remove_websocket_extension(m_pSoup, SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
    const SoupServerCallback onHeaders = [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
        static_cast<PhoneServer*>(self)->OnHeaders(message, path);
    };
    const SoupServerCallback onRequest = [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
        static_cast<PhoneServer*>(self)->OnRequest(message, path);
    };
    const SoupServerWebsocketCallback onSocket
        = [](SoupServer*, SoupServerMessage* message, const char*, SoupWebsocketConnection* socket, gpointer self) {
              static_cast<PhoneServer*>(self)->OnSocket(message, socket);
          };
    // The server asks the handlers of the path that fits best, so both paths have the first one.
    soup_server_add_early_handler(m_pSoup, nullptr, onHeaders, this, nullptr);
    soup_server_add_early_handler(m_pSoup, kSocketPath, onHeaders, this, nullptr);
    soup_server_add_handler(m_pSoup, nullptr, onRequest, this, nullptr);
    soup_server_add_websocket_handler(m_pSoup, kSocketPath, nullptr, nullptr, onSocket, this, nullptr);
}

PhoneServer::~PhoneServer()
{
    soup_server_disconnect(m_pSoup);
    g_object_unref(m_pSoup);
}

void PhoneServer::Serve(GSocket* socket)
{
    // An answer to a key is not held back until there is more to send.
    g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
    GSocketConnection* connection = g_socket_connection_factory_create_connection(socket);
    g_object_unref(socket);
    GSocketAddress* local = g_socket_connection_get_local_address(connection, nullptr);
    GSocketAddress* peer = g_socket_connection_get_remote_address(connection, nullptr);
    if (local != nullptr && peer != nullptr && m_Connections.Admit(connection, peer)) {
        soup_server_accept_iostream(m_pSoup, G_IO_STREAM(connection), local, peer, nullptr);
    }
    g_clear_object(&local);
    g_clear_object(&peer);
    g_clear_object(&connection);
}

void PhoneServer::CountBody(SoupServerMessage* message)
{
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    auto* const body = new std::string();
    g_object_set_data_full(G_OBJECT(message), kBodyKey, body, [](gpointer text) { delete static_cast<std::string*>(text); });
    using OnChunkCall = void (*)(SoupServerMessage*, GBytes*, PhoneServer*);
    const OnChunkCall onChunk = [](SoupServerMessage* of, GBytes* chunk, PhoneServer* self) {
        auto* const text = static_cast<std::string*>(g_object_get_data(G_OBJECT(of), kBodyKey));
        gsize size = 0;
        const auto* const bytes = static_cast<const char*>(g_bytes_get_data(chunk, &size));
        if (text->size() + size > kLongestBody) {
            self->m_Connections.Cut(soup_server_message_get_remote_address(of));
        } else {
            text->append(bytes, size);
        }
    };
    g_signal_connect(message, "got-chunk", G_CALLBACK(onChunk), this);
}

bool PhoneServer::MayDrive(SoupServerMessage* message)
{
    return !m_Player.NeedsPairing() || m_Player.GetPairing().Knows(Token(message));
}

// Before the body is read: what sets a status here is answered with it, and nobody else is asked.
void PhoneServer::OnHeaders(SoupServerMessage* message, const char* path)
{
    const std::string host = RequestField(message, "Host");
    GSocketAddress* const local = soup_server_message_get_local_address(message);
    CountBody(message);
    SetPolicies(message, "");
    if (!G_IS_INET_SOCKET_ADDRESS(local)
        || !IsOurHost(host, NumericAddress(local), g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(local)))) {
        soup_server_message_set_status(message, SOUP_STATUS_MISDIRECTED_REQUEST, "Misdirected Request");
        return;
    }
    SetPolicies(message, host);
    const bool isSocket = path != nullptr && std::strcmp(path, kSocketPath) == 0;
    const bool isGet = std::strcmp(soup_server_message_get_method(message), "GET") == 0;
    if ((isSocket || !isGet) && !IsOurOrigin(RequestField(message, "Origin"), host)) {
        Respond(message, SOUP_STATUS_FORBIDDEN);
    } else if (isSocket && !isGet) {
        Respond(message, SOUP_STATUS_METHOD_NOT_ALLOWED);
    } else if (isSocket && !MayDrive(message)) {
        Respond(message, SOUP_STATUS_UNAUTHORIZED);
    } else if (isSocket && m_Phones.IsFull()) {
        Respond(message, SOUP_STATUS_SERVICE_UNAVAILABLE);
    }
}

void PhoneServer::OnRequest(SoupServerMessage* message, const char* path)
{
    const char* const method = soup_server_message_get_method(message);
    bool known = false;
    for (const Route& route : kRoutes) {
        if (path != nullptr && std::strcmp(route.path, path) == 0) {
            known = true;
            if (std::strcmp(route.method, method) == 0) {
                SetField(message, "Cache-Control", "no-store");
                (this->*route.handler)(message);
                return;
            }
        }
    }
    const PageFile* const file = path == nullptr || known ? nullptr : FindPageFile(path);
    if (file == nullptr && !known) {
        Respond(message, SOUP_STATUS_NOT_FOUND);
    } else if (file == nullptr || std::strcmp(method, "GET") != 0) {
        Respond(message, SOUP_STATUS_METHOD_NOT_ALLOWED);
    } else {
        SetField(message, "Cache-Control", "no-cache");
        soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
        soup_server_message_set_response(message, file->type, SOUP_MEMORY_STATIC, reinterpret_cast<const char*>(file->bytes), file->size);
    }
}

void PhoneServer::OnSocket(SoupServerMessage* message, SoupWebsocketConnection* socket)
{
    m_Connections.Keep(soup_server_message_get_remote_address(message));
    m_Phones.Add(socket, m_Player.NeedsPairing() ? Token(message) : std::string());
}

void PhoneServer::Session(SoupServerMessage* message)
{
    const std::string json = std::string("{\"paired\":") + (MayDrive(message) ? "true" : "false") + ",\"pairing\":" + (m_Player.NeedsPairing() ? "true" : "false") + "}";
    Respond(message, SOUP_STATUS_OK, "application/json", json);
}

void PhoneServer::ShowCode(SoupServerMessage* message)
{
    const bool shown = m_PairRate.Take(Clock::now()) && m_Player.GetPairing().ShowCode(NumericAddress(soup_server_message_get_remote_address(message)));
    Respond(message, shown ? guint(SOUP_STATUS_NO_CONTENT) : kTooManyRequests);
}

void PhoneServer::Pair(SoupServerMessage* message)
{
    const std::string code = CodeIn(*static_cast<const std::string*>(g_object_get_data(G_OBJECT(message), kBodyKey)));
    std::string token;
    PairAnswer answer = PairAnswer::kTooOften;
    if (m_PairRate.Take(Clock::now())) {
        answer = m_Player.GetPairing().TryCode(code, NumericAddress(soup_server_message_get_remote_address(message)), token);
    }
    switch (answer) {
    case PairAnswer::kPaired:
        SetField(message, "Set-Cookie", std::string(kCookie) + "=" + token + "; Path=/; Max-Age=31536000; HttpOnly; SameSite=Strict");
        Respond(message, SOUP_STATUS_NO_CONTENT);
        break;
    case PairAnswer::kWrong:
        Respond(message, SOUP_STATUS_FORBIDDEN);
        break;
    case PairAnswer::kNoCode:
        Respond(message, SOUP_STATUS_GONE);
        break;
    case PairAnswer::kTooOften:
        Respond(message, kTooManyRequests);
        break;
    }
}

void PhoneServer::Leave(SoupServerMessage* message)
{
    m_Player.GetPairing().Forget(Token(message));
    SetField(message, "Set-Cookie", std::string(kCookie) + "=; Path=/; Max-Age=0; HttpOnly; SameSite=Strict");
    Respond(message, SOUP_STATUS_NO_CONTENT);
}

}    // namespace host
