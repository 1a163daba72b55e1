#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSAssertionHandler.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cmath>
#include <mutex>
#include <thread>

namespace quorvane {

namespace {

/// The thread on which timers fire. It only ever submits handlers, so that no handler delays another timer,
/// and no pool that is full delays the moment.
class TimerThread {
public:
    static boost::asio::io_context &context() {
        // Never destroyed: a timer may fire while the process ends.
        static TimerThread &shared = *new TimerThread;
        return shared._context;
    }

private:
    TimerThread() {
        std::thread([this] { _context.run(); }).detach();
    }

    boost::asio::io_context _context{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> _stayOpen =
        boost::asio::make_work_guard(_context);
};

} // namespace

/// A timer lives on the timer thread as a wait that holds its source weakly; what decides whether the handler
/// runs is the source's state alone.
class DispatchSource : public std::enable_shared_from_this<DispatchSource> {
public:
    explicit DispatchSource(dispatch_queue_t queue) : _queue(std::move(queue)) {}

    ~DispatchSource() { stopWaiting(); }

    void setTimer(dispatch_time_t when) {
        const std::lock_guard guard(_mutex);
        _when = when;
        startWaiting();
    }

    void setHandler(dispatch_block_t handler) {
        const std::lock_guard guard(_mutex);
        // The old handler goes after the lock, for what it holds may be anything.
        if (!_done)
            _handler.swap(handler);
    }

    void resume() {
        const std::lock_guard guard(_mutex);
        _resumed = true;
        startWaiting();
    }

    void cancel() {
        dispatch_block_t released;
        const std::lock_guard guard(_mutex);
        _done = true;
        released.swap(_handler);
        stopWaiting();
    }

private:
    using Wait = boost::asio::steady_timer;

    void startWaiting() {
        stopWaiting();
        if (!_resumed || _done || _submitted || _when == DISPATCH_TIME_FOREVER)
            return;
        _wait = std::make_shared<Wait>(TimerThread::context());
        // A wait belongs to the timer thread, from its start to its end.
        boost::asio::post(TimerThread::context(),
                          [wait = _wait, when = _when, source = weak_from_this()]() mutable {
                              wait->expires_at(when);
                              wait->async_wait([wait = wait.get(), source = std::move(source)](auto error) {
                                  const auto self = source.lock();
                                  if (self && !error)
                                      self->waitEnded(wait);
                              });
                          });
    }

    void stopWaiting() {
        if (_wait)
            boost::asio::post(TimerThread::context(), [wait = std::move(_wait)] { wait->cancel(); });
        _wait = nullptr;
    }

    void waitEnded(const Wait *wait) {
        {
            const std::lock_guard guard(_mutex);
            // A wait that was replaced or stopped may have ended just before.
            if (_wait.get() != wait)
                return;
            _submitted = true;
            stopWaiting();
        }
        dispatch_async(_queue, [self = shared_from_this()] { self->runHandler(); });
    }

    void runHandler() {
        dispatch_block_t handler;
        {
            const std::lock_guard guard(_mutex);
            _done = true;
            handler.swap(_handler);
        }
        if (handler)
            handler();
    }

    const dispatch_queue_t _queue;
    std::mutex _mutex;
    dispatch_block_t _handler;
    dispatch_time_t _when = DISPATCH_TIME_FOREVER;
    std::shared_ptr<Wait> _wait;
    bool _resumed = false;
    /// The handler is with the queue.
    bool _submitted = false;
    /// The handler has started, or never will.
    bool _done = false;
};

dispatch_source_t dispatch_timer_create(const dispatch_queue_t &queue) {
    QVParameterAssert(queue, "queue != nil");
    return queue ? std::make_shared<DispatchSource>(queue) : nullptr;
}

void dispatch_source_set_timer(const dispatch_source_t &source, dispatch_time_t when,
                               std::chrono::nanoseconds) {
    QVParameterAssert(source, "source != nil");
    if (source)
        source->setTimer(when);
}

void dispatch_source_set_event_handler(const dispatch_source_t &source, dispatch_block_t handler) {
    QVParameterAssert(source, "source != nil");
    if (source)
        source->setHandler(std::move(handler));
}

void dispatch_resume(const dispatch_source_t &source) {
    QVParameterAssert(source, "source != nil");
    if (source)
        source->resume();
}

void dispatch_source_cancel(const dispatch_source_t &source) {
    QVParameterAssert(source, "source != nil");
    // The handler, which goes with this, may hold the last handle.
    if (const dispatch_source_t kept = source)
        kept->cancel();
}

void dispatch_after(dispatch_time_t when, const dispatch_queue_t &queue, dispatch_block_t block) {
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block != nullptr, "block != nil");
    if (!queue || !block || when == DISPATCH_TIME_FOREVER)
        return;
    auto wait = std::make_shared<boost::asio::steady_timer>(TimerThread::context(), when);
    boost::asio::post(TimerThread::context(), [wait, queue, block = std::move(block)]() mutable {
        wait->async_wait([wait, queue, block = std::move(block)](auto) mutable {
            dispatch_async(queue, std::move(block));
        });
    });
}

dispatch_time_t dispatch_time_after(double seconds) {
    // What is not a number is no time to wait; what the clock can't count never comes.
    if (!(seconds > 0))
        return std::chrono::steady_clock::now();
    const dispatch_time_t now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> left = DISPATCH_TIME_FOREVER - now;
    if (seconds >= left.count())
        return DISPATCH_TIME_FOREVER;
    return now + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                     std::chrono::duration<double>(seconds));
}

} // namespace quorvane
