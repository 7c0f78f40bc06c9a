// The test platform: the box's device classes without a box. It is linked in place of the host's rooms;
// host/base (strings, files, threads) stays real.
//
// Units:   milliseconds; logical pixels unless said otherwise.
// Threads: the thread that calls Reset is the user-interface thread. The clock, posted messages, Redraw and
//          the decoder's records may also be used from a thread that the test starts.
// Use:     derive the fixture from PlatformTest, or call Reset first. Nothing happens by itself:
//          keys, timers and painting wait until the test asks for them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/CascadeBitmap.h"
#include "platform/CascadeGeometry.h"
#include "platform/CascadeMPEGFile.h"
#include "platform/CascadeMediaServers.h"
#include "platform/CascadeUPnP.h"

class CascadeWindow;

namespace TestPlatform {

// Back to the start: time 1,000,000, no windows, no messages, one output resolution, an empty store.
// Windows, timers, bitmaps and decoders that are still alive are forgotten, not destroyed.
void Reset();

// ---- clock and timers
void SetTime(uint32_t ms);
void Advance(uint32_t ms);
void Tick(int times = 1);         // every running timer fires once, in the order of their setting; the clock stands
void RunFor(uint32_t ms);         // moves the clock and fires each timer when it is due
int RunningTimers();
// Waits for what threads do: timers fire again and again until it is so. False: not within 20 seconds.
bool Until(const std::function<bool()>& condition);

// ---- application
void SetArgs(std::vector<std::string> args);    // what GetArg answers; argument 0 is the program's path
bool WasTerminated();
std::string Command(const char* text);    // through OnECPCommand of the application; the reply it leaves in "Unknown command"

// ---- keys: as the box delivers them: the focused window first, then the application; a release goes to the
// window that handled the press
void PressKey(unsigned long key);    // down and up
void PressKeys(const std::vector<unsigned long>& keys);
void KeyDown(unsigned long key);
void KeyUp(unsigned long key);
bool TypeText(const char* utf8);     // to the focused window
int DeliverKeys();       // those that CascadeInput was given; how many there were
int ScreenActivity();    // calls of NotifyScreenActivity

// ---- waiting (SetHTTPWait): meanwhile timers do not fire and keys go to OnKeyWhileWaiting. Leaving a wait does not
// leave the event: the end flag stays
void LeaveEvent();    // clears the end flag, then runs what PostAfterWait queued when nothing waits

// ---- wormhole
struct PostedMessage {
    std::string address;
    uint32_t id = 0;
    std::vector<unsigned char> data;
};
std::vector<PostedMessage> Messages();    // posted; they are not delivered
void RefuseMessages(bool refuse);

// ---- windows
std::vector<CascadeWindow*> WindowsOnScreen();      // lowest first
CascadeWindow* FindWindow(const std::string& title);    // on screen; null: none
CascadeWindow* FocusWindow();                       // or null
int RedrawCount(const CascadeWindow& window);       // requests since Reset, Materialize included
bool NeedsPaint(const CascadeWindow& window);

// ---- drawing
struct Drawing {
    enum Kind { kFill, kRect, kRoundedRect, kGradient, kStroke, kText, kBlit, kStretchBlit, kZoneBlit };
    Kind kind = kFill;
    CascadeRect rect;             // as given; a text's is its extent, a fill's the whole bitmap
    CascadeColor color = 0;       // the first of a gradient
    std::string text;
    int fontSize = 0;
    std::string source;           // file name without folder of the picture that is blitted; empty: drawn by the program
    std::vector<CascadeColor> pixels;    // of a zone blit, rect.width a row
};
std::vector<Drawing> Paint(CascadeWindow& window);    // what OnPaint drew; the request is done with
int PaintAll();                                       // paints what asked for it; how many windows
const std::vector<Drawing>& DrawingsOn(const CascadeBitmap& bitmap);
const Drawing* FindText(const std::vector<Drawing>& drawings, const std::string& text);      // exact; null: none
const Drawing* FindBlit(const std::vector<Drawing>& drawings, const std::string& source);
// The pictures that CreateFromFile knows.
void AddPicture(const std::string& path, CascadeDims dims);
// CascadeJpegFile knows the same pictures; the bytes of the pixel at (x, y) are x, y, 0x55. A decoder that is held waits until
// it is let go or its stop flag is set; one that is deaf does not mind the flag.
enum class JpegDecoding { kRuns, kHeld, kHeldDeaf };
void SetJpegDecoding(JpegDecoding decoding);
int JpegsHeld();    // decoders that wait at the moment

// ---- screen
void SetResolutions(std::vector<CascadeDims> resolutions, unsigned current = 0);
void RefuseResolution(bool refuse);
const std::vector<unsigned>& ResolutionChanges();              // asked for and granted
void SetGraphicsFolder(const std::string& folder);             // with a trailing "/"; default "/graphics/"

// ---- settings
using SettingsStore = std::map<std::string, std::map<std::string, std::string>>;    // section, key, value
SettingsStore& Settings();
void RefuseSettings(bool refuse);    // no section can be made, nothing be written

// ---- thumbnails: the first request for the path is answered
bool AnswerThumbnail(const std::string& path, const std::string& pictureFile, int seconds = 0);

// ---- HTTP
struct HTTPResource {
    std::string bytes;
    unsigned long longestRead = ~0UL;    // a read answers at most this many bytes
    size_t stallAt = ~size_t{0};         // reads that begin here or later answer 0, interrupted
};
void SetHTTPResource(const std::string& url, HTTPResource resource);
// Called inside Open and ReadBytes, while CascadeApp::IsWaiting is true; EndWait makes the call fail.
void SetHTTPWait(std::function<void()> whileWaiting);
const std::vector<std::string>& HTTPOpens();    // every URL that was tried

// ---- classification of streams
struct MPEGProgramScript {
    CascadeMPEGFile::Program program;
    std::vector<CascadeMPEGFile::VideoStream> video;
    std::vector<CascadeMPEGFile::AudioStream> audio;
};
struct MPEGScript {
    CascadeMPEGFile::StreamType type = CascadeMPEGFile::kMPEG2ProgramStream;
    std::vector<MPEGProgramScript> programs;
};
void SetMPEGScript(MPEGScript script);
const std::vector<unsigned long long>& ClassifiedAt();    // stream positions of the SetStream calls
// A program stream with one video 0xE0 of 720 x 576 and one MPEG audio 0xC0.
MPEGScript SimpleProgramStream();

}    // namespace TestPlatform

