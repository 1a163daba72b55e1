#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/QVLimits.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>

using namespace quorvane;
using dispatch::WorkerPool;

// The pools of these tests are those that no other test fills.

TEST(WorkerPool, RunsAsManyTasksAtOnceAsItsWidth) {
    WorkerPool &pool = WorkerPool::shared(QOS_CLASS_UTILITY);
    const auto width = static_cast<std::ptrdiff_t>(dispatch::poolWidth());
    EXPECT_GE(width, 2);
    std::latch allRun(width);
    std::latch allDone(width);
    for (std::ptrdiff_t i = 0; i < width; ++i) {
        pool.submit([&] {
            allRun.arrive_and_wait();
            allDone.count_down();
        });
    }
    allDone.wait();
    EXPECT_LE(pool.threadCount(), dispatch::poolWidth());
}

TEST(WorkerPool, APoolThatIsFullDoesNotHoldUpAnother) {
    std::latch release(1);
    const auto width = static_cast<std::ptrdiff_t>(dispatch::poolWidth());
    std::latch done(width);
    for (std::ptrdiff_t i = 0; i < width; ++i) {
        WorkerPool::shared(QOS_CLASS_UTILITY).submit([&] {
            release.wait();
            done.count_down();
        });
    }
    const auto semaphore = dispatch_semaphore_create(0);
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_BACKGROUND),
                   [&] { dispatch_semaphore_signal(semaphore); });
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
    release.count_down();
    done.wait();
}

TEST(WorkerPool, GrowsUpToItsLimitWhereTasksWaitAndNoFurther) {
    WorkerPool &pool = WorkerPool::shared(QOS_CLASS_UTILITY);
    const auto limit = static_cast<std::ptrdiff_t>(limits::dispatchThreads);
    const auto semaphore = dispatch_semaphore_create(0);
    std::latch begun(limit);
    std::latch done(limit + 1);
    for (std::ptrdiff_t i = 0; i < limit; ++i) {
        pool.submit([&] {
            begun.count_down();
            dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
            done.count_down();
        });
    }
    begun.wait();
    std::atomic<bool> oneMoreRan = false;
    pool.submit([&] {
        oneMoreRan = true;
        done.count_down();
    });
    EXPECT_EQ(pool.threadCount(), limits::dispatchThreads);
    EXPECT_FALSE(oneMoreRan);
    for (std::ptrdiff_t i = 0; i < limit; ++i)
        dispatch_semaphore_signal(semaphore);
    done.wait();
    EXPECT_TRUE(oneMoreRan);
}

TEST(WorkerPool, SuperfluousThreadsGoAgain) {
    WorkerPool &pool = WorkerPool::shared(QOS_CLASS_UTILITY);
    const auto count = static_cast<std::ptrdiff_t>(dispatch::poolWidth() * 4);
    const auto semaphore = dispatch_semaphore_create(0);
    std::latch begun(count);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        pool.submit([&] {
            begun.count_down();
            dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
        });
    }
    begun.wait();
    for (std::ptrdiff_t i = 0; i < count; ++i)
        dispatch_semaphore_signal(semaphore);
    while (pool.threadCount() > dispatch::poolWidth())
        std::this_thread::yield();
    EXPECT_LE(pool.threadCount(), dispatch::poolWidth());
}
