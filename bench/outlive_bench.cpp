// What it costs a scan to run in a process of its own: fork, the child's end and the parent's
// notice of it. It must stay under 1 ms.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "supervise/outlive.h"

namespace quenlor {
namespace {

using Seconds = std::chrono::duration<double>;
using Clock = std::chrono::steady_clock;

constexpr double kLongest = 1e-3;
constexpr size_t kScannersMemory = 8 << 20;  // more than the program has touched when it forks

// Seconds from before the fork until the parent knows the status. Measured in a process that ends
// with it: outliving a scan changes signals and descriptors for good.
double timeOfOne(double* shared) {
  const pid_t process = ::fork();
  if (process == 0) {
    const Clock::time_point start = Clock::now();
    const pid_t parent = ::getpid();
    outlive([] { return 0; });
    if (::getpid() == parent) *shared = Seconds(Clock::now() - start).count();
    ::_exit(0);
  }
  ::waitpid(process, nullptr, 0);
  return *shared;
}

void forkAndWait(benchmark::State& state) {
  std::vector<char> memory(kScannersMemory, 'x');
  benchmark::DoNotOptimize(memory.data());
  auto* const shared = static_cast<double*>(
      ::mmap(nullptr, sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  std::vector<double> times;
  for (auto iteration : state) {
    times.push_back(timeOfOne(shared));
    state.SetIterationTime(times.back());
  }
  ::munmap(shared, sizeof(double));
  std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
  const double median = times[times.size() / 2];
  state.counters["median_us"] = median * 1e6;
  if (median > kLongest) state.SkipWithError("slower than 1 ms");
}

BENCHMARK(forkAndWait)->UseManualTime()->Iterations(200)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlor
