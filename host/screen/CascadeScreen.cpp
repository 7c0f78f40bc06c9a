#include "platform/CascadeScreen.h"

#include "host/base/VideoOutput.h"
#include "host/screen/HostLoop.h"

using screen::HostLoop;

namespace {

// Null before the loop is started: then there is one resolution, that of the logical screen.
screen::Screen* TheScreen()
{
    HostLoop* const loop = HostLoop::Current();
    return loop == nullptr ? nullptr : &loop->GetScreen();
}

}    // namespace

CascadeDims CascadeScreen::GetDims()
{
    return screen::kLogicalScreen;
}

unsigned CascadeScreen::GetNumSupportedOutputResolutions()
{
    const screen::Screen* const screen = TheScreen();
    return screen == nullptr ? 1 : screen->ResolutionCount();
}

bool CascadeScreen::GetSupportedOutputResolutionAt(unsigned index, CascadeDims& dims)
{
    if (index >= GetNumSupportedOutputResolutions()) {
        return false;
    }
    const screen::Screen* const screen = TheScreen();
    dims = screen == nullptr ? screen::kLogicalScreen : screen->Resolution(index);
    return true;
}

unsigned CascadeScreen::GetCurrentOutputResolution()
{
    const screen::Screen* const screen = TheScreen();
    return screen == nullptr ? 0 : screen->CurrentResolution();
}

unsigned CascadeScreen::GetCurrentScreenResolution()
{
    return 0;
}

bool CascadeScreen::SetOutputResolution(unsigned index)
{
    screen::Screen* const screen = TheScreen();
    return screen != nullptr && screen->SetResolution(index);
}

bool CascadeScreen::GetOutputResolutionScaleRect(unsigned index, CascadeRect& rect)
{
    CascadeDims dims;
    if (!GetSupportedOutputResolutionAt(index, dims)) {
        return false;
    }
    rect = {0, 0, dims.width, dims.height};
    return true;
}
