#include "platform/CascadeThread.h"

#include <system_error>

CascadeThread::~CascadeThread()
{
    WaitUntilFinished();
}

bool CascadeThread::Start(Procedure procedure, void* context)
{
    WaitUntilFinished();
    try {
        m_Thread = std::thread(procedure, context);
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void CascadeThread::WaitUntilFinished()
{
    if (m_Thread.joinable()) {
        m_Thread.join();
    }
}
