#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/QVLimits.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <random>
#include <thread>

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
        // The last ones may still be on their way to the semaphore when the test is over.
        pool.submit([&begun, semaphore] {
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

namespace {

/// Naps that nobody lives to see the end of.
constexpr dispatch::Lingering endlessNaps{.time = std::chrono::hours(24),
                                          .parts = 1,
                                          .shortestNap = std::chrono::hours(1),
                                          .longestNap = std::chrono::hours(1)};
constexpr dispatch::Lingering shortLingering{.time = std::chrono::microseconds(50),
                                             .parts = 4,
                                             .shortestNap = std::chrono::microseconds(5),
                                             .longestNap = std::chrono::microseconds(20)};

/// Runs a first task, and waits until a thread naps with none to run.
void letAThreadLinger(WorkerPool &pool) {
    const auto semaphore = dispatch_semaphore_create(0);
    pool.submit([semaphore] { dispatch_semaphore_signal(semaphore); });
    dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
    while (!pool.isLingering())
        std::this_thread::yield();
}

} // namespace

TEST(WorkerPool, ATaskCallsNobodyWhileAThreadLingers) {
    WorkerPool &pool = WorkerPool::shared(QOS_CLASS_USER_INITIATED);
    bool calledNobody = false;
    // On a machine that is busy the thread can be through with lingering before the task comes.
    for (int attempt = 0; attempt < 1000 && !calledNobody; ++attempt) {
        letAThreadLinger(pool);
        const std::size_t calls = pool.callCount();
        std::atomic<bool> ran = false;
        pool.submit([&] { ran = true; });
        while (!ran)
            std::this_thread::yield();
        calledNobody = pool.callCount() == calls;
    }
    EXPECT_TRUE(calledNobody);
}

TEST(WorkerPool, ThreadsOfBackgroundPoolsDoNotLinger) {
    WorkerPool &pool = WorkerPool::shared(QOS_CLASS_BACKGROUND);
    for (int turn = 0; turn < 20; ++turn) {
        std::atomic<bool> ran = false;
        pool.submit([&] { ran = true; });
        while (!ran)
            std::this_thread::yield();
        EXPECT_FALSE(pool.isLingering());
    }
}

TEST(WorkerPool, AThreadThatHasLingeredSleepsUntilItIsCalled) {
    WorkerPool &pool = *new WorkerPool(0, shortLingering);
    for (std::size_t turn = 1; turn <= 100; ++turn) {
        std::atomic<bool> ran = false;
        pool.submit([&] { ran = true; });
        EXPECT_EQ(pool.callCount(), turn);
        while (!ran || pool.sleepingThreadCount() == 0)
            std::this_thread::yield();
        EXPECT_FALSE(pool.isLingering());
    }
    EXPECT_EQ(pool.threadCount(), 1u);
}

TEST(WorkerPool, WhoWaitsInThePlatformEndsANap) {
    WorkerPool &pool = *new WorkerPool(0, endlessNaps);
    for (int turn = 0; turn < 20; ++turn) {
        letAThreadLinger(pool);
        const auto semaphore = dispatch_semaphore_create(0);
        pool.submit([&] { dispatch_semaphore_signal(semaphore); });
        EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
    }
}

TEST(WorkerPool, ATaskEndsANapWhileAnyThreadWaitsInThePlatform) {
    WorkerPool &pool = *new WorkerPool(0, endlessNaps);
    for (int turn = 0; turn < 200; ++turn) {
        letAThreadLinger(pool);
        const auto semaphore = dispatch_semaphore_create(0);
        // It waits before the task comes, or behind it.
        std::jthread waiting([&] { dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER); });
        pool.submit([&] { dispatch_semaphore_signal(semaphore); });
    }
}

TEST(WorkerPool, MoreTasksThanTheOneForANappingThreadCallOthers) {
    WorkerPool &pool = *new WorkerPool(0, endlessNaps);
    letAThreadLinger(pool);
    const std::size_t calls = pool.callCount();
    // Each waits for the other, so both must run at once.
    const auto first = dispatch_semaphore_create(0);
    const auto second = dispatch_semaphore_create(0);
    std::latch done(2);
    const auto meet = [&](const dispatch_semaphore_t &mine, const dispatch_semaphore_t &others) {
        dispatch_semaphore_signal(mine);
        dispatch_semaphore_wait(others, DISPATCH_TIME_FOREVER);
        done.count_down();
    };
    pool.submit([&] { meet(first, second); });
    pool.submit([&] { meet(second, first); });
    done.wait();
    EXPECT_EQ(pool.callCount(), calls + 1);
}

TEST(WorkerPool, EachTaskRunsWhetherItsThreadNapsSleepsOrIsOnItsWay) {
    WorkerPool &pool = *new WorkerPool(0, shortLingering);
    std::mt19937 random(1);
    std::atomic<int> ran = 0;
    constexpr int count = 3000;
    for (int number = 1; number <= count; ++number) {
        pool.submit([&] { ++ran; });
        // From none at all to more than the thread lingers.
        for (auto pause = random() % 4 == 0 ? random() % 20'000 : random() % 50; pause > 0; --pause)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        if (number % 3 == 0)
            while (ran < number)
                std::this_thread::yield();
    }
    while (ran < count)
        std::this_thread::yield();
    EXPECT_EQ(ran, count);
}
