#pragma once

// What the verdict benchmark measures with. Each workload runs in a process of its own, so that
// none finds the memory, the threads and the caches of another.

#include <chrono>
#include <functional>
#include <vector>

namespace quorvance {

using Seconds = std::chrono::duration<double>;
/// What a workload hands back; what stands where is the workload's own.
using Figures = std::vector<double>;

/// Of an unsorted list; 0 for an empty one.
double quantileOf(Figures figures, double share);
double medianOf(Figures figures);

/// Figures of a workload that ran in a child process on the first so many processors. Empty when it
/// failed, be it by taking too long.
Figures inChild(int processors, const std::function<Figures()>& workload);

/// Keeps this process, and those that it starts, on the first so many processors.
void runOn(int processors);

/// Of this process: pages that no other one shares.
double privateMegabytes();
/// Of those, what has not been written to: code of libraries that only this process has loaded.
double privateCleanMegabytes();

/// Microseconds since an arbitrary moment.
double nowMicroseconds();

}  // namespace quorvance
