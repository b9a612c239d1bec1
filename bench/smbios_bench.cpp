// Walking the largest structure table and reporting it: 64 KiB with 1000 memory devices. It must
// stay under 2 ms and 2 MiB.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <memory>
#include <string>

#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Firmware.h"

namespace quenlor {
namespace {

constexpr int kDevices = 1000;
constexpr size_t kLargestTable = 65535;

test::FirmwareTable fullTable() {
  test::FirmwareTable table({2, 4});
  table.add(test::System{.product = "Product", .serial = "S1"});
  for (int i = 0; i < kDevices; ++i) {
    const std::string number = std::to_string(1000 + i);
    table.add(test::MemoryDevice{.size = 1024,
                                 .locator = "DIMM" + number,
                                 .bank = "BANK",
                                 .manufacturer = "Maker",
                                 .serial = "S" + number,
                                 .partNumber = "Part123456"});
  }
  return table;
}

template <class Group>
std::unique_ptr<VelTable> collect() {
  Group group;
  return std::unique_ptr<VelTable>(group.getTable());
}

size_t bytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Bytes that the parsed table and its reports hold at the end.
size_t parseAndReport(const test::FirmwareTable& structures) {
  const size_t before = bytesInUse();
  const std::string& bytes = structures.bytes();
  SMBIOSTable table(reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()), 0x24, structures.count());
  table.parseData();
  globalSMBIOSTable = &table;
  const auto smbios = collect<SMBIOSGroup>();
  const auto modules = collect<MemoryModulesGroup>();
  globalSMBIOSTable = nullptr;
  benchmark::DoNotOptimize(modules->getNumRows());
  return bytesInUse() - before;
}

void BM_ParseAndReport(benchmark::State& state) {
  const test::FirmwareTable table = fullTable();
  if (table.bytes().size() > kLargestTable) state.SkipWithError("table larger than 64 KiB");
  size_t bytes = 0;
  for (auto _ : state) bytes = parseAndReport(table);
  state.counters["table_bytes"] = static_cast<double>(table.bytes().size());
  state.counters["memory_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_ParseAndReport)->Unit(benchmark::kMicrosecond);

void BM_Parse(benchmark::State& state) {
  const test::FirmwareTable structures = fullTable();
  const std::string& bytes = structures.bytes();
  for (auto _ : state) {
    SMBIOSTable table(reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<int>(bytes.size()), 0x24, structures.count());
    table.parseData();
    benchmark::DoNotOptimize(table.getTable17Total());
  }
}
BENCHMARK(BM_Parse)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlor
