#include "platform/CascadeTimer.h"

#include "host/screen/TimerQueue.h"

using screen::TimerQueue;

CascadeTimer::~CascadeTimer()
{
    TimerQueue::Instance().KillAll(this);
}
uint32_t CascadeTimer::SetTimer(uint32_t periodMs)
{
    return TimerQueue::Instance().Set(this, periodMs);
}
void CascadeTimer::KillTimer(uint32_t id)
{
    TimerQueue::Instance().Kill(this, id);
}
