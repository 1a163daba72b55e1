#include "Platform/Foundation/NSNotificationCenter.h"

#include "Tests/Support/Recorders.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

const int senderA = 0;
const int senderB = 0;

} // namespace

TEST(NSNotificationCenter, ObserversAreToldAtOnceInTheOrderTheyWereAdded) {
    NSNotificationCenter center;
    std::string told;
    const auto first = center.addObserver(u"n", nullptr, [&](const NSNotification &) { told += "1"; });
    const auto second = center.addObserver(u"n", nullptr, [&](const NSNotification &) { told += "2"; });
    center.postNotification({u"n"});
    EXPECT_EQ(told, "12");
}

TEST(NSNotificationCenter, TheMessageArrivesWhole) {
    NSNotificationCenter center;
    int calls = 0;
    const auto token = center.addObserver(u"n", nullptr, [&](const NSNotification &notification) {
        ++calls;
        EXPECT_EQ(notification.name, u"n");
        EXPECT_EQ(notification.object, &senderA);
        EXPECT_EQ(std::any_cast<int>(notification.userInfo.at(u"key")), 5);
    });
    center.postNotification({u"n", &senderA, {{u"key", 5}}});
    EXPECT_EQ(calls, 1);
}

TEST(NSNotificationCenter, NamesAndSendersChooseWhoIsTold) {
    NSNotificationCenter center;
    std::string told;
    const auto observer = [&](const char *mark) {
        return [&told, mark](const NSNotification &) { told += mark; };
    };
    const auto all = center.addObserver(nullptr, nullptr, observer("*"));
    const auto named = center.addObserver(u"n", nullptr, observer("n"));
    const auto sent = center.addObserver(nullptr, &senderA, observer("a"));
    const auto both = center.addObserver(u"n", &senderA, observer("!"));
    const auto told0 = [&](const NSNotification &notification) {
        told.clear();
        center.postNotification(notification);
        return told;
    };
    EXPECT_EQ(told0({u"n", &senderA}), "*na!");
    EXPECT_EQ(told0({u"n", &senderB}), "*n");
    EXPECT_EQ(told0({u"m", &senderA}), "*a");
    EXPECT_EQ(told0({u"m"}), "*");
    // The empty name is a name like any other.
    EXPECT_EQ(told0({u""}), "*");
}

TEST(NSNotificationCenter, AnObserverIsToldUntilItsTokenGoes) {
    NSNotificationCenter center;
    int calls = 0;
    const auto count = [&](const NSNotification &) { ++calls; };
    {
        auto token = center.addObserver(u"n", nullptr, count);
        center.postNotification({u"n"});
        const NSNotificationToken moved = std::move(token);
        token.invalidate();
        center.postNotification({u"n"});
    }
    center.postNotification({u"n"});
    EXPECT_EQ(calls, 2);

    // Assigning to a token ends what it held.
    auto token = center.addObserver(u"n", nullptr, count);
    token = NSNotificationToken();
    center.postNotification({u"n"});
    EXPECT_EQ(calls, 2);

    token = center.addObserver(u"n", nullptr, count);
    token.invalidate();
    token.invalidate();
    center.postNotification({u"n"});
    EXPECT_EQ(calls, 2);
}

TEST(NSNotificationCenter, AnObserverMayRemoveItselfAndOthersWhileItIsTold) {
    NSNotificationCenter center;
    std::string told;
    NSNotificationToken second;
    NSNotificationToken first;
    first = center.addObserver(u"n", nullptr, [&](const NSNotification &) {
        told += "1";
        first.invalidate();
        second.invalidate();
    });
    second = center.addObserver(u"n", nullptr, [&](const NSNotification &) { told += "2"; });
    const auto third = center.addObserver(u"n", nullptr, [&](const NSNotification &) { told += "3"; });
    center.postNotification({u"n"});
    // The second was removed before its turn.
    EXPECT_EQ(told, "13");
    center.postNotification({u"n"});
    EXPECT_EQ(told, "133");
}

TEST(NSNotificationCenter, AnObserverThatIsAddedMeanwhileIsToldFromTheNextMessageOn) {
    NSNotificationCenter center;
    std::string told;
    std::vector<NSNotificationToken> added;
    const auto first = center.addObserver(u"n", nullptr, [&](const NSNotification &) {
        told += "1";
        if (added.empty())
            added.push_back(center.addObserver(u"n", nullptr, [&](const NSNotification &) { told += "2"; }));
    });
    center.postNotification({u"n"});
    EXPECT_EQ(told, "1");
    center.postNotification({u"n"});
    EXPECT_EQ(told, "112");
}

