#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <latch>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <thread>

using namespace quorvane;
using testing::ElementsAre;

namespace {

dispatch_queue_t serialQueue() { return dispatch_queue_create("test.serial", DISPATCH_QUEUE_SERIAL); }
dispatch_queue_t concurrentQueue() {
    return dispatch_queue_create("test.concurrent", DISPATCH_QUEUE_CONCURRENT);
}

/// Waits until all that was submitted before has run.
void finish(const dispatch_queue_t &queue) {
    dispatch_barrier_sync(queue, [] {});
}

} // namespace

TEST(DispatchQueue, ASerialQueueRunsTasksOneAtATimeInTheOrderSubmitted) {
    const auto queue = serialQueue();
    std::vector<int> order;
    for (int i = 0; i < 1000; ++i)
        dispatch_async(queue, [&order, i] { order.push_back(i); });
    finish(queue);
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
}

TEST(DispatchQueue, TasksOfSeveralSubmittersKeepEachSubmittersOrder) {
    const auto queue = serialQueue();
    std::vector<std::pair<int, int>> order;
    std::vector<std::thread> submitters;
    for (int who = 0; who < 4; ++who) {
        submitters.emplace_back([&, who] {
            for (int i = 0; i < 200; ++i) {
                if (i % 3 == 0)
                    dispatch_sync(queue, [&, i] { order.emplace_back(who, i); });
                else
                    dispatch_async(queue, [&, who, i] { order.emplace_back(who, i); });
            }
        });
    }
    for (std::thread &submitter : submitters)
        submitter.join();
    finish(queue);
    ASSERT_EQ(order.size(), 800u);
    std::array<int, 4> next{};
    for (const auto &[who, i] : order)
        EXPECT_EQ(i, next[who]++);
}

TEST(DispatchQueue, ReadersOverlap) {
    const auto queue = concurrentQueue();
    // Each of the two ends only after the other has begun.
    std::latch bothRun(2);
    std::latch bothDone(2);
    for (int i = 0; i < 2; ++i) {
        dispatch_async(queue, [&] {
            bothRun.arrive_and_wait();
            bothDone.count_down();
        });
    }
    bothDone.wait();
}

TEST(DispatchQueue, ASynchronousReaderOverlapsWithAnAsynchronousOne) {
    const auto queue = concurrentQueue();
    std::latch bothRun(2);
    dispatch_async(queue, [&] { bothRun.arrive_and_wait(); });
    dispatch_sync(queue, [&] { bothRun.arrive_and_wait(); });
    finish(queue);
}

TEST(DispatchQueue, AWriterIsAlone) {
    const auto queue = concurrentQueue();
    std::atomic<int> readers = 0;
    std::atomic<int> writers = 0;
    std::atomic<bool> violated = false;
    // Not atomic, so that the thread checks see it where the discipline fails.
    int value = 0;
    for (int i = 0; i < 300; ++i) {
        if (i % 5 == 0) {
            dispatch_barrier_async(queue, [&] {
                violated = violated || ++writers != 1 || readers != 0;
                ++value;
                --writers;
            });
        } else {
            dispatch_async(queue, [&, i] {
                ++readers;
                violated = violated || writers != 0 || value != i / 5 + 1;
                --readers;
            });
        }
    }
    finish(queue);
    EXPECT_FALSE(violated);
    EXPECT_EQ(value, 60);
}

TEST(DispatchQueue, ABarrierWaitsForWhatCameBeforeAndHoldsBackWhatComesAfter) {
    const auto queue = concurrentQueue();
    std::latch release(1);
    std::mutex mutex;
    std::vector<std::string> order;
    const auto note = [&](std::string text) {
        const std::lock_guard guard(mutex);
        order.push_back(std::move(text));
    };
    dispatch_async(queue, [&] {
        release.wait();
        note("reader before");
    });
    dispatch_barrier_async(queue, [&] { note("writer"); });
    dispatch_async(queue, [&] { note("reader after"); });
    // The reader behind the barrier could run now, if the barrier did not hold it back.
    release.count_down();
    finish(queue);
    EXPECT_THAT(order, ElementsAre("reader before", "writer", "reader after"));
}

