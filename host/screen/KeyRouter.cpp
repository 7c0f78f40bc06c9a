#include "host/screen/KeyRouter.h"

#include "host/screen/WindowStack.h"
#include "platform/CascadeApp.h"
#include "platform/RemoteKeys.h"

namespace screen {

void KeyRouter::Deliver(const Event& event)
{
    if (TakeHostKey(event)) {
        return;
    }
    switch (event.kind) {
    case Event::Kind::kKeyDown:
        Down(event);
        break;
    case Event::Kind::kKeyUp:
        Up(event);
        break;
    case Event::Kind::kText:
        OfferText(event);
        break;
    default:
        break;
    }
}

bool KeyRouter::TakeHostKey(const Event& event)
{
    const bool isKey = event.kind == Event::Kind::kKeyDown || event.kind == Event::Kind::kKeyUp;
    if (!isKey || !HostKey::IsOne(event.key)) {
        return false;
    }
    if (event.kind == Event::Kind::kKeyDown && !event.repeat) {
        m_HostKeys.Press(event.key);
    }
    return true;
}

bool KeyRouter::OfferText(const Event& event)
{
    CascadeWindow* const focus = WindowStack::Instance().Focus();
    return focus != nullptr && !event.text.empty() && focus->OnText(event.text.c_str());
}

KeyRouter::Press KeyRouter::OfferKey(uint32_t key)
{
    WindowStack& windows = WindowStack::Instance();
    CascadeWindow* const focus = windows.Focus();
    if (focus != nullptr) {
        CascadeWindow* next = nullptr;
        const bool navigation = Remote::IsNavigation(key);
        if (navigation ? focus->OnNavKey(key, next) : focus->OnKeyDown(key)) {
            if (next != nullptr) {
                windows.SetFocus(next);
            }
            return {Taker::kWindow, next != nullptr ? next : focus};
        }
    }
    if (CascadeApp::s_pTheApp != nullptr) {
        CascadeApp::s_pTheApp->OnKeyDown(key);
    }
    return {Taker::kApplication, focus};
}

void KeyRouter::Down(const Event& event)
{
    WindowStack& windows = WindowStack::Instance();
    const KeyId id {event.physical, event.key};
    if (const auto held = m_Pressed.find(id); event.repeat && held != m_Pressed.end()) {
        if (held->second.taker == Taker::kWait || held->second.focus != windows.Focus()) {
            return;
        }
    }
    // A window above the main one may be there to be typed into: it gets the character before the key's meaning.
    const bool textFirst = event.key == 0 || !windows.IsMain(windows.Focus());
    CascadeWindow* const focus = windows.Focus();
    if (textFirst && OfferText(event)) {
        m_Pressed[id] = {Taker::kText, focus};
    } else if (event.key != 0) {
        const Press press = OfferKey(event.key);
        m_Pressed[id] = press;
    }
}

void KeyRouter::Up(const Event& event)
{
    Press press;
    if (const auto found = m_Pressed.find({event.physical, event.key}); found != m_Pressed.end()) {
        press = found->second;
        m_Pressed.erase(found);
    }
    if (event.key == 0 || press.taker == Taker::kText || press.taker == Taker::kWait) {
        return;
    }
    WindowStack& windows = WindowStack::Instance();
    if (press.taker == Taker::kWindow) {
        if (windows.Contains(press.focus)) {
            press.focus->OnKeyUp(event.key);
        }
        return;
    }
    CascadeWindow* const focus = windows.Focus();
    if ((focus == nullptr || !focus->OnKeyUp(event.key)) && CascadeApp::s_pTheApp != nullptr) {
        CascadeApp::s_pTheApp->OnKeyUp(event.key);
    }
}

bool KeyRouter::DeliverWhileWaiting(const Event& event)
{
    if (TakeHostKey(event)) {
        return true;
    }
    if (event.kind == Event::Kind::kKeyUp) {
        const auto found = m_Pressed.find({event.physical, event.key});
        const bool early = found != m_Pressed.end() && found->second.taker != Taker::kWait;
        if (found != m_Pressed.end() && !early) {
            m_Pressed.erase(found);
        }
        return !early;
    }
    // A key that is held down is one wish, not many.
    if (event.kind == Event::Kind::kKeyDown && event.key != 0 && !event.repeat) {
        m_Pressed[{event.physical, event.key}] = {Taker::kWait, nullptr};
        if (CascadeApp::s_pTheApp != nullptr) {
            CascadeApp::s_pTheApp->OnKeyWhileWaiting(event.key);
        }
    }
    return true;
}

}    // namespace screen
