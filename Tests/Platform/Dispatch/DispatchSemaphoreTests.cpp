#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

using namespace quorvane;
using testing::ElementsAre;

TEST(DispatchSemaphore, LetsAsManyThroughAsItsValue) {
    const auto semaphore = dispatch_semaphore_create(2);
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, dispatch_time_after(0)));
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, dispatch_time_after(0)));
    EXPECT_FALSE(dispatch_semaphore_wait(semaphore, dispatch_time_after(0)));
    dispatch_semaphore_signal(semaphore);
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
}

TEST(DispatchSemaphore, AWaitThatTimedOutTakesNothing) {
    const auto semaphore = dispatch_semaphore_create(0);
    EXPECT_FALSE(dispatch_semaphore_wait(semaphore, dispatch_time_after(0.001)));
    dispatch_semaphore_signal(semaphore);
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, dispatch_time_after(0)));
}

TEST(DispatchSemaphore, ASignalWakesAnotherThread) {
    const auto semaphore = dispatch_semaphore_create(0);
    int value = 0;
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED), [&, semaphore] {
        value = 3;
        dispatch_semaphore_signal(semaphore);
    });
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
    EXPECT_EQ(value, 3);
}

TEST(DispatchSemaphore, WorkersThatWaitAreMadeUpFor) {
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_CONCURRENT);
    const auto semaphore = dispatch_semaphore_create(0);
    const auto group = dispatch_group_create();
    const std::size_t count = dispatch::poolWidth() * 3;
    std::atomic<std::size_t> passed = 0;
    for (std::size_t i = 0; i < count; ++i) {
        dispatch_group_async(group, queue, [&] {
            dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
            ++passed;
        });
    }
    // It comes last, when every worker of the pool's width waits.
    dispatch_group_async(group, queue, [&] {
        for (std::size_t i = 0; i < count; ++i)
            dispatch_semaphore_signal(semaphore);
    });
    EXPECT_TRUE(dispatch_group_wait(group, DISPATCH_TIME_FOREVER));
    EXPECT_EQ(passed, count);
}

TEST(DispatchSemaphore, ANegativeValueIsAsserted) {
    test::AssertionRecorder assertions;
    EXPECT_EQ(dispatch_semaphore_create(-1), nullptr);
    EXPECT_FALSE(dispatch_semaphore_wait(nullptr, DISPATCH_TIME_FOREVER));
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: value >= 0",
                                                   u"Invalid parameter not satisfying: semaphore != nil"));
}
