// CpuMeter and UnixCpuMeter of the modern sources: one reading of the kernel's counters serves
// both.
#include "groups/modern/Collectors.h"

namespace quenlor {
namespace {

// Attribute ids of CpuMeter.
constexpr uint32_t kIdleTime = 1;
constexpr uint32_t kUserTime = 2;
constexpr uint32_t kWaitTime = 3;
constexpr uint32_t kSysTime = 4;
constexpr uint32_t kSystemUpTime = 5;
constexpr uint32_t kStealTime = 101;
constexpr uint32_t kProcessors = 102;

// Attribute ids of UnixCpuMeter.
constexpr uint32_t kLoadAvg1 = 1;
constexpr uint32_t kLoadAvg5 = 2;
constexpr uint32_t kLoadAvg15 = 3;

std::optional<uint64_t> perProcessor(std::optional<uint64_t> total, uint32_t processors) {
  if (!total || processors == 0) return {};
  return *total / processors;
}

}  // namespace

void collectCpuMeter(ModernScan& scan, ModernTable& table) {
  const KernelStatistics* statistics = scan.kernelStatistics(table.outcome());
  if (statistics == nullptr) return;
  table.outcome().merge(statistics->timesOutcome);
  const ProcessorTimes& times = statistics->times;
  ModernRow& row = table.addRow();
  row.longlong(kIdleTime, perProcessor(times.idle, times.processors))
      .longlong(kUserTime, perProcessor(times.user, times.processors))
      .longlong(kWaitTime, perProcessor(times.wait, times.processors))
      .longlong(kSysTime, perProcessor(times.system, times.processors))
      .longlong(kSystemUpTime, statistics->uptime)
      .longlong(kStealTime, perProcessor(times.steal, times.processors));
  if (times.processors != 0) row.ulong(kProcessors, times.processors);
}

void collectUnixCpuMeter(ModernScan& scan, ModernTable& table) {
  const KernelStatistics* statistics = scan.kernelStatistics(table.outcome());
  if (statistics == nullptr) return;
  table.outcome().merge(statistics->loadOutcome);
  table.addRow()
      .real(kLoadAvg1, statistics->load.one)
      .real(kLoadAvg5, statistics->load.five)
      .real(kLoadAvg15, statistics->load.fifteen);
}

}  // namespace quenlor
