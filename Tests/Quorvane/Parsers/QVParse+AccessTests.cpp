#include "Tests/Quorvane/Parsers/AccessFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <cmath>
#include <latch>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

// Who runs when

TEST(QVParseAccess, ReadersRunSideBySide) {
    const auto parse = parseOfWords();
    const Gate first;
    const Gate second;
    const Gate done;
    parse->performReadingBlock([&] {
        first.open();
        second.pass();
        done.open();
    });
    parse->performReadingBlock([&] {
        first.pass();
        second.open();
        done.open();
    });
    done.pass();
    done.pass();
}

TEST(QVParseAccess, AWriterWaitsForTheReadersBeforeItAndHoldsBackThoseBehindIt) {
    const auto parse = parseOfWords();
    std::vector<int> order;
    std::mutex mutex;
    const auto note = [&](int number) {
        const std::lock_guard guard(mutex);
        order.push_back(number);
    };
    const Gate readerStarted;
    const Gate release;
    parse->performReadingBlock([&] {
        readerStarted.open();
        release.pass();
        note(1);
    });
    readerStarted.pass();
    parse->performWritingBlock([&] { note(2); });
    parse->performReadingBlock([&] { note(3); });
    parse->performWritingWithTimeout(
        60, [&] { note(4); }, nullptr);
    {
        const std::lock_guard guard(mutex);
        EXPECT_THAT(order, IsEmpty());
    }
    release.open();
    waitForQueue(*parse);
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST(QVParseAccess, NobodyRunsBesideAWriter) {
    const auto parse = parseOfWords();
    std::atomic<int> readers = 0;
    std::atomic<int> writers = 0;
    std::atomic<int> clashes = 0;
    // Plain on purpose: the thread checks see any two that should not meet.
    int plain = 0;
    const auto read = [&] {
        ++readers;
        clashes += writers != 0 || plain < 0;
        --readers;
    };
    const auto write = [&] {
        ++writers;
        clashes += readers != 0 || writers != 1;
        ++plain;
        --writers;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                parse->performReadingBlock(read);
                parse->performWritingBlock(write);
                parse->performReadingBlockAndWait(read);
                parse->performWritingBlockAndWait(write);
                parse->performReadingWithTimeout(60, read, nullptr);
                EXPECT_TRUE(parse->performReadingWithTimeoutAndWait(60, read));
                parse->performWritingWithTimeout(60, write, nullptr);
                parse->performWritingWithTimeoutAndWait(60, write, nullptr);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    waitForQueue(*parse);
    EXPECT_EQ(clashes, 0);
    EXPECT_EQ(plain, 4 * 50 * 4);
}

TEST(QVParseAccess, TheFormsThatDoNotWaitReturnBeforeTheirTurn) {
    for (const AccessWay &way : accessWays()) {
        if (way.waits)
            continue;
        SCOPED_TRACE(way.name);
        const auto parse = parseOfWords();
        std::atomic<bool> ran = false;
        std::thread::id thread;
        {
            const BusyQueue busy(*parse);
            way.perform(*parse, [&] {
                thread = std::this_thread::get_id();
                ran = true;
            });
            EXPECT_FALSE(ran);
        }
        waitForQueue(*parse);
        EXPECT_TRUE(ran);
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

TEST(QVParseAccess, TheFormsThatWaitReturnBehindTheirCallback) {
    for (const AccessWay &way : accessWays()) {
        if (!way.waits)
            continue;
        SCOPED_TRACE(way.name);
        const auto parse = parseOfWords();
        bool ran = false;
        way.perform(*parse, [&] { ran = true; });
        EXPECT_TRUE(ran);
    }
}

TEST(QVParseAccess, ACallbackRunsAtOnceInsideAnotherOne) {
    for (const AccessWay &outer : accessWays())
        for (const AccessWay &inner : accessWays()) {
            SCOPED_TRACE(std::string(inner.name) + " inside " + outer.name);
            const auto parse = parseOfWords();
            const Gate done;
            outer.perform(*parse, [&] {
                bool ran = false;
                const auto thread = std::this_thread::get_id();
                inner.perform(*parse, [&] {
                    EXPECT_EQ(std::this_thread::get_id(), thread);
                    ran = true;
                });
                EXPECT_TRUE(ran);
                done.open();
            });
            done.pass();
        }
}

TEST(QVParseAccess, ACallbackOfAnotherParseIsNotInside) {
    const auto one = parseOfWords();
    const auto other = parseOfWords();
    std::atomic<bool> ran = false;
    one->performReadingBlockAndWait([&] {
        const BusyQueue busy(*other);
        other->performReadingBlock([&] { ran = true; });
        EXPECT_FALSE(ran);
    });
    // But it still is inside of its own, whatever stands between.
    one->performReadingBlockAndWait([&] {
        other->performWritingBlockAndWait([&] {
            bool ranInside = false;
            one->performWritingBlock([&] { ranInside = true; });
            EXPECT_TRUE(ranInside);
        });
    });
    waitForQueue(*other);
}

TEST(QVParseAccess, CallbacksKeepTheirParse) {
    auto parse = parseOfWords();
    const std::weak_ptr<QVParse> weak = parse;
    const Gate done;
    {
        const BusyQueue busy(*parse);
        for (const AccessWay &way : accessWays())
            if (!way.waits)
                way.perform(*parse, [&done, parse = parse.get()] {
                    EXPECT_EQ(parse->string().size(), 0u);
                    done.open();
                });
        parse = nullptr;
    }
    for (int count = 0; count < 4; ++count)
        done.pass();
    while (!weak.expired())
        std::this_thread::yield();
}

// The main queue

TEST(QVParseAccess, OnTheMainThreadCallbacksOfTheMainQueueRunAtOnce) {
    const auto parse = parseOfWords(QVParseMainQueueConcurrencyType);
    for (const AccessWay &way : accessWays()) {
        SCOPED_TRACE(way.name);
        bool ran = false;
        way.perform(*parse, [&] { ran = true; });
        EXPECT_TRUE(ran);
    }
    EXPECT_EQ(MainQueue::drain(), 0u);
}

TEST(QVParseAccess, OnOtherThreadsCallbacksOfTheMainQueueWaitForTheMainThread) {
    const auto parse = parseOfWords(QVParseMainQueueConcurrencyType);
    for (const AccessWay &way : accessWays()) {
        SCOPED_TRACE(way.name);
        std::atomic<bool> ran = false;
        std::atomic<bool> returned = false;
        std::thread thread([&] {
            way.perform(*parse, [&] {
                EXPECT_TRUE(MainQueue::isMainThread());
                EXPECT_EQ(returned, !way.waits);
                ran = true;
            });
            returned = true;
        });
        if (!way.waits) {
            thread.join();
            EXPECT_FALSE(ran);
            EXPECT_EQ(MainQueue::drain(), 1u);
        } else {
            EXPECT_TRUE(MainQueue::runUntil([&] { return returned.load(); }, farAway()));
            thread.join();
        }
        EXPECT_TRUE(ran);
    }
}

// Reading with a time-out

TEST(QVParseAccess, AReaderWhoseTurnComesInTimeRunsAndIsToldSo) {
    const auto parse = parseOfWords();
    const Gate done;
    std::vector<std::string> events;
    parse->performReadingWithTimeout(
        60, [&] { events.push_back("block"); },
        [&](bool ran) {
            events.push_back(ran ? "ran" : "did not run");
            done.open();
        });
    done.pass();
    EXPECT_THAT(events, ElementsAre("block", "ran"));
}

TEST(QVParseAccess, AReaderWhoseTurnComesTooLateIsSkippedAndToldSo) {
    const auto parse = parseOfWords();
    for (const double timeout : {0.0, -1.0, std::nan("")}) {
        const Gate done;
        std::vector<std::string> events;
        parse->performReadingWithTimeout(
            timeout, [&] { events.push_back("block"); },
            [&](bool ran) {
                events.push_back(ran ? "ran" : "did not run");
                done.open();
            });
        done.pass();
        EXPECT_THAT(events, ElementsAre("did not run")) << timeout;
    }
    // It need not be told.
    parse->performReadingWithTimeout(
        0, [] { ADD_FAILURE() << "ran too late"; }, nullptr);
    waitForQueue(*parse);
}

TEST(QVParseAccess, InsideAnotherCallbackATimeOutDoesNotCount) {
    const auto parse = parseOfWords();
    parse->performReadingBlockAndWait([&] {
        std::vector<std::string> events;
        parse->performReadingWithTimeout(
            0, [&] { events.push_back("block"); },
            [&](bool ran) { events.push_back(ran ? "ran" : "did not run"); });
        EXPECT_THAT(events, ElementsAre("block", "ran"));
        EXPECT_TRUE(parse->performReadingWithTimeoutAndWait(0, [&] { events.push_back("waited for"); }));
        EXPECT_THAT(events, ElementsAre("block", "ran", "waited for"));
    });
}

TEST(QVParseAccess, AReaderOfACancelledParseIsSkippedAndToldSo) {
    const auto parse = parseOfWords();
    const Gate done;
    {
        const BusyQueue busy(*parse);
        // Its turn comes before that of the writer that ends the cancelling.
        parse->performReadingWithTimeout(
            60, [] { ADD_FAILURE() << "ran although cancelled"; },
            [&](bool ran) {
                EXPECT_FALSE(ran);
                done.open();
            });
        parse->cancelParsing();
    }
    done.pass();
}

TEST(QVParseAccess, AReaderThatIsWaitedForAnswersWhetherItRanInTime) {
    const auto parse = parseOfWords();
    bool ran = false;
    EXPECT_TRUE(parse->performReadingWithTimeoutAndWait(60, [&] { ran = true; }));
    EXPECT_TRUE(ran);
}

TEST(QVParseAccess, AReaderThatCameTooLateToBeWaitedForNeverRuns) {
    const auto parse = parseOfWords();
    bool ran = false;
    {
        const BusyQueue busy(*parse);
        EXPECT_FALSE(parse->performReadingWithTimeoutAndWait(0.01, [&] { ran = true; }));
    }
    waitForQueue(*parse);
    EXPECT_FALSE(ran);
}

TEST(QVParseAccess, AReaderThatRunsPastItsTimeIsWaitedForAndCountsAsLate) {
    const auto parse = parseOfWords();
    bool finished = false;
    EXPECT_FALSE(parse->performReadingWithTimeoutAndWait(0.01, [&] {
        // Far beyond the time-out, which nothing tells from inside.
        dispatch_semaphore_wait(dispatch_semaphore_create(0), dispatch_time_after(1));
        finished = true;
    }));
    EXPECT_TRUE(finished);
}

TEST(QVParseAccess, ACancelledParseMakesAReaderWaitOutItsTime) {
    const auto parse = parseOfWords(QVParseMainQueueConcurrencyType);
    const Gate submitted;
    MainQueue::setWakeUpHandler([submitted] { submitted.open(); });
    const auto start = std::chrono::steady_clock::now();
    std::thread reader([&] {
        EXPECT_FALSE(
            parse->performReadingWithTimeoutAndWait(0.05, [] { ADD_FAILURE() << "ran although cancelled"; }));
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    });
    submitted.pass();
    MainQueue::setWakeUpHandler(nullptr);
    std::thread([&] { parse->cancelParsing(); }).join();
    EXPECT_EQ(MainQueue::drain(), 2u);
    reader.join();
}

// Writing with a time-out

TEST(QVParseAccess, TheHandlerOfAWriterThatRunsLongIsToldWhileItRuns) {
    for (const auto type : {QVParsePrivateQueueConcurrencyType, QVParseMainQueueConcurrencyType}) {
        const auto parse = parseOfWords(type);
        const Gate told;
        bool finished = false;
        const auto thread = std::this_thread::get_id();
        parse->performWritingWithTimeoutAndWait(
            0.001,
            [&] {
                EXPECT_EQ(std::this_thread::get_id(), thread);
                told.pass();
                finished = true;
            },
            [&] {
                EXPECT_NE(std::this_thread::get_id(), thread);
                EXPECT_FALSE(finished);
                told.open();
            });
        EXPECT_TRUE(finished);
    }
    const auto parse = parseOfWords();
    const Gate told;
    std::atomic<bool> finished = false;
    parse->performWritingWithTimeout(
        0.001,
        [&] {
            told.pass();
            finished = true;
        },
        [&] { told.open(); });
    waitForQueue(*parse);
    EXPECT_TRUE(finished);
}

TEST(QVParseAccess, TheHandlerOfAWriterThatWaitsForItsTurnIsNotTold) {
    // The time runs from the writer's own start.
    const auto parse = parseOfWords();
    std::atomic<bool> told = false;
    const Gate later;
    {
        const BusyQueue busy(*parse);
        parse->performWritingWithTimeout(
            60, [] {}, [&] { told = true; });
        dispatch_after(dispatch_time_after(0.01), dispatch_get_global_queue(QOS_CLASS_DEFAULT),
                       [later] { later.open(); });
        later.pass();
        EXPECT_FALSE(told);
    }
    waitForQueue(*parse);
    EXPECT_FALSE(told);
}

TEST(QVParseAccess, TheHandlerOfAWriterThatIsThroughIsLetGo) {
    const auto parse = parseOfWords();
    for (const bool waits : {true, false}) {
        auto token = std::make_shared<int>();
        const std::weak_ptr<int> weak = token;
        std::function<void()> handler = [token = std::move(token)] { ADD_FAILURE() << "told"; };
        if (waits)
            parse->performWritingWithTimeoutAndWait(
                60, [] {}, std::exchange(handler, nullptr));
        else
            parse->performWritingWithTimeout(
                60, [] {}, std::exchange(handler, nullptr));
        waitForQueue(*parse);
        EXPECT_TRUE(weak.expired());
    }
}

TEST(QVParseAccess, AWriterInsideAnotherCallbackHasNoTimer) {
    const auto parse = parseOfWords();
    for (const bool waits : {true, false})
        parse->performWritingBlockAndWait([&] {
            const auto handler = [] { ADD_FAILURE() << "told"; };
            const auto block = [] {
                const Gate later;
                dispatch_after(dispatch_time_after(0.02), dispatch_get_global_queue(QOS_CLASS_BACKGROUND),
                               [later] { later.open(); });
                later.pass();
            };
            if (waits)
                parse->performWritingWithTimeoutAndWait(0.001, block, handler);
            else
                parse->performWritingWithTimeout(0.001, block, handler);
        });
}

TEST(QVParseAccess, AWriterNeedsNoHandler) {
    const auto parse = parseOfWords();
    bool ran = false;
    parse->performWritingWithTimeoutAndWait(
        0.001,
        [&] {
            const Gate later;
            dispatch_after(dispatch_time_after(0.01), dispatch_get_global_queue(QOS_CLASS_BACKGROUND),
                           [later] { later.open(); });
            later.pass();
            ran = true;
        },
        nullptr);
    EXPECT_TRUE(ran);
}

TEST(QVParseAccess, AHandlerMayCancelTheParse) {
    const auto parse = parseOfWords();
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, u"a", nullptr); });
    const Gate cancelled;
    parse->performWritingWithTimeoutAndWait(
        0.001,
        [&] {
            cancelled.pass();
            EXPECT_TRUE(parse->isCancelled());
            EXPECT_EQ(parse->rootMatch()->submatches().count(), 1u);
        },
        [&] {
            parse->cancelParsing();
            cancelled.open();
        });
    parse->performReadingBlockAndWait([&] { EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty()); });
}

