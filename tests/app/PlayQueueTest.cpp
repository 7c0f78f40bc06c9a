#include "app/PlayQueue.h"

#include <gtest/gtest.h>

namespace {

PlayQueue QueueOf(std::initializer_list<const char*> paths)
{
    PlayQueue queue;
    for (const char* path : paths) {
        EFileBrowser::FileInfo entry;
        entry.path = path;
        queue.Append(entry);
    }
    return queue;
}

// The paths that a walk from the cursor would try, when none of them opens.
std::string Walk(PlayQueue& queue)
{
    std::string tried;
    PlayQueue::Forward walk(queue);
    while (walk.Step()) {
        tried += queue.Entry()->path.Str() + " ";
    }
    return tried;
}

TEST(PlayQueueTest, ARepeatMarkWrapsOncePerWalkAndIsNeverTried)
{
    PlayQueue queue = QueueOf({"a", "b", ":repeat"});
    EXPECT_EQ(Walk(queue), "b a b ");    // and stops at the mark when it comes by again
    EXPECT_EQ(queue.Cursor(), 2);
    PlayQueue loop = QueueOf({"a", ":repeat forever"});
    EXPECT_EQ(Walk(loop), "a ");
    PlayQueue other = QueueOf({"a", ":Repeat", ":repea"});    // letters count
    EXPECT_EQ(Walk(other), ":Repeat :repea ");
}

TEST(PlayQueueTest, TheCursorStaysInsideButForFailedItems)
{
    PlayQueue queue;
    EXPECT_EQ(queue.Entry(), nullptr);
    EXPECT_FALSE(queue.StepBack());
    queue = QueueOf({"a", "b"});
    queue.SkipFailedEntry();
    queue.SkipFailedEntry();
    EXPECT_EQ(queue.Entry(), nullptr);
    EXPECT_FALSE(queue.HasNext());
    EXPECT_TRUE(queue.StepBack());
    EXPECT_EQ(queue.Entry()->path.Str(), "b");
    EXPECT_TRUE(queue.StepBack());
    EXPECT_FALSE(queue.StepBack());
    queue.SkipFailedEntry();
    queue.Clear();
    EXPECT_EQ(queue.Cursor(), 0);
}

}    // namespace