TEST(DispatchQueue, ASynchronousReaderWaitsForTheWriterBeforeIt) {
    const auto queue = concurrentQueue();
    int value = 0;
    std::latch begun(1);
    std::latch release(1);
    dispatch_barrier_async(queue, [&] {
        begun.count_down();
        release.wait();
        value = 7;
    });
    begun.wait();
    std::thread reader([&] { dispatch_sync(queue, [&] { EXPECT_EQ(value, 7); }); });
    release.count_down();
    reader.join();
}

TEST(DispatchQueue, SynchronousBlocksRunOnTheCallersThread) {
    const auto here = std::this_thread::get_id();
    std::thread::id plain, barrier, behindAnother;
    const auto queue = concurrentQueue();
    dispatch_sync(queue, [&] { plain = std::this_thread::get_id(); });
    dispatch_barrier_sync(queue, [&] { barrier = std::this_thread::get_id(); });
    dispatch_barrier_async(queue, [] {});
    dispatch_sync(queue, [&] { behindAnother = std::this_thread::get_id(); });
    EXPECT_EQ(plain, here);
    EXPECT_EQ(barrier, here);
    EXPECT_EQ(behindAnother, here);
}

TEST(DispatchQueue, AGlobalQueueTreatsABarrierAsAPlainTask) {
    const auto queue = dispatch_get_global_queue(QOS_CLASS_UTILITY);
    EXPECT_EQ(queue, dispatch_get_global_queue(QOS_CLASS_UTILITY));
    EXPECT_NE(queue, dispatch_get_global_queue(QOS_CLASS_BACKGROUND));
    std::latch bothRun(2);
    std::latch bothDone(2);
    for (int i = 0; i < 2; ++i) {
        dispatch_barrier_async(queue, [&] {
            bothRun.arrive_and_wait();
            bothDone.count_down();
        });
    }
    bothDone.wait();
}

TEST(DispatchQueue, AMarkTellsThatTheTaskRunsOnTheQueue) {
    const auto queue = concurrentQueue();
    const int key = 0;
    int value = 0;
    dispatch_queue_set_specific(queue, &key, &value);
    EXPECT_EQ(dispatch_get_specific(&key), nullptr);
    void *inSync = nullptr, *inBarrier = nullptr, *inAsync = nullptr, *inNested = nullptr, *other = &value;
    dispatch_sync(queue, [&] { inSync = dispatch_get_specific(&key); });
    dispatch_barrier_sync(queue, [&] { inBarrier = dispatch_get_specific(&key); });
    dispatch_async(queue, [&] {
        inAsync = dispatch_get_specific(&key);
        // A task of another queue that this one waits for still stands inside this one.
        dispatch_sync(serialQueue(), [&] { inNested = dispatch_get_specific(&key); });
    });
    finish(queue);
    dispatch_sync(serialQueue(), [&] { other = dispatch_get_specific(&key); });
    EXPECT_EQ(inSync, &value);
    EXPECT_EQ(inBarrier, &value);
    EXPECT_EQ(inAsync, &value);
    EXPECT_EQ(inNested, &value);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(dispatch_get_specific(&key), nullptr);
}

TEST(DispatchQueue, AMarkCanBeChangedAndTheInnermostQueuesOneCounts) {
    const auto outer = serialQueue();
    const auto inner = serialQueue();
    const int key = 0;
    int first = 0, second = 0;
    dispatch_queue_set_specific(outer, &key, &first);
    dispatch_sync(outer, [&] { EXPECT_EQ(dispatch_get_specific(&key), &first); });
    dispatch_queue_set_specific(outer, &key, &second);
    dispatch_queue_set_specific(inner, &key, &first);
    dispatch_sync(outer, [&] {
        EXPECT_EQ(dispatch_get_specific(&key), &second);
        dispatch_sync(inner, [&] { EXPECT_EQ(dispatch_get_specific(&key), &first); });
        EXPECT_EQ(dispatch_get_specific(&key), &second);
    });
}

