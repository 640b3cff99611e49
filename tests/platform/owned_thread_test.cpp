#include "platform/owned_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

// A body heeding its stop is joined at once; one held up (a hung call) costs
// its owner only the bound, outlives it, and is joined late once it returns.
TEST(OwnedThreadTest, AStopIsBoundedAndAHeldUpBodyIsJoinedLate) {
    {
        OwnedThread owner;
        ASSERT_TRUE(owner.start("heeds", [](const StopFlag& stop) {
            while (!stop.sleepFor(60000)) {
            }
        }));
        EXPECT_FALSE(owner.start("twice", [](const StopFlag&) {}));
        EXPECT_TRUE(owner.stop(60000));
    }
    auto latch = std::make_shared<StopFlag>();
    auto sawStop = std::make_shared<std::atomic<bool>>(false);
    {
        OwnedThread owner;
        ASSERT_TRUE(owner.start("held", [latch, sawStop](const StopFlag& stop) {
            latch->sleepFor(60000);
            *sawStop = stop.isSet();
        }));
        EXPECT_FALSE(owner.stop(20));
    }
    EXPECT_EQ(joinLateThreads(0), 1) << "still held after its owner went";
    latch->set();
    EXPECT_EQ(joinLateThreads(60000), 0);
    EXPECT_TRUE(*sawStop) << "its stop flag outlived the owner";
}
