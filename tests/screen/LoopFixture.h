// A started headless loop, an application that records what reaches it, and windows that do.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <thread>

#include <gtest/gtest.h>

#include "host/screen/HostLoop.h"
#include "platform/CascadeApp.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"

using Log = std::vector<std::string>;

inline std::string Hex(const char* what, unsigned long value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%s %lx", what, value);
    return text;
}

class RecordingApp : public CascadeApp {
public:
    Log log;
    std::function<void(const CascadeMessage&)> onMessage;
    std::function<void(unsigned long)> onWaitingKey;
    void OnKeyDown(unsigned long key) override { log.push_back(Hex("app down", key)); }
    void OnKeyUp(unsigned long key) override { log.push_back(Hex("app up", key)); }
    void OnKeyWhileWaiting(unsigned long key) override
    {
        log.push_back(Hex("waiting", key));
        if (onWaitingKey) {
            onWaitingKey(key);
        }
    }
    void OnWormholeMessage(const CascadeMessage& message) override
    {
        log.push_back(Hex("message", message.id));
        if (onMessage) {
            onMessage(message);
        }
    }
};

class RecordingWindow : public CascadeWindow {
public:
    RecordingWindow(Log& log, const char* title, CascadeRect rect = {100, 100, 200, 100})
        : m_Log(log)
    {
        SetTitle(title);
        SetRect(rect);
    }
    bool takesKeys = true;
    bool takesText = false;
    CascadeWindow* next = nullptr;
    std::function<void(CascadeBitmap&)> onPaint;
    std::function<void(unsigned long)> onKey;
    std::function<void()> onVanish;
    int paints = 0;

    void OnPaint(CascadeBitmap& bitmap) override
    {
        ++paints;
        if (onPaint) {
            onPaint(bitmap);
        }
    }
    void OnMaterialize() override { Note("appears"); }
    void OnVanish() override
    {
        Note("vanishes");
        if (onVanish) {
            onVanish();
        }
    }
    bool OnKeyDown(unsigned long key) override { return Key("down", key); }
    bool OnKeyUp(unsigned long key) override
    {
        Note(Hex("up", key));
        return takesKeys;
    }
    bool OnNavKey(unsigned long key, CascadeWindow*& to) override
    {
        to = next;
        return Key("nav", key);
    }
    bool OnText(const char* text) override
    {
        Note(std::string("text ") + text);
        return takesText;
    }
    void OnFocus(bool hasFocus) override { Note(hasFocus ? "focus" : "blur"); }

private:
    void Note(const std::string& what) { m_Log.push_back(GetTitle().Str() + " " + what); }
    bool Key(const char* what, unsigned long key)
    {
        const bool takes = takesKeys;
        Note(Hex(what, key));
        if (onKey) {
            onKey(key);
        }
        return takes;
    }
    Log& m_Log;
};

class FunctionTimer : public CascadeTimer {
public:
    std::function<void(unsigned long)> onTimer;
    int ticks = 0;
    void OnTimer(unsigned long id) override
    {
        ++ticks;
        if (onTimer) {
            onTimer(id);
        }
    }
};

class LoopTest : public ::testing::Test {
protected:
    LoopTest() { Start(0, 0); }
    void Start(int width, int height)
    {
        loop.Stop();
        host::HostOptions options;
        options.headless = true;
        options.windowWidth = width;
        options.windowHeight = height;
        loop.Start(options);
    }
    void TearDown() override { loop.Stop(); }

    // Turns the loop until the condition holds; false after the deadline.
    bool TurnUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = std::chrono::seconds(10))
    {
        const auto end = host::Clock::now() + deadline;
        while (!condition()) {
            if (host::Clock::now() >= end) {
                return false;
            }
            loop.TurnOnce(std::min(end, host::Clock::now() + std::chrono::milliseconds(5)));
        }
        return true;
    }
    // Everything that is ready now, and nothing else: work posted from here runs behind it.
    void Settle()
    {
        for (int turn = 0; turn < 3; ++turn) {
            bool done = false;
            host::PostToUi([&done] { done = true; });
            ASSERT_TRUE(TurnUntil([&done] { return done; }));
        }
    }
    void Push(screen::Event::Kind kind, uint32_t key, const char* text = "", int physical = 0, bool repeat = false)
    {
        screen::Event event;
        event.kind = kind;
        event.key = key;
        event.text = text;
        event.physical = physical;
        event.repeat = repeat;
        screen::EventQueue::Instance().Push(std::move(event));
    }
    Log Taken()
    {
        Log taken;
        taken.swap(app.log);
        return taken;
    }

    screen::HostLoop loop;
    RecordingApp app;
};
