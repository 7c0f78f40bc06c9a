// The two sides of the phone remote: what its server asks of the player, and what the player asks of the server, which
// is a module (host/remote/server) that is loaded when somebody connects for the first time.
//
// Units:     keys are codes of the remote control.
// Threads:   the remote thread, whose main context is Context(). Answers come there too, some time later, and never
//            after the server was deleted.
// Ownership: the player's side outlives the server. Whoever had the server made deletes it, on the remote thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

typedef struct _GMainContext GMainContext;
typedef struct _GSocket GSocket;

namespace host {

class Pairing;
struct FeedPicture;

class RemotePlayer {
public:
    virtual ~RemotePlayer() = default;
    virtual GMainContext* Context() = 0;

    // Each is carried out in turn on the user-interface thread; then `done` is called.
    using Done = std::function<void()>;
    virtual void KeyDown(uint32_t key, Done done) = 0;
    virtual void KeyHeld(uint32_t key, Done done) = 0;
    virtual void KeyUp(uint32_t key, Done done) = 0;
    virtual void Type(std::string utf8, Done done) = 0;    // one character, or "\b"

    virtual void AskState(std::function<void(std::string json)> answer) = 0;    // StateJson.h says what is in it
    virtual void AskPicture(uint64_t seen, std::function<void(std::shared_ptr<const FeedPicture>)> answer) = 0;    // null: nothing new

    virtual Pairing& GetPairing() = 0;
    virtual bool NeedsPairing() const = 0;    // other devices can reach the server
};

class RemoteServer {
public:
    virtual ~RemoteServer() = default;
    // Serves one connection that was accepted, whose reference it takes over.
    virtual void Serve(GSocket* socket) = 0;
};

}    // namespace host

// The module's one entry, found by its name. Null: the server cannot be had.
extern "C" host::RemoteServer* NuvidMakeRemoteServer(host::RemotePlayer& player);
