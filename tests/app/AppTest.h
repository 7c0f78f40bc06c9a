// A whole application on the test platform: started with a command line, driven by keys, commands and
// ticks, read by what its window shows and what it prints.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/MThemeSelect.h"
#include "app/NuvidApp.h"
#include "app/OsdIcons.h"
#include "platform/RemoteKeys.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"
#include "widgets/EUtils.h"

class AppTest : public PlatformTest {
protected:
    // A file that plays: the classification is the test platform's. Sparse.
    std::string MakeFile(const std::string& name, unsigned long long size = 1ULL << 30)
    {
        const std::string path = m_Folder.Write(name, "");
        std::filesystem::resize_file(path, size);
        return path;
    }

    // As main does it, up to the event loop; another start ends the run before it. Without icons the words of status
    // lines are shown.
    void Start(std::vector<std::string> arguments, bool icons = false)
    {
        if (m_pApp != nullptr) {
            m_pApp.reset();
            TestPlatform::Reset();
        }
        arguments.insert(arguments.begin(), m_Folder / "nuvid");
        if (!icons) {
            arguments.insert(arguments.begin() + 1, "-noicons");
        }
        TestPlatform::SetArgs(std::move(arguments));
        m_pApp = std::make_unique<NuvidApp>();
        m_pApp->OnAppInit();
    }
    // Started and playing the files, nothing pending.
    void Play(std::vector<std::string> arguments, bool icons = false)
    {
        Start(std::move(arguments), icons);
        TestPlatform::Tick(5);
    }

    MyWindow& Osd() { return *dynamic_cast<MyWindow*>(TestPlatform::WindowsOnScreen().at(0)); }
    bool Shows(const std::string& text)
    {
        const auto drawings = TestPlatform::Paint(Osd());
        return TestPlatform::FindText(drawings, text) != nullptr;
    }
    static CascadeWindow* Window(const std::string& title) { return TestPlatform::FindWindow(title); }
    static bool MainMenuIsOpen() { return Window(Menus::kRows[Menus::kMain].title) != nullptr; }
    // Windows are painted in between: what the disk says arrives then.
    static bool Until(const std::function<bool()>& condition)
    {
        return TestPlatform::Until([&condition] {
            TestPlatform::PaintAll();
            return condition();
        });
    }
    static bool IsPainted(const std::string& text)
    {
        for (CascadeWindow* const window : TestPlatform::WindowsOnScreen()) {
            if (TestPlatform::FindText(TestPlatform::Paint(*window), text) != nullptr) {
                return true;
            }
        }
        return false;
    }
    std::string Said(const std::function<void()>& action)
    {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }
    std::string Pressed(unsigned long key)
    {
        return Said([key] { TestPlatform::PressKey(key); });
    }
    std::string Ticked(int times)
    {
        return Said([times] { TestPlatform::Tick(times); });
    }
    static bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
    static int Count(const std::string& text, const std::string& part)
    {
        int count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }
    std::string CurrentFile() { return TestPlatform::Command("Nuvid currentfilename"); }
    std::string Status() { return TestPlatform::Command("Nuvid status"); }

    static constexpr uint32_t kEndOfStream = 0xDEADBEEF;
    void DecoderSays(uint32_t id)
    {
        CascadeMessage message;
        message.id = id;
        m_pApp->OnWormholeMessage(message);
    }
    // The decoder's end of the stream, and the ticks until what it holds has been played.
    void EndStream()
    {
        DecoderSays(kEndOfStream);
        TestPlatform::Tick(DrainTicks(5120000) + 1);
    }

    TemporaryFolder m_Folder;
    std::unique_ptr<NuvidApp> m_pApp;
};
