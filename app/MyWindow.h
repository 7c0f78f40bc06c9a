// The application's main window: covers the screen above the video, transparent but for a status message
// in the top right corner, and owns the timer that is the clock of all application countdowns.
//
// Units:     logical pixels; ticks of 100 ms.
// Errors:    a missing icon is told on standard output and left out.
// Threads:   the user-interface thread.
// Ownership: owns the icon pictures. The client is not owned and outlives the window. The program ends when
//            the window vanishes.
#pragma once

#include <array>

#include "app/OsdIcons.h"
#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"

class MyWindow : public CascadeWindow, public CascadeTimer {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void TimerSeq() = 0;    // every tick
        virtual void OnKeyDown(unsigned long key) = 0;
        virtual bool IsVideoRunning() const = 0;
    };

    // What is shown. The icon line is the icon when there is one; else the second text names a picture of
    // the common images folder. The first text is shown only when neither is there.
    struct Message {
        CascadeString first;
        CascadeString second;    // "-" with an icon
        int iconIndex = Osd::kNoIconIndex;
        CascadeString third;
        CascadeString fourth;
    };

    explicit MyWindow(Client& client);

    void ShowMessage(const Message& message, int ticks);
    void SetFontSize(int points);

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    void OnTimer(unsigned long id) override;

private:
    bool PaintIconLine(CascadeBitmap& bitmap, int& y);
    void PaintPicture(CascadeBitmap& bitmap, const CascadeBitmap& picture, int& y) const;
    void PaintText(CascadeBitmap& bitmap, const CascadeString& text, int& y) const;

    Client& m_Client;
    uint32_t m_nTimer = 0;
    int m_nKeepAwake = 0;    // ticks until the platform is told of activity
    int m_nHide = 0;    // ticks; the message is shown while it is not zero
    Message m_Message;
    CascadeFont m_Font;
    std::array<CascadeBitmap, Osd::kIconCount> m_Icons;    // those that have been shown
};
