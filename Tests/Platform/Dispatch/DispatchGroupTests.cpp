#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>

using namespace quorvane;
using testing::ElementsAre;

namespace {

dispatch_queue_t concurrentQueue() { return dispatch_queue_create("test", DISPATCH_QUEUE_CONCURRENT); }

} // namespace

TEST(DispatchGroup, WaitsForAllTasksOfTheGroup) {
    const auto group = dispatch_group_create();
    const auto queue = concurrentQueue();
    std::atomic<int> ran = 0;
    for (int i = 0; i < 100; ++i)
        dispatch_group_async(group, queue, [&] { ++ran; });
    EXPECT_TRUE(dispatch_group_wait(group, DISPATCH_TIME_FOREVER));
    EXPECT_EQ(ran, 100);
}

TEST(DispatchGroup, AnEmptyGroupIsNotWaitedFor) {
    EXPECT_TRUE(dispatch_group_wait(dispatch_group_create(), dispatch_time_t::min()));
}

TEST(DispatchGroup, AWaitThatEndsTooEarlySaysSo) {
    const auto group = dispatch_group_create();
    dispatch_group_enter(group);
    EXPECT_FALSE(dispatch_group_wait(group, dispatch_time_after(0)));
    EXPECT_FALSE(dispatch_group_wait(group, dispatch_time_after(0.001)));
    dispatch_group_leave(group);
    EXPECT_TRUE(dispatch_group_wait(group, dispatch_time_after(0)));
}

TEST(DispatchGroup, NotifiesOnceTheGroupIsEmptyInTheOrderAsked) {
    const auto group = dispatch_group_create();
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    std::vector<int> order;
    dispatch_group_enter(group);
    dispatch_group_enter(group);
    dispatch_group_notify(group, queue, [&] { order.push_back(2); });
    dispatch_group_notify(group, queue, [&] { order.push_back(3); });
    dispatch_group_leave(group);
    dispatch_sync(queue, [&] { order.push_back(1); });
    dispatch_group_leave(group);
    dispatch_sync(queue, [&] { order.push_back(4); });
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));

    // An empty group notifies at once, and what it has notified is not notified again.
    dispatch_group_notify(group, queue, [&] { order.push_back(5); });
    dispatch_group_enter(group);
    dispatch_group_leave(group);
    dispatch_sync(queue, [] {});
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4, 5));
}

TEST(DispatchGroup, ATasksBlockIsReleasedBeforeItLeavesTheGroup) {
    const auto group = dispatch_group_create();
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    dispatch_group_async(group, concurrentQueue(), [held = std::move(held)] {});
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    EXPECT_TRUE(watched.expired());
}

TEST(DispatchGroup, WorkersThatWaitForAGroupAreMadeUpFor) {
    const auto outer = dispatch_group_create();
    const auto queue = concurrentQueue();
    const std::size_t count = dispatch::poolWidth() * 3;
    std::atomic<std::size_t> ran = 0;
    for (std::size_t i = 0; i < count; ++i) {
        dispatch_group_async(outer, queue, [&] {
            const auto inner = dispatch_group_create();
            dispatch_group_async(inner, queue, [&] { ++ran; });
            EXPECT_TRUE(dispatch_group_wait(inner, DISPATCH_TIME_FOREVER));
        });
    }
    EXPECT_TRUE(dispatch_group_wait(outer, DISPATCH_TIME_FOREVER));
    EXPECT_EQ(ran, count);
}

TEST(DispatchGroup, LeavingWhatWasNotEnteredIsAsserted) {
    test::AssertionRecorder assertions;
    const auto group = dispatch_group_create();
    dispatch_group_leave(group);
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"dispatch_group_leave called without dispatch_group_enter"));
    EXPECT_TRUE(dispatch_group_wait(group, DISPATCH_TIME_FOREVER));
}
