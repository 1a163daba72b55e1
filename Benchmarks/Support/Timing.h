#pragma once

#include <benchmark/benchmark.h>

#include <time.h>

namespace quorvane::benchmarks {

/// The processor time that the calling thread has taken, in seconds. Everything that is measured with it runs
/// on one thread, and what else the machine does must not matter.
inline double threadSeconds() {
    struct timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <typename Body> double secondsOf(Body body) {
    const double start = threadSeconds();
    body();
    return threadSeconds() - start;
}

/// A quantity of each iteration, to be told by the second.
inline benchmark::Counter rateOf(double quantity) {
    return benchmark::Counter(quantity, benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace quorvane::benchmarks
