#pragma once

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSLog.h"
#include "Tests/Support/Printing.h"

#include <mutex>
#include <vector>

namespace quorvane::test {

/// Keeps every log message while it lives, instead of printing it.
class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();
    std::vector<NSString> messages() const;

private:
    mutable std::mutex _mutex;
    std::vector<NSString> _messages;
    NSLogSink _previous;
};

/// Keeps the message of every assertion while it lives and lets the work go on.
class AssertionRecorder {
public:
    AssertionRecorder();
    ~AssertionRecorder();
    std::vector<NSString> messages() const;

private:
    mutable std::mutex _mutex;
    std::vector<NSString> _messages;
    NSAssertionHandler::Handler _previous;
};

} // namespace quorvane::test
