// Requests as the browser makes them, answered by the real worker.
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/library/BackgroundThread.h"
#include "host/library/ThumbnailService.h"
#include "platform/CascadeApp.h"
#include "platform/CascadeThumbnail.h"
#include "tests/support/FakeUiLoop.h"
#include "tests/support/TemporaryFolder.h"

using namespace std::chrono_literals;

// As much of the application as puts answers off; the test runs what was put off.
CascadeApp* CascadeApp::s_pTheApp = nullptr;
CascadeApp::CascadeApp()
{
    s_pTheApp = this;
}
CascadeApp::~CascadeApp()
{
    s_pTheApp = nullptr;
}
static std::function<void()> g_AfterWait;
void CascadeApp::PostAfterWait(std::function<void()> action)
{
    g_AfterWait = std::move(action);
}

namespace {

constexpr auto kPatience = 30s;
const std::string kFilm = NUVID_FIXTURES "/ts_1080i.ts";
const std::string kOther = NUVID_FIXTURES "/mpeg2_mp2.mpg";

// GLib looks at the variable once per process.
const TemporaryFolder& CacheHome()
{
    static const TemporaryFolder folder;
    static const int set = setenv("XDG_CACHE_HOME", folder.Path().c_str(), 1);
    static_cast<void>(set);
    return folder;
}

struct Client : CascadeThumbnails::Client {
    void OnThumbnail(const char* path, const char* pictureFile, int /*seconds*/) override
    {
        answers.push_back({path, pictureFile});
        if (then) {
            then();
        }
    }
    std::vector<std::pair<std::string, std::string>> answers;
    std::function<void()> then;
};

class ThumbnailServiceTest : public ::testing::Test {
protected:
    ThumbnailServiceTest() { CacheHome(); }
    ~ThumbnailServiceTest() override { host::StopThumbnails(); }

    void WaitFor(const std::function<bool()>& condition)
    {
        const auto end = host::Clock::now() + kPatience;
        while (!condition() && host::Clock::now() < end) {
            m_Loop.TurnWhileWaiting(end);
        }
        ASSERT_TRUE(condition());
    }

    FakeUiLoop m_Loop;
};

}    // namespace

TEST_F(ThumbnailServiceTest, AnswersEachClientOnceAndTheNewestRequestOnly)
{
    Client first;
    Client second;
    for (const std::string& path : {kOther, std::string("/missing.mpg"), kFilm}) {
        CascadeThumbnails::Request(path.c_str(), first);
    }
    CascadeThumbnails::Request("http://192.0.2.1/film.mpg", second);
    EXPECT_TRUE(first.answers.empty());
    WaitFor([&] { return !first.answers.empty() && !second.answers.empty(); });
    ASSERT_EQ(first.answers.size(), 1u);
    EXPECT_EQ(first.answers[0].first, kFilm);
    EXPECT_TRUE(first.answers[0].second.starts_with(CacheHome() / "thumbnails/large/")) << first.answers[0].second;
    ASSERT_EQ(second.answers.size(), 1u);
    EXPECT_EQ(second.answers[0].second, "");

    // Asked anew from inside the answer.
    first.then = [&] {
        first.then = nullptr;
        CascadeThumbnails::Request(kOther.c_str(), first);
    };
    CascadeThumbnails::Request(kFilm.c_str(), first);
    WaitFor([&] { return first.answers.size() == 3; });
    EXPECT_EQ(first.answers[1].second, first.answers[0].second);
    EXPECT_EQ(first.answers[2].first, kOther);
}

TEST_F(ThumbnailServiceTest, AnswersNobodyWhoCancelledOrIsGone)
{
    Client cancelled;
    Client last;
    auto gone = std::make_unique<Client>();
    CascadeThumbnails::Request(kFilm.c_str(), *gone);
    CascadeThumbnails::Request(kFilm.c_str(), cancelled);
    CascadeThumbnails::Request(kOther.c_str(), last);
    CascadeThumbnails::Cancel(cancelled);
    CascadeThumbnails::Cancel(cancelled);
    gone = nullptr;
    WaitFor([&] { return !last.answers.empty(); });
    EXPECT_TRUE(cancelled.answers.empty());

    // Stopped in the middle of it; a later request begins anew.
    CascadeThumbnails::Request(kFilm.c_str(), cancelled);
    host::StopThumbnails();
    host::StopThumbnails();
    host::DrainUiQueue();
    EXPECT_TRUE(cancelled.answers.empty());
    CascadeThumbnails::Request(kFilm.c_str(), cancelled);
    WaitFor([&] { return cancelled.answers.size() == 1; });
}

TEST_F(ThumbnailServiceTest, IsPutOffWhileACallWaits)
{
    CascadeApp app;
    Client client;
    CascadeThumbnails::Request(kFilm.c_str(), client);
    std::mutex mutex;
    std::unique_lock lock(mutex);
    host::Waiter waiter;
    EXPECT_EQ(waiter.Wait(
                  lock, [] { return g_AfterWait != nullptr; }, host::Clock::now() + kPatience),
        host::WaitResult::kDone);
    EXPECT_TRUE(client.answers.empty());
    g_AfterWait();
    EXPECT_EQ(client.answers.size(), 1u);
}

TEST(BackgroundThreadTest, LeavesAThreadBehindThatDoesNotEnd)
{
    struct Shared {
        std::mutex mutex;
        std::condition_variable condition;
        bool released = false;
        bool done = false;
    };
    const auto shared = std::make_shared<Shared>();
    host::BackgroundThread thread;
    ASSERT_TRUE(thread.Start("nuvid-test", [shared] {
        std::unique_lock lock(shared->mutex);
        shared->condition.wait(lock, [&] { return shared->released; });
        shared->done = true;
        shared->condition.notify_all();
    }));
    EXPECT_FALSE(thread.Finish(1ms));
    EXPECT_FALSE(thread.IsStarted());
    std::unique_lock lock(shared->mutex);
    shared->released = true;
    shared->condition.notify_all();
    EXPECT_TRUE(shared->condition.wait_for(lock, kPatience, [&] { return shared->done; }));
}
