#pragma once

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"

#include <gtest/gtest.h>

#include <thread>

/// What tests of a parse's access share: nothing sleeps, everything waits for something.
namespace quorvane::test {

inline dispatch_time_t farAway() { return std::chrono::steady_clock::now() + std::chrono::seconds(60); }

/// One thread waits until another has opened it; copies are the same gate.
class Gate {
public:
    void open() const { dispatch_semaphore_signal(_semaphore); }
    /// Lets one through; fails the test where nobody opens it.
    void pass() const {
        EXPECT_TRUE(dispatch_semaphore_wait(_semaphore, farAway())) << "nobody opened the gate";
    }
    bool isOpen() const { return dispatch_semaphore_wait(_semaphore, std::chrono::steady_clock::now()); }

private:
    dispatch_semaphore_t _semaphore = dispatch_semaphore_create(0);
};

/// Keeps a parse's queue busy with a writer until it is let go.
class BusyQueue {
public:
    explicit BusyQueue(QVParse &parse) {
        parse.performWritingBlock([started = _started, release = _release] {
            started.open();
            release.pass();
        });
        _started.pass();
    }
    ~BusyQueue() { letGo(); }
    void letGo() {
        if (!std::exchange(_isFree, true))
            _release.open();
    }

private:
    Gate _started;
    Gate _release;
    bool _isFree = false;
};

/// Waits until all that was submitted to a parse before has run.
inline void waitForQueue(QVParse &parse) {
    parse.performWritingBlockAndWait([] {});
}

inline std::shared_ptr<QVParse>
parseOfWords(QVParseConcurrencyType type = QVParsePrivateQueueConcurrencyType) {
    return QVParse::initWithSyntax(syntaxWithScopes(single("w", "\\w+")), 0, type);
}

/// One of the eight ways to get access, with time-outs that never come.
struct AccessWay {
    const char *name;
    bool waits;
    std::function<void(QVParse &, std::function<void()>)> perform;
};

inline const std::vector<AccessWay> &accessWays() {
    static const std::vector<AccessWay> ways{
        {"performReadingBlock", false, [](QVParse &parse, auto block) { parse.performReadingBlock(block); }},
        {"performReadingBlockAndWait", true,
         [](QVParse &parse, auto block) { parse.performReadingBlockAndWait(block); }},
        {"performReadingWithTimeout", false,
         [](QVParse &parse, auto block) { parse.performReadingWithTimeout(60, block, nullptr); }},
        {"performReadingWithTimeoutAndWait", true,
         [](QVParse &parse, auto block) { EXPECT_TRUE(parse.performReadingWithTimeoutAndWait(60, block)); }},
        {"performWritingBlock", false, [](QVParse &parse, auto block) { parse.performWritingBlock(block); }},
        {"performWritingBlockAndWait", true,
         [](QVParse &parse, auto block) { parse.performWritingBlockAndWait(block); }},
        {"performWritingWithTimeout", false,
         [](QVParse &parse, auto block) { parse.performWritingWithTimeout(60, block, nullptr); }},
        {"performWritingWithTimeoutAndWait", true,
         [](QVParse &parse, auto block) { parse.performWritingWithTimeoutAndWait(60, block, nullptr); }},
    };
    return ways;
}

} // namespace quorvane::test