TEST(QVParseAccess, AnExceptionOfACallbackThatIsWaitedForReachesItsCaller) {
    const auto parse = parseOfWords();
    const auto fail = [] { throw std::runtime_error("failed"); };
    EXPECT_THROW(parse->performReadingBlockAndWait(fail), std::runtime_error);
    EXPECT_THROW(parse->performWritingBlockAndWait(fail), std::runtime_error);
    EXPECT_THROW(parse->performWritingWithTimeoutAndWait(60, fail, nullptr), std::runtime_error);
    // The queue goes on.
    waitForQueue(*parse);
}

// Programming errors

TEST(QVParseAccess, ACallbackIsNeeded) {
    const auto parse = parseOfWords();
    const AssertionRecorder assertions;
    parse->performReadingBlock(nullptr);
    parse->performReadingBlockAndWait(nullptr);
    parse->performReadingWithTimeout(60, nullptr, [](bool) { ADD_FAILURE() << "completed"; });
    EXPECT_FALSE(parse->performReadingWithTimeoutAndWait(60, nullptr));
    parse->performWritingBlock(nullptr);
    parse->performWritingBlockAndWait(nullptr);
    parse->performWritingWithTimeout(60, nullptr, nullptr);
    parse->performWritingWithTimeoutAndWait(60, nullptr, nullptr);
    EXPECT_THAT(
        assertions.messages(),
        testing::AllOf(testing::SizeIs(8), testing::Each(u"Invalid parameter not satisfying: block != nil")));
    waitForQueue(*parse);
}

TEST(QVParseAccess, AWritersTimeOutMustBeAboveZero) {
    const auto parse = parseOfWords();
    int count = 0;
    {
        const AssertionRecorder assertions;
        for (const double timeout : {0.0, -1.0, std::nan("")}) {
            // The work goes on where the handler of assertions lets it.
            parse->performWritingWithTimeoutAndWait(
                timeout, [&] { ++count; }, nullptr);
            parse->performWritingWithTimeout(
                timeout, [&] { ++count; }, nullptr);
        }
        waitForQueue(*parse);
        EXPECT_THAT(assertions.messages(),
                    testing::AllOf(testing::SizeIs(6),
                                   testing::Each(u"Invalid parameter not satisfying: interval > 0.0")));
        EXPECT_EQ(count, 6);
        parse->performWritingWithTimeout(0, nullptr, nullptr);
        EXPECT_THAT(assertions.messages(), testing::SizeIs(8));
    }
    for (const double timeout : {1e-300, 1e300, HUGE_VAL})
        parse->performWritingWithTimeoutAndWait(
            timeout, [&] { ++count; }, nullptr);
    EXPECT_EQ(count, 9);
}
