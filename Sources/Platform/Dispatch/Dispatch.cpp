#include "Platform/Dispatch/Dispatch.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NSAssertionHandler.h"

#include <array>

namespace quorvane {

using dispatch::TaskQueue;
using dispatch::TaskQueueKind;

dispatch_queue_t dispatch_queue_create(std::string label, dispatch_queue_attr_t attributes) {
    const auto kind =
        attributes == DISPATCH_QUEUE_CONCURRENT ? TaskQueueKind::concurrent : TaskQueueKind::serial;
    return std::make_shared<TaskQueue>(std::move(label), kind, QOS_CLASS_DEFAULT);
}

dispatch_queue_t dispatch_get_global_queue(dispatch_qos_class_t qualityOfService) {
    const auto make = [](const char *label, dispatch_qos_class_t quality) {
        return std::make_shared<TaskQueue>(label, TaskQueueKind::global, quality);
    };
    // Never destroyed: tasks may be submitted till the process has ended.
    static const auto &queues = *new std::array<dispatch_queue_t, 4>{
        make("global.background", QOS_CLASS_BACKGROUND), make("global.utility", QOS_CLASS_UTILITY),
        make("global.default", QOS_CLASS_DEFAULT), make("global.user-initiated", QOS_CLASS_USER_INITIATED)};
    return queues[qualityOfService];
}

void dispatch_async(const dispatch_queue_t &queue, dispatch_block_t block) {
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block != nullptr, "block != nil");
    if (queue && block)
        queue->submit(std::move(block), false);
}

void dispatch_barrier_async(const dispatch_queue_t &queue, dispatch_block_t block) {
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block != nullptr, "block != nil");
    if (queue && block)
        queue->submit(std::move(block), true);
}

void dispatch_sync(const dispatch_queue_t &queue, QVBlock<void()> block) {
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block, "block != nil");
    if (!queue || !block)
        return;
    // The block may let go of the handle that it was submitted through.
    const dispatch_queue_t kept = queue;
    kept->submitAndWait(block, false);
}

void dispatch_barrier_sync(const dispatch_queue_t &queue, QVBlock<void()> block) {
    QVParameterAssert(queue, "queue != nil");
    QVParameterAssert(block, "block != nil");
    if (!queue || !block)
        return;
    const dispatch_queue_t kept = queue;
    kept->submitAndWait(block, true);
}

void dispatch_queue_set_specific(const dispatch_queue_t &queue, const void *key, void *value) {
    QVParameterAssert(queue, "queue != nil");
    if (queue)
        queue->setSpecific(key, value);
}

void *dispatch_get_specific(const void *key) { return dispatch::QueueFrame::specific(key); }

} // namespace quorvane
