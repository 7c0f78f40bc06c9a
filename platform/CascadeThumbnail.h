// Pictures of recordings, made in the background and kept in the user's thumbnail cache, where other programs
// find them too (and theirs are used).
//
// Units:     lengths are seconds; a picture file is a PNG of at most 256 x 256 pixels (one that another program made
//            may be larger), in the recording's display aspect ratio.
// Errors:    whatever has no picture (no such file, nothing to decode, a stream address) is answered with an empty
//            picture file. What failed once is not tried again until the file changes.
// Threads:   the user-interface thread. Nothing here waits for a disk; the work is done by a thread of lowest priority.
// Ownership: clients own themselves; one that goes has cancelled.
#pragma once

class CascadeThumbnails {
public:
    class Client {
    public:
        Client() = default;
        virtual ~Client();    // cancels
        Client(const Client&) = delete;
        Client& operator=(const Client&) = delete;

        // The one answer to a request, from an event of its own. `path` as it was asked for. Both texts are valid
        // during the call; a new request may be made in it. `seconds`: how long the recording lasts; 0: not known.
        virtual void OnThumbnail(const char* path, const char* pictureFile, int seconds) = 0;
    };

    // A recording, a folder with a DVD in it or a DVD image. One request per client: a newer one takes the place of
    // the one that is not answered yet. Always answered, also when the cache has the picture: never inside this call.
    static void Request(const char* path, Client& client);

    // No answer comes any more. Nothing when none is outstanding.
    static void Cancel(Client& client);
};
