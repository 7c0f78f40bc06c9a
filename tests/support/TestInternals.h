// What the files of the test platform share: each takes part in Reset.
#pragma once

#include <string>

#include "platform/CascadeGeometry.h"

namespace TestInternals {

void ResetApp();
void ResetTimers();
void ResetWindows();
void ResetDrawing();
void ResetJpegs();
void ResetScreen();
void ResetStreams();
void ResetDecoder();
void ResetUPnP();

bool IsWaiting();
void SetWaiting(bool waiting);
bool WaitWasEnded();

CascadeDims SizeOfPicture(const std::string& path);    // 0 x 0: there is none. From any thread.

}    // namespace TestInternals
