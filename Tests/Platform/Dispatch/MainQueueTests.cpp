#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>

using namespace quorvane;
using testing::ElementsAre;

namespace {

constexpr auto soon = std::chrono::seconds(60);
dispatch_time_t deadline() { return std::chrono::steady_clock::now() + soon; }

} // namespace

TEST(MainQueue, TheFirstThreadIsTheMainThread) {
    EXPECT_TRUE(MainQueue::isMainThread());
    std::thread([] { EXPECT_FALSE(MainQueue::isMainThread()); }).join();
}

TEST(MainQueue, AHostMayMakeAnotherThreadTheMainThread) {
    std::thread([] {
        MainQueue::adoptMainThread();
        EXPECT_TRUE(MainQueue::isMainThread());
        bool ran = false;
        dispatch_async(dispatch_get_main_queue(), [&] { ran = true; });
        EXPECT_EQ(MainQueue::drain(), 1u);
        EXPECT_TRUE(ran);
    }).join();
    EXPECT_FALSE(MainQueue::isMainThread());
    MainQueue::adoptMainThread();
    EXPECT_TRUE(MainQueue::isMainThread());
}

TEST(MainQueue, DrainRunsWhatWaitsInOrderAndLeavesWhatIsAdded) {
    std::vector<int> order;
    const auto queue = dispatch_get_main_queue();
    dispatch_async(queue, [&] {
        order.push_back(1);
        dispatch_async(queue, [&] { order.push_back(3); });
    });
    dispatch_barrier_async(queue, [&] { order.push_back(2); });
    EXPECT_EQ(MainQueue::drain(), 2u);
    EXPECT_THAT(order, ElementsAre(1, 2));
    EXPECT_EQ(MainQueue::drain(), 1u);
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_EQ(MainQueue::drain(), 0u);
}

TEST(MainQueue, ATaskThatDrainsGoesOnWithTheNextTask) {
    std::vector<int> order;
    const auto queue = dispatch_get_main_queue();
    dispatch_async(queue, [&] {
        order.push_back(1);
        EXPECT_EQ(MainQueue::drain(), 2u);
        order.push_back(4);
    });
    dispatch_async(queue, [&] { order.push_back(2); });
    dispatch_async(queue, [&] { order.push_back(3); });
    EXPECT_EQ(MainQueue::drain(), 1u);
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST(MainQueue, SyncFromTheMainThreadRunsAtOnce) {
    const auto queue = dispatch_get_main_queue();
    std::vector<int> order;
    dispatch_async(queue, [&] { order.push_back(2); });
    dispatch_sync(queue, [&] { dispatch_barrier_sync(queue, [&] { order.push_back(1); }); });
    EXPECT_EQ(MainQueue::drain(), 1u);
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(MainQueue, SyncFromAnotherThreadRunsOnTheMainThreadWhenItDrains) {
    bool onMain = false;
    std::atomic<bool> returned = false;
    std::thread other([&] {
        dispatch_sync(dispatch_get_main_queue(), [&] { onMain = MainQueue::isMainThread(); });
        returned = true;
    });
    EXPECT_TRUE(MainQueue::runUntil([&] { return returned.load(); }, deadline()));
    other.join();
    EXPECT_TRUE(onMain);
}

TEST(MainQueue, AnExceptionOfASynchronousBlockReachesTheThreadThatWaits) {
    std::string caught;
    std::atomic<bool> returned = false;
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_DEFAULT), [&] {
        try {
            dispatch_sync(dispatch_get_main_queue(),
                          [] { throw std::runtime_error("from the main thread"); });
        } catch (const std::runtime_error &error) {
            caught = error.what();
        }
        returned = true;
    });
    EXPECT_TRUE(MainQueue::runUntil([&] { return returned.load(); }, deadline()));
    EXPECT_EQ(caught, "from the main thread");
    EXPECT_THROW(dispatch_sync(dispatch_get_main_queue(), [] { throw std::runtime_error("here"); }),
                 std::runtime_error);
}

TEST(MainQueueDeathTest, AnExceptionOfAnAsynchronousBlockIsLoggedAndEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            dispatch_async(dispatch_get_main_queue(), [] { throw std::runtime_error("the reason"); });
            MainQueue::drain();
        },
        "an exception left a task on the queue \"main\": the reason");
}

