#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/NSAssertionHandler.h"

#include <vector>

namespace quorvane {

class DispatchGroup {
public:
    void enter() {
        const std::lock_guard guard(_mutex);
        ++_entered;
    }

    /// Whether there was anybody to leave.
    bool leave() {
        std::vector<Notification> due;
        {
            const std::lock_guard guard(_mutex);
            if (_entered == 0)
                return false;
            if (--_entered > 0)
                return true;
            due.swap(_notifications);
            ++_timesEmptied;
            _emptied.notify_all();
        }
        for (Notification &notification : due)
            dispatch_async(notification.queue, std::move(notification.block));
        return true;
    }

    void notify(const dispatch_queue_t &queue, dispatch_block_t block) {
        {
            const std::lock_guard guard(_mutex);
            if (_entered > 0) {
                _notifications.push_back({queue, std::move(block)});
                return;
            }
        }
        dispatch_async(queue, std::move(block));
    }

    bool wait(dispatch_time_t until) {
        std::unique_lock lock(_mutex);
        // A group that was entered anew before the waiting thread woke up has been empty all the same.
        return dispatch::waitUntil(_emptied, lock, until, [this, before = _timesEmptied] {
            return _entered == 0 || _timesEmptied != before;
        });
    }

private:
    struct Notification {
        dispatch_queue_t queue;
        dispatch_block_t block;
    };

    std::mutex _mutex;
    std::condition_variable _emptied;
    std::size_t _entered = 0;
    std::uint64_t _timesEmptied = 0;
    std::vector<Notification> _notifications;
};

dispatch_group_t dispatch_group_create() { return std::make_shared<DispatchGroup>(); }

void dispatch_group_enter(const dispatch_group_t &group) {
    QVParameterAssert(group, "group != nil");
    if (group)
        group->enter();
}

void dispatch_group_leave(const dispatch_group_t &group) {
    QVParameterAssert(group, "group != nil");
    // The one that is woken may be the last that holds it.
    const dispatch_group_t kept = group;
    const bool hadEntered = !kept || kept->leave();
    QVAssert(hadEntered, u"dispatch_group_leave called without dispatch_group_enter");
}

void dispatch_group_async(const dispatch_group_t &group, const dispatch_queue_t &queue,
                          dispatch_block_t block) {
    QVParameterAssert(group, "group != nil");
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block != nullptr, "block != nil");
    if (!group || !queue || !block)
        return;
    group->enter();
    dispatch_async(queue, [group, block = std::move(block)]() mutable {
        block();
        // Whoever waits for the group may count on it that the block holds nothing any more.
        block = nullptr;
        group->leave();
    });
}

void dispatch_group_notify(const dispatch_group_t &group, const dispatch_queue_t &queue,
                           dispatch_block_t block) {
    QVParameterAssert(group, "group != nil");
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block != nullptr, "block != nil");
    if (group && queue && block)
        group->notify(queue, std::move(block));
}

bool dispatch_group_wait(const dispatch_group_t &group, dispatch_time_t until) {
    QVParameterAssert(group, "group != nil");
    const dispatch_group_t kept = group;
    return kept && kept->wait(until);
}

} // namespace quorvane
