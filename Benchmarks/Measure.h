#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

namespace mossbit {

/// Processor time of the calling thread.
inline double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Adds median, 99.9th percentile and worst of `values` to the report, named by their unit.
inline void reportPercentiles(benchmark::State& state, std::vector<double> values,
                              const std::string& unit) {
    std::ranges::sort(values);
    state.counters["median_" + unit] = values[values.size() / 2];
    state.counters["p99.9_" + unit] = values[values.size() * 999 / 1000];
    state.counters["worst_" + unit] = values.back();
}

} // namespace mossbit
