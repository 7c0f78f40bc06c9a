// What the files of the test platform share: each takes part in Reset.
#pragma once

namespace TestInternals {

void ResetApp();
void ResetTimers();
void ResetWindows();
void ResetDrawing();
void ResetScreen();
void ResetStreams();
void ResetThumbnails();
void ResetDecoder();
void ResetUPnP();

bool IsWaiting();
bool WaitWasEnded();

}    // namespace TestInternals