// The decoder that was opened last, or made last before any opening.
namespace TestDecoder {

// Every operation in order, as "NewOpen(8,192512,0,...)": arguments in decimal, rectangles as left,top,width,height.
std::vector<std::string> Calls();
void ClearCalls();
int Count(const std::string& operation);
std::string Last(const std::string& operation);         // the whole call; empty: never
void SetResult(const std::string& operation, bool result);

bool IsOpen();
bool IsStreaming();
unsigned NumBuffers();

// Offers the next ring buffer; `length` 0 is the buffer's size. Answers what was filled in. It is a test
// failure to pull while not streaming.
std::string Pull(unsigned long length = 0);
std::string PullBytes(size_t atLeast);    // until so many, or a fill of 0
void Fail();                              // calls OnDecoderError

void SetStarving(bool starving);    // what IsStarving answers
// For callbacks: what IsBeingStopped answers. A rest moves the clock instead of taking time.
void SetBeingStopped(bool stopped);
void SetOnRest(std::function<void(uint32_t ms)> onRest);
int Rests();

}    // namespace TestDecoder

// Media servers. Answers and reports come when the test gives them.
namespace TestUPnP {

struct Request {
    std::string deviceUUID;
    std::string objectId;
    std::string filter;
    std::string sortCriteria;
};
const std::vector<Request>& Requests();    // the index of one is its transaction less 1
bool WasCancelled();                       // CancelAVBrowse was called while a request was outstanding

struct AnswerScript {
    std::vector<CascadeUPnP::AVObject> objects;    // added to what the array holds
    CascadeUPnP::TransactionResult result = CascadeUPnP::kTransactionOK;
};
bool Answer(AnswerScript answer);    // to the last request; false: it is not outstanding

// A server comes or goes; answers how many watch.
int Report(const std::string& name, const std::string& uuid, CascadeMediaServers::Change change = CascadeMediaServers::kAppeared);

}    // namespace TestUPnP

class PlatformTest : public ::testing::Test {
protected:
    PlatformTest() { TestPlatform::Reset(); }
};
