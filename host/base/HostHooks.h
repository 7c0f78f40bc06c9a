// What one room of the host offers the others without their including each other.
//
// Threads: user-interface thread, unless said otherwise.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host {

struct FeedPicture;    // ScreenFeed.h

struct HostHooks {
    // host/screen
    // Takes the picture at once and answers the work that writes it as a PNG, for any thread: it takes
    // longer than a picture is shown. The work answers the file's path; empty: failed.
    std::function<std::function<std::string()>()> takeScreenshot;
    std::function<std::vector<std::string>()> windowTitles;    // on screen, lowest first
    // host/decoder: members of a JSON object without braces ("\"state\":\"playing\",..."); empty fields when nothing is open
    std::function<std::string()> decoderStats;
    // host/screen: the same for the screen ("\"presented\":..,\"first_frame_ms\":..")
    std::function<std::string()> screenStats;
    // host/screen: the screen in small as it is now; null when nothing has changed since picture number `seen`
    // (0: none was seen).
    std::function<std::shared_ptr<const FeedPicture>(uint64_t seen)> screenFeed;
    // host/screen: a key that is held goes on being held; a character (or "\b") is typed. Queued, as CascadeInput's are.
    std::function<void(uint32_t key)> repeatKey;
    std::function<void(const std::string& utf8)> typeText;
};
HostHooks& Hooks();

// Defined in host/network, called by the application loop: external control.
// Start answers false, and says why on standard error, when the port cannot be had; the player goes on.
bool StartNetworkServices();
void StopNetworkServices();

// Defined in host/remote: the phone remote, and pairing for all that listens; to be started first.
bool StartRemoteServices();
void StopRemoteServices();

// Defined in host/library: the folder of volumes, kept from the start to the end, and what answers thumbnails.
void StartLibraryServices();
void StopLibraryServices();

// Defined in host/desktop: the desktop's media keys and panels, where there is a session bus.
void StartDesktopServices();
void StopDesktopServices();

// Defined in host/network: claims external commands whose first word is `prefix`; `handler` runs on the
// user-interface thread with the whole command and answers the reply.
void ClaimCommandPrefix(const std::string& prefix, std::function<std::string(const std::string& command)> handler);

}    // namespace host
