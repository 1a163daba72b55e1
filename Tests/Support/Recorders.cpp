#include "Tests/Support/Recorders.h"

namespace quorvane::test {

LogRecorder::LogRecorder() {
    _previous = NSLogSetSink([this](const NSString &message) {
        const std::lock_guard guard(_mutex);
        _messages.push_back(message);
    });
}

LogRecorder::~LogRecorder() { NSLogSetSink(std::move(_previous)); }

std::vector<NSString> LogRecorder::messages() const {
    const std::lock_guard guard(_mutex);
    return _messages;
}

AssertionRecorder::AssertionRecorder() {
    _previous = NSAssertionHandler::setHandler([this](const NSString &, const NSString &message) {
        const std::lock_guard guard(_mutex);
        _messages.push_back(message);
    });
}

AssertionRecorder::~AssertionRecorder() { NSAssertionHandler::setHandler(std::move(_previous)); }

std::vector<NSString> AssertionRecorder::messages() const {
    const std::lock_guard guard(_mutex);
    return _messages;
}

} // namespace quorvane::test