TEST(MainQueue, AMarkIsSeenByTheMainQueuesTasks) {
    const auto queue = dispatch_get_main_queue();
    const int key = 0;
    int value = 0;
    dispatch_queue_set_specific(queue, &key, &value);
    EXPECT_EQ(dispatch_get_specific(&key), nullptr);
    dispatch_sync(queue, [&] { EXPECT_EQ(dispatch_get_specific(&key), &value); });
    void *inAsync = nullptr;
    dispatch_async(queue, [&] { inAsync = dispatch_get_specific(&key); });
    MainQueue::drain();
    EXPECT_EQ(inAsync, &value);
    dispatch_queue_set_specific(queue, &key, nullptr);
}

TEST(MainQueue, RunUntilAnswersTheConditionAtTheDeadline) {
    EXPECT_FALSE(MainQueue::runUntil([] { return false; }, std::chrono::steady_clock::now()));
    EXPECT_FALSE(MainQueue::runUntil([] { return false; },
                                     std::chrono::steady_clock::now() + std::chrono::milliseconds(2)));
    EXPECT_TRUE(MainQueue::runUntil([] { return true; }, dispatch_time_t::min()));
}

TEST(MainQueue, RunUntilStopsBehindTheTaskThatMakesTheConditionTrue) {
    const auto queue = dispatch_get_main_queue();
    int ran = 0;
    for (int i = 0; i < 3; ++i)
        dispatch_async(queue, [&] { ++ran; });
    EXPECT_TRUE(MainQueue::runUntil([&] { return ran == 2; }, deadline()));
    EXPECT_EQ(ran, 2);
    EXPECT_EQ(MainQueue::drain(), 1u);
}

TEST(MainQueue, RunUntilSeesWhatAnotherThreadMakesTrue) {
    std::atomic<bool> flag = false;
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_DEFAULT), [&] { flag = true; });
    EXPECT_TRUE(MainQueue::runUntil([&] { return flag.load(); }, DISPATCH_TIME_FOREVER));
}

TEST(MainQueue, TheHostIsWokenOnceUntilItDrains) {
    const auto queue = dispatch_get_main_queue();
    std::atomic<int> wakeUps = 0;
    MainQueue::setWakeUpHandler([&] { ++wakeUps; });
    EXPECT_EQ(wakeUps, 0);
    std::thread([&] {
        dispatch_async(queue, [] {});
        dispatch_async(queue, [&] { dispatch_async(queue, [] {}); });
    }).join();
    EXPECT_EQ(wakeUps, 1);
    // What a drained task adds waits for the next drain, so the host must hear of it.
    EXPECT_EQ(MainQueue::drain(), 2u);
    EXPECT_EQ(wakeUps, 2);
    EXPECT_EQ(MainQueue::drain(), 1u);
    EXPECT_EQ(wakeUps, 2);
    MainQueue::setWakeUpHandler(nullptr);
    dispatch_async(queue, [] {});
    EXPECT_EQ(wakeUps, 2);
    EXPECT_EQ(MainQueue::drain(), 1u);
}

TEST(MainQueue, AHandlerThatComesLateIsToldOfWhatWaitsAlready) {
    dispatch_async(dispatch_get_main_queue(), [] {});
    int wakeUps = 0;
    MainQueue::setWakeUpHandler([&] { ++wakeUps; });
    EXPECT_EQ(wakeUps, 1);
    MainQueue::setWakeUpHandler(nullptr);
    EXPECT_EQ(MainQueue::drain(), 1u);
}

TEST(MainQueue, OnlyTheMainThreadDrains) {
    test::AssertionRecorder assertions;
    dispatch_async(dispatch_get_main_queue(), [] {});
    std::thread([] {
        EXPECT_EQ(MainQueue::drain(), 0u);
        EXPECT_FALSE(MainQueue::runUntil([] { return true; }, deadline()));
    }).join();
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"The main queue can be drained by the main thread alone",
                            u"The main queue can be drained by the main thread alone"));
    EXPECT_EQ(MainQueue::drain(), 1u);
}
