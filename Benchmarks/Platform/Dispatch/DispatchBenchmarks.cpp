// What access through a queue costs: each query of a parse pays for one synchronous block, each edit for one
// barrier, each result for one trip to a worker.
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/ReadWriteLock.h"

#include <benchmark/benchmark.h>

#include <future>

using namespace quorvane;

namespace {

/// The lower bound of a read: a lock that many readers can hold.
void readThroughALock(benchmark::State &state) {
    ReadWriteLock lock;
    int value = 0;
    for (auto _ : state) {
        const ReadGuard guard(lock);
        benchmark::DoNotOptimize(++value);
    }
}
BENCHMARK(readThroughALock);

void readThroughAQueue(benchmark::State &state) {
    const auto queue = dispatch_queue_create("benchmark", DISPATCH_QUEUE_CONCURRENT);
    int value = 0;
    for (auto _ : state)
        dispatch_sync(queue, [&] { benchmark::DoNotOptimize(++value); });
}
BENCHMARK(readThroughAQueue);

void writeThroughAQueue(benchmark::State &state) {
    const auto queue = dispatch_queue_create("benchmark", DISPATCH_QUEUE_CONCURRENT);
    int value = 0;
    for (auto _ : state)
        dispatch_barrier_sync(queue, [&] { benchmark::DoNotOptimize(++value); });
}
BENCHMARK(writeThroughAQueue);

/// What every access asks first: does this thread have it already?
void askForAMark(benchmark::State &state) {
    const auto queue = dispatch_queue_create("benchmark", DISPATCH_QUEUE_CONCURRENT);
    dispatch_queue_set_specific(queue, &state, queue.get());
    dispatch_sync(queue, [&] {
        for (auto _ : state)
            benchmark::DoNotOptimize(dispatch_get_specific(&state));
    });
}
BENCHMARK(askForAMark);

/// The peer of a trip to a worker: a thread of one's own.
void goToANewThreadAndBack(benchmark::State &state) {
    for (auto _ : state)
        std::async(std::launch::async, [] {}).wait();
}
BENCHMARK(goToANewThreadAndBack)->UseRealTime();

void goToAWorkerAndBack(benchmark::State &state) {
    const auto queue = dispatch_queue_create("benchmark", DISPATCH_QUEUE_SERIAL);
    const auto semaphore = dispatch_semaphore_create(0);
    for (auto _ : state) {
        dispatch_async(queue, [&] { dispatch_semaphore_signal(semaphore); });
        dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
    }
}
BENCHMARK(goToAWorkerAndBack)->UseRealTime();

void submitAThousandTasks(benchmark::State &state) {
    const auto queue = dispatch_queue_create("benchmark", DISPATCH_QUEUE_SERIAL);
    int value = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i)
            dispatch_async(queue, [&] { ++value; });
        dispatch_sync(queue, [] {});
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(submitAThousandTasks)->UseRealTime();

} // namespace