TEST(NSNotificationCenter, AnObserverMayPost) {
    NSNotificationCenter center;
    std::string told;
    NSNotificationToken token;
    token = center.addObserver(nullptr, nullptr, [&](const NSNotification &notification) {
        told += notification.name.UTF8String();
        if (notification.name == u"outer") {
            center.postNotification({u"inner"});
            // Still in the outer call, so that this can't wait for it.
            token.invalidate();
        }
    });
    center.postNotification({u"outer"});
    center.postNotification({u"outer"});
    EXPECT_EQ(told, "outerinner");
}

TEST(NSNotificationCenter, ATokenMayOutliveItsCenter) {
    auto center = std::make_unique<NSNotificationCenter>();
    auto token = center->addObserver(u"n", nullptr, [](const NSNotification &) {});
    center.reset();
    token.invalidate();
}

TEST(NSNotificationCenter, AnExceptionReachesWhoPostsAndTheObserverStaysUsable) {
    NSNotificationCenter center;
    int calls = 0;
    auto token = center.addObserver(u"n", nullptr, [&](const NSNotification &) {
        if (++calls == 1)
            throw std::runtime_error("why");
    });
    EXPECT_THROW(center.postNotification({u"n"}), std::runtime_error);
    center.postNotification({u"n"});
    EXPECT_EQ(calls, 2);
    // Would wait for ever if the call that threw still counted.
    std::thread([&] { token.invalidate(); }).join();
}

TEST(NSNotificationCenter, AnEmptyObserverIsAsserted) {
    const AssertionRecorder assertions;
    NSNotificationCenter center;
    auto token = center.addObserver(u"n", nullptr, nullptr);
    center.postNotification({u"n"});
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: block != nil"});
}

TEST(NSNotificationCenter, TheDefaultCenterIsAlwaysTheSame) {
    EXPECT_EQ(&NSNotificationCenter::defaultCenter(), &NSNotificationCenter::defaultCenter());
}

TEST(NSNotificationCenter, RemovingWaitsForACallOnAnotherThread) {
    NSNotificationCenter center;
    std::latch inside(1);
    std::atomic<bool> mayLeave = false;
    bool hasLeft = false;
    auto token = center.addObserver(u"n", nullptr, [&](const NSNotification &) {
        inside.count_down();
        mayLeave.wait(false);
        hasLeft = true;
    });
    std::thread poster([&] { center.postNotification({u"n"}); });
    inside.wait();
    std::thread releaser([&] {
        mayLeave = true;
        mayLeave.notify_all();
    });
    token.invalidate();
    // Not atomic: only the waiting orders the two threads, which the thread checks watch.
    EXPECT_TRUE(hasLeft);
    poster.join();
    releaser.join();
}

TEST(NSNotificationCenter, RemovingFromInsideACallWaitsForTheOtherThreadsOnly) {
    NSNotificationCenter center;
    std::latch bothInside(2);
    std::atomic<bool> isRemoving = false;
    int left = 0;
    NSNotificationToken token;
    token = center.addObserver(u"n", &senderA, [&](const NSNotification &notification) {
        bothInside.arrive_and_wait();
        if (notification.userInfo.contains(u"remover")) {
            isRemoving = true;
            isRemoving.notify_all();
            token.invalidate();
            // Not atomic: the other call has ended before the removal has.
            EXPECT_EQ(left, 1);
        } else {
            isRemoving.wait(false);
            ++left;
        }
    });
    std::thread remover([&] { center.postNotification({u"n", &senderA, {{u"remover", true}}}); });
    std::thread other([&] { center.postNotification({u"n", &senderA}); });
    remover.join();
    other.join();
    EXPECT_EQ(left, 1);
}

TEST(NSNotificationCenter, ManyThreadsMayPostAddAndRemove) {
    NSNotificationCenter center;
    std::atomic<int> steady = 0;
    const auto token = center.addObserver(u"n", nullptr, [&](const NSNotification &) { ++steady; });
    constexpr int rounds = 500;
    const auto work = [&] {
        for (int round = 0; round < rounds; ++round) {
            // A plain variable of this stack frame: a call after the token's end would be seen.
            std::atomic<int> calls = 0;
            const auto mine = center.addObserver(u"n", nullptr, [&](const NSNotification &) { ++calls; });
            center.postNotification({u"n"});
            EXPECT_GE(calls, 1);
        }
    };
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count)
        threads.emplace_back(work);
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(steady, 4 * rounds);
}