TEST(DispatchQueue, AMarkLetsNestedAccessRunInline) {
    // How a document is read inside a callback that writes it.
    const auto queue = concurrentQueue();
    const int key = 0;
    dispatch_queue_set_specific(queue, &key, queue.get());
    int depth = 0;
    const std::function<void(int)> access = [&](int levels) {
        if (levels == 0)
            return;
        const auto block = [&] {
            ++depth;
            access(levels - 1);
        };
        if (dispatch_get_specific(&key))
            block();
        else
            dispatch_barrier_sync(queue, block);
    };
    access(5);
    EXPECT_EQ(depth, 5);
}

TEST(DispatchQueue, WaitingForOneselfIsAssertedAndRunsInline) {
    const auto queue = serialQueue();
    test::AssertionRecorder assertions;
    bool ran = false;
    dispatch_sync(queue, [&] {
        // Also where another queue's task stands in between.
        dispatch_sync(serialQueue(), [&] { dispatch_sync(queue, [&] { ran = true; }); });
    });
    EXPECT_TRUE(ran);
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"dispatch_sync called on a queue that the calling task has to itself"));
}

TEST(DispatchQueue, NullQueuesAndBlocksAreAsserted) {
    const auto queue = serialQueue();
    test::AssertionRecorder assertions;
    dispatch_async(nullptr, [] {});
    dispatch_async(queue, nullptr);
    dispatch_barrier_async(queue, nullptr);
    dispatch_sync(queue, nullptr);
    dispatch_barrier_sync(nullptr, [] { FAIL(); });
    dispatch_queue_set_specific(nullptr, &queue, nullptr);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: queue != nil",
                                                   u"Invalid parameter not satisfying: block != nil",
                                                   u"Invalid parameter not satisfying: block != nil",
                                                   u"Invalid parameter not satisfying: block != nil",
                                                   u"Invalid parameter not satisfying: queue != nil",
                                                   u"Invalid parameter not satisfying: queue != nil"));
}

