#include "Platform/Foundation/NSProgress.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quorvane;

TEST(NSProgress, ANegativeTotalIsIndeterminate) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    EXPECT_EQ(progress->totalUnitCount(), -1);
    EXPECT_TRUE(progress->isIndeterminate());
    EXPECT_EQ(progress->fractionCompleted(), 0);
    EXPECT_FALSE(progress->isCancelled());
    progress->setTotalUnitCount(4);
    EXPECT_FALSE(progress->isIndeterminate());
    progress->setCompletedUnitCount(-1);
    EXPECT_TRUE(progress->isIndeterminate());
}

TEST(NSProgress, TellsTheFractionThatIsDone) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(8);
    EXPECT_EQ(progress->fractionCompleted(), 0);
    progress->setCompletedUnitCount(2);
    EXPECT_EQ(progress->fractionCompleted(), 0.25);
    progress->setTotalUnitCount(0);
    EXPECT_EQ(progress->fractionCompleted(), 1);
    progress->setCompletedUnitCount(0);
    EXPECT_TRUE(progress->isIndeterminate());
}

TEST(NSProgress, CancellingTwiceRunsTheHandlerOnce) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    int calls = 0;
    bool wasCancelled = false;
    progress->setCancellationHandler([&] {
        ++calls;
        wasCancelled = progress->isCancelled();
    });
    EXPECT_EQ(calls, 0);
    progress->cancel();
    progress->cancel();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(wasCancelled);
    EXPECT_TRUE(progress->isCancelled());
}

TEST(NSProgress, AHandlerThatComesAfterCancellingRunsAtOnce) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    progress->cancel();
    int calls = 0;
    progress->setCancellationHandler([&] { ++calls; });
    EXPECT_EQ(calls, 1);
    progress->setCancellationHandler(nullptr);
    progress->cancel();
    EXPECT_EQ(calls, 1);
}

TEST(NSProgress, OnlyTheLastHandlerCounts) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    int first = 0;
    int second = 0;
    progress->setCancellationHandler([&] { ++first; });
    progress->setCancellationHandler([&] { ++second; });
    progress->cancel();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(NSProgress, LetsGoOfTheHandlerOnceItRan) {
    const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
    auto held = std::make_shared<int>(0);
    progress->setCancellationHandler([held] { ++*held; });
    EXPECT_EQ(held.use_count(), 2);
    progress->cancel();
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(NSProgress, ThreadsThatCancelAndSetTheHandlerRunItOnce) {
    for (int round = 0; round < 200; ++round) {
        const auto progress = NSProgress::discreteProgressWithTotalUnitCount(-1);
        std::atomic<int> calls = 0;
        std::thread first([&] { progress->cancel(); });
        std::thread second([&] { progress->cancel(); });
        progress->setCancellationHandler([&] { ++calls; });
        first.join();
        second.join();
        ASSERT_EQ(calls, 1);
    }
}
