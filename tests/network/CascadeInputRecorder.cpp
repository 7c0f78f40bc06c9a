#include "tests/network/CascadeInputRecorder.h"

#include "platform/CascadeInput.h"

std::vector<std::pair<unsigned long, bool>>& RecordedKeys()
{
    static std::vector<std::pair<unsigned long, bool>> keys;
    return keys;
}

void CascadeInput::DispatchKeyDown(unsigned long key)
{
    RecordedKeys().emplace_back(key, true);
}

void CascadeInput::DispatchKeyUp(unsigned long key)
{
    RecordedKeys().emplace_back(key, false);
}