TEST(DispatchQueue, AnExceptionOfASynchronousBlockReachesTheCallerAndTheQueueGoesOn) {
    const auto queue = concurrentQueue();
    EXPECT_THROW(dispatch_sync(queue, [] { throw std::runtime_error("plain"); }), std::runtime_error);
    EXPECT_THROW(dispatch_barrier_sync(queue, [] { throw std::runtime_error("barrier"); }),
                 std::runtime_error);
    const int key = 0;
    dispatch_queue_set_specific(queue, &key, queue.get());
    EXPECT_EQ(dispatch_get_specific(&key), nullptr);
    bool ran = false;
    dispatch_barrier_sync(queue, [&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(DispatchQueueDeathTest, AnExceptionOfAnAsynchronousBlockIsLoggedAndEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            const auto queue = dispatch_queue_create("com.example.queue", DISPATCH_QUEUE_SERIAL);
            dispatch_async(queue, [] { throw std::runtime_error("the reason"); });
            finish(queue);
        },
        "an exception left a task on the queue \"com.example.queue\": the reason");
    EXPECT_DEATH(
        {
            const auto queue = dispatch_queue_create("com.example.queue", DISPATCH_QUEUE_SERIAL);
            dispatch_async(queue, [] { throw 7; });
            finish(queue);
        },
        "an exception left a task on the queue \"com.example.queue\"");
}

TEST(DispatchQueue, TasksKeepTheirQueueAlive) {
    std::latch release(1);
    std::latch done(3);
    {
        const auto queue = serialQueue();
        dispatch_async(queue, [&] {
            release.wait();
            done.count_down();
        });
        dispatch_async(queue, [&] { done.count_down(); });
        dispatch_barrier_async(queue, [&] { done.count_down(); });
    }
    release.count_down();
    done.wait();
}

TEST(DispatchQueue, ATaskMayLetGoOfTheLastHandleOfItsQueue) {
    struct Owner {
        dispatch_queue_t queue = concurrentQueue();
    };
    std::latch done(1);
    auto owner = std::make_shared<Owner>();
    const std::weak_ptr<Owner> watched = owner;
    Owner *const raw = owner.get();
    dispatch_async(raw->queue, [owner = std::move(owner), &done]() mutable {
        owner = nullptr;
        done.count_down();
    });
    done.wait();
    EXPECT_TRUE(watched.expired());

    auto synchronous = std::make_shared<Owner>();
    dispatch_sync(synchronous->queue, [&] { synchronous = nullptr; });
    EXPECT_EQ(synchronous, nullptr);
}

TEST(DispatchQueue, WhatABlockHoldsIsReleasedBeforeTheNextTaskStarts) {
    const auto queue = serialQueue();
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    bool expired = false;
    std::latch submitted(1);
    dispatch_async(queue, [held = std::move(held), &submitted] { submitted.wait(); });
    dispatch_async(queue, [&] { expired = watched.expired(); });
    submitted.count_down();
    finish(queue);
    EXPECT_TRUE(expired);
}

TEST(DispatchQueue, NothingDeadlocksWhenEveryWorkerWaitsForAnotherQueue) {
    const std::size_t count = dispatch::poolWidth() * 4;
    const auto shared = serialQueue();
    std::latch release(1);
    // The tasks behind this one can only run when a worker is left for it.
    dispatch_async(shared, [&] { release.wait(); });
    std::latch begun(static_cast<std::ptrdiff_t>(count));
    const auto group = dispatch_group_create();
    std::atomic<std::size_t> ran = 0;
    for (std::size_t i = 0; i < count; ++i) {
        dispatch_group_async(group, concurrentQueue(), [&] {
            begun.count_down();
            dispatch_sync(shared, [&] { ++ran; });
        });
    }
    begun.wait();
    release.count_down();
    EXPECT_TRUE(dispatch_group_wait(group, DISPATCH_TIME_FOREVER));
    EXPECT_EQ(ran, count);
}

TEST(DispatchQueue, ChainsOfQueuesThatWaitForTheNextOneEnd) {
    constexpr int length = 40;
    std::vector<dispatch_queue_t> queues;
    for (int i = 0; i < length; ++i)
        queues.push_back(serialQueue());
    const std::function<int(int)> visit = [&](int i) {
        if (i == length)
            return 0;
        // Each link waits on a worker of its own for a task of the next queue.
        const auto semaphore = dispatch_semaphore_create(0);
        int result = 0;
        dispatch_async(queues[static_cast<std::size_t>(i)], [&] {
            result = visit(i + 1) + 1;
            dispatch_semaphore_signal(semaphore);
        });
        dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
        return result;
    };
    EXPECT_EQ(visit(0), length);
}

TEST(DispatchQueueDeathTest, TheProcessEndsCleanlyWithQueuesAndTasksAlive) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            static const auto queue = serialQueue();
            std::latch begun(2);
            dispatch_async(queue, [&] {
                begun.count_down();
                // Waits for ever; the task behind it never starts.
                dispatch_semaphore_wait(dispatch_semaphore_create(0), DISPATCH_TIME_FOREVER);
            });
            dispatch_async(queue, [held = std::make_shared<int>(1)] {});
            dispatch_async(dispatch_get_global_queue(QOS_CLASS_BACKGROUND), [&] {
                begun.count_down();
                for (;;)
                    NSLog(u"still at work");
            });
            dispatch_async(dispatch_get_main_queue(), [held = std::make_shared<int>(1)] {});
            dispatch_after(dispatch_time_after(3600), queue, [held = std::make_shared<int>(1)] {});
            begun.wait();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}
