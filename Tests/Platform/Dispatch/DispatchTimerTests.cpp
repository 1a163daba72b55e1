#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <latch>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>

using namespace quorvane;
using std::chrono::nanoseconds;
using testing::ElementsAre;

namespace {

dispatch_queue_t background() { return dispatch_get_global_queue(QOS_CLASS_BACKGROUND); }

/// Waits until the timer thread and a queue have done what is due now.
void letDueTimersFire(const dispatch_queue_t &queue) {
    const auto semaphore = dispatch_semaphore_create(0);
    dispatch_after(dispatch_time_after(0), queue, [&] { dispatch_semaphore_signal(semaphore); });
    dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
}

} // namespace

TEST(DispatchTimer, SubmitsItsHandlerNotBeforeItsTime) {
    const auto timer = dispatch_timer_create(background());
    const auto semaphore = dispatch_semaphore_create(0);
    const auto when = dispatch_time_after(0.02);
    dispatch_time_t fired;
    dispatch_source_set_timer(timer, when, nanoseconds(0));
    dispatch_source_set_event_handler(timer, [&] {
        fired = std::chrono::steady_clock::now();
        dispatch_semaphore_signal(semaphore);
    });
    dispatch_resume(timer);
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
    EXPECT_GE(fired, when);
}

TEST(DispatchTimer, FiresOnce) {
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    const auto timer = dispatch_timer_create(queue);
    int count = 0;
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    dispatch_source_set_event_handler(timer, [&] { ++count; });
    dispatch_resume(timer);
    letDueTimersFire(queue);
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    dispatch_resume(timer);
    letDueTimersFire(queue);
    dispatch_sync(queue, [&] { EXPECT_EQ(count, 1); });
}

TEST(DispatchTimer, DoesNothingBeforeItIsResumed) {
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    const auto timer = dispatch_timer_create(queue);
    std::atomic<int> count = 0;
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    dispatch_source_set_event_handler(timer, [&] { ++count; });
    letDueTimersFire(queue);
    EXPECT_EQ(count, 0);
    dispatch_resume(timer);
    letDueTimersFire(queue);
    EXPECT_EQ(count, 1);
}

TEST(DispatchTimer, AHandlerThatHasNotStartedWhenTheTimerIsCancelledNeverRuns) {
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    const auto timer = dispatch_timer_create(queue);
    std::latch busy(1);
    std::latch release(1);
    // Keeps the queue busy, so that the handler has fired but can't start.
    dispatch_async(queue, [&] {
        busy.count_down();
        release.wait();
    });
    busy.wait();
    bool ran = false;
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    dispatch_source_set_event_handler(timer, [&] { ran = true; });
    dispatch_resume(timer);
    letDueTimersFire(background());
    dispatch_source_cancel(timer);
    release.count_down();
    dispatch_sync(queue, [] {});
    EXPECT_FALSE(ran);
}

TEST(DispatchTimer, ACancelledTimerReleasesItsHandlerAndStaysCancelled) {
    const auto timer = dispatch_timer_create(background());
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    dispatch_source_set_timer(timer, dispatch_time_after(3600), nanoseconds(0));
    dispatch_source_set_event_handler(timer, [held = std::move(held)] {});
    dispatch_resume(timer);
    dispatch_source_cancel(timer);
    EXPECT_TRUE(watched.expired());

    bool ran = false;
    dispatch_source_set_event_handler(timer, [&] { ran = true; });
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    dispatch_source_cancel(timer);
    letDueTimersFire(background());
    EXPECT_FALSE(ran);
}

TEST(DispatchTimer, AHandlerMayHoldItsOwnTimer) {
    std::weak_ptr<DispatchSource> watched;
    std::latch fired(1);
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    {
        const auto timer = dispatch_timer_create(queue);
        watched = timer;
        dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
        dispatch_source_set_event_handler(timer, [timer, &fired] {
            dispatch_source_cancel(timer);
            fired.count_down();
        });
        dispatch_resume(timer);
    }
    fired.wait();
    dispatch_sync(queue, [] {});
    // The timer thread may hold it for a moment longer, until it has taken up something else.
    letDueTimersFire(queue);
    EXPECT_TRUE(watched.expired());
}

TEST(DispatchTimer, ATimerThatNobodyHoldsNeverFires) {
    bool ran = false;
    {
        const auto timer = dispatch_timer_create(background());
        dispatch_source_set_timer(timer, dispatch_time_after(3600), nanoseconds(0));
        dispatch_source_set_event_handler(timer, [&] { ran = true; });
        dispatch_resume(timer);
    }
    letDueTimersFire(background());
    EXPECT_FALSE(ran);
}

TEST(DispatchTimer, CanBeSetAnewUntilItFires) {
    const auto timer = dispatch_timer_create(background());
    const auto semaphore = dispatch_semaphore_create(0);
    dispatch_source_set_timer(timer, DISPATCH_TIME_FOREVER, nanoseconds(0));
    dispatch_source_set_event_handler(timer, [&] { dispatch_semaphore_signal(semaphore); });
    dispatch_resume(timer);
    letDueTimersFire(background());
    dispatch_source_set_timer(timer, dispatch_time_after(3600), nanoseconds(1000));
    dispatch_source_set_timer(timer, dispatch_time_after(0), nanoseconds(0));
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
}

TEST(DispatchTimer, AHandlerThatTakesLongDelaysNoOtherTimer) {
    const auto slow = dispatch_timer_create(background());
    const auto semaphore = dispatch_semaphore_create(0);
    std::latch release(1);
    std::latch ended(1);
    dispatch_source_set_timer(slow, dispatch_time_after(0), nanoseconds(0));
    dispatch_source_set_event_handler(slow, [&] {
        release.wait();
        ended.count_down();
    });
    dispatch_resume(slow);
    dispatch_after(dispatch_time_after(0.001), background(), [&] { dispatch_semaphore_signal(semaphore); });
    EXPECT_TRUE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER));
    release.count_down();
    ended.wait();
}

TEST(DispatchTimer, BlocksSubmittedForLaterComeInTheOrderOfTheirTimes) {
    const auto queue = dispatch_queue_create("test", DISPATCH_QUEUE_SERIAL);
    std::vector<int> order;
    std::latch done(3);
    const auto now = std::chrono::steady_clock::now();
    const auto later = [&](int milliseconds) {
        dispatch_after(now + std::chrono::milliseconds(milliseconds), queue, [&, milliseconds] {
            order.push_back(milliseconds);
            done.count_down();
        });
    };
    later(30);
    later(10);
    later(20);
    done.wait();
    EXPECT_THAT(order, ElementsAre(10, 20, 30));
}

TEST(DispatchTimer, APointInTimeTakesAnyNumberOfSeconds) {
    const auto now = std::chrono::steady_clock::now();
    EXPECT_GE(dispatch_time_after(2.5), now + std::chrono::milliseconds(2500));
    EXPECT_LT(dispatch_time_after(2.5), now + std::chrono::seconds(60));
    // What is no time to wait is now.
    const std::array<dispatch_time_t, 3> atOnce = {dispatch_time_after(0), dispatch_time_after(-1),
                                                   dispatch_time_after(std::nan(""))};
    for (const dispatch_time_t time : atOnce) {
        EXPECT_GE(time, now);
        EXPECT_LE(time, std::chrono::steady_clock::now());
    }
    EXPECT_EQ(dispatch_time_after(1e300), DISPATCH_TIME_FOREVER);
    EXPECT_EQ(dispatch_time_after(std::numeric_limits<double>::infinity()), DISPATCH_TIME_FOREVER);
}
