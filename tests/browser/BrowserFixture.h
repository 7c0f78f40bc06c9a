// A browser over real folders, with a test in place of the viewer and of time.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "browser/EFileBrowser.h"
#include "platform/RemoteKeys.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

class BrowserFixture : public PlatformTest {
protected:
    struct Result {
        int reason = -1;
        FileInfo info;
    };

    static void OnResult(const FileInfo& info, EFileBrowser::CallbackReason reason, void* context)
    {
        static_cast<BrowserFixture*>(context)->m_Results.push_back({reason, info});
    }

    std::string Make(const std::string& folder) const
    {
        std::filesystem::create_directories(m_Folder / folder);
        return m_Folder / folder;
    }

    void Prepare(FolderReader reader = ReadFolder)
    {
        m_pBrowser.reset();
        m_pBrowser = std::make_unique<EFileBrowser>(std::move(reader));
        m_pBrowser->SetIconGraphicsPath("/common/");
        m_pBrowser->SetDeletionAllowed(true);
    }
    void Open(const std::string& start = "", EFileBrowser::FilterType filter = EFileBrowser::kFilterAll)
    {
        if (!m_pBrowser) {
            Prepare();
        }
        EXPECT_TRUE(m_pBrowser->BrowseDirectory("Open File", (m_Folder / start).c_str(), m_Folder.Path().c_str(), m_Folder.Path().c_str(), filter,
            CascadeDirBrowser::kFilesAndFolders, OnResult, this));
    }
    void OpenAndList(const std::string& start = "", EFileBrowser::FilterType filter = EFileBrowser::kFilterAll)
    {
        Open(start, filter);
        WaitForListing();
    }

    static bool Until(const std::function<bool()>& condition) { return TestPlatform::Until(condition); }
    void WaitForListing()
    {
        ASSERT_TRUE(Until([this] { return !OnScreen("Browser wait") && TestPlatform::RunningTimers() == 0; }));
    }
    void Press(unsigned long key)
    {
        TestPlatform::PressKey(key);
        if (m_Results.empty()) {
            ASSERT_TRUE(Until([] { return TestPlatform::RunningTimers() == 0; }));
        }
    }

    static CascadeWindow* OnScreen(const std::string& title) { return TestPlatform::FindWindow(title); }
    static EListView& List() { return *static_cast<EListView*>(OnScreen("Browser list")); }
    static std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        for (int i = 0; i < List().GetItemCount(); ++i) {
            names.emplace_back(List().GetText(i, 0));
        }
        return names;
    }
    static std::string Cursor() { return List().GetText(List().GetSelectedIndex(), 0); }
    static void MoveTo(const std::string& name) { List().SetSelectedIndex(List().FindText(0, name.c_str()), true); }

    // Every text that the windows on the screen show.
    static std::string Painted(const std::string& title)
    {
        std::string all;
        if (CascadeWindow* const window = OnScreen(title)) {
            for (const TestPlatform::Drawing& drawing : TestPlatform::Paint(*window)) {
                all += drawing.text.empty() ? "" : drawing.text + "\n";
            }
        }
        return all;
    }

    TemporaryFolder m_Folder;
    std::vector<Result> m_Results;
    std::unique_ptr<EFileBrowser> m_pBrowser;
};
