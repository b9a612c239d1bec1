// What groups of a modern scan take on this machine, each together with the readers that it needs.
// Firmware and processors are meant to take 1.5 ms at most, processors with their caches 1 ms;
// drives, partitions and volumes 1.2 ms; interfaces, addresses and PCI functions 1 ms without the
// id list, whose one pass takes 2 ms.
#include <benchmark/benchmark.h>

#include <cerrno>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "groups/modern/Collectors.h"
#include "host/SystemHost.h"

namespace quenlor {
namespace {

using Group = std::pair<uint32_t, ModernCollector>;

void collect(benchmark::State& state, std::initializer_list<Group> groups) {
  size_t rows = 0;
  for (auto _ : state) {
    ScanSettings settings;
    settings.sources = Sources::kModern;
    ModernScan scan(settings);
    for (const auto& [id, collector] : groups) {
      ModernTable table(*findGroup(MODERN_GROUPS_DEF, id));
      collector(scan, table);
      rows += table.build()->getNumRows();
    }
  }
  state.counters["rows"] =
      benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kAvgIterations);
}

void BM_Firmware(benchmark::State& state) {
  collect(state, {{group::kComponentId, collectComponentId},
                  {group::kSmbios, collectSmbios},
                  {group::kMemory, collectMemory},
                  {group::kMemoryModules, collectMemoryModules},
                  {group::kMachine, collectMachine},
                  {group::kSlot, collectSlot},
                  {group::kPowerSupply, collectPowerSupply}});
}

void BM_Processors(benchmark::State& state) {
  collect(state,
          {{group::kPhysicalProcessor, collectPhysicalProcessor}, {group::kCache, collectCache}});
}

void BM_ProcessorsWithNames(benchmark::State& state) {
  collect(state, {{group::kProcessor, collectProcessor},
                  {group::kPhysicalProcessor, collectPhysicalProcessor},
                  {group::kCache, collectCache},
                  {group::kLpar, collectLpar}});
}

void BM_Storage(benchmark::State& state) {
  collect(state, {{group::kStorage, collectStorage},
                  {group::kPartition, collectPartition},
                  {group::kVolume, collectVolume}});
}

// This machine without its list of PCI ids, from which adapters and functions have their names.
class UnnamedHost : public SystemHost {
 public:
  int open(const char* path, int flags, mode_t mode) override {
    if (std::string_view(path).ends_with("/pci.ids")) {
      errno = ENOENT;
      return -1;
    }
    return SystemHost::open(path, flags, mode);
  }
};

void BM_Network(benchmark::State& state) {
  UnnamedHost machine;
  const ScopedHost scope(machine);
  collect(state, {{group::kNetworkAdapter, collectNetworkAdapters},
                  {group::kIpAddress, collectIpAddresses}});
}

void BM_NetworkAndPci(benchmark::State& state) {
  UnnamedHost machine;
  const ScopedHost scope(machine);
  collect(state, {{group::kNetworkAdapter, collectNetworkAdapters},
                  {group::kIpAddress, collectIpAddresses},
                  {group::kPciDevice, collectPciDevices}});
}

void BM_PciWithIdList(benchmark::State& state) {
  collect(state, {{group::kPciDevice, collectPciDevices}});
}

// The worker threads of a scan are the readers': wall time counts.
BENCHMARK(BM_Firmware)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Processors)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_ProcessorsWithNames)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Storage)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Network)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_NetworkAndPci)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_PciWithIdList)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace quenlor
