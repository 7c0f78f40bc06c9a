#include "app/KeyWindows.h"

void KeyWindows::CloseAll(uint8_t bits)
{
    for (int i = 0; i < kCount; ++i) {
        if ((bits & Bit(static_cast<Window>(i))) != 0) {
            m_Ticks[i] = 0;
        }
    }
}

void KeyWindows::Tick()
{
    for (int& ticks : m_Ticks) {
        if (ticks != 0) {
            --ticks;
        }
    }
}

bool FastKey::Down()
{
    if (++m_nHoldCount < kLongPress) {
        return false;
    }
    m_nHoldCount = 0;
    m_bLongDone = true;
    return true;
}

bool FastKey::Up()
{
    const bool wasShort = !m_bLongDone;
    m_bLongDone = false;
    m_nHoldCount = 0;
    return wasShort;
}
