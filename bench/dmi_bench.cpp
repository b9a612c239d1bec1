// Decoding a firmware table of 64 KiB with today's memory devices, which must stay under 1 ms, and
// the rows of all groups that are made of it: 489 modules, ten times what a large server has.
#include <benchmark/benchmark.h>

#include <string>

#include "readers/dmi/DmiFacts.h"
#include "readers/dmi/DmiTable.h"
#include "tests/firmware/Firmware.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FirmwareGroups.h"

namespace quenlor {
namespace {

constexpr size_t kTableSize = 64 << 10;

test::Structure memoryDevice(int number) {
  test::Structure out(17);
  const std::string text = std::to_string(1000 + number);
  out.word(0).word(0xFFFE).word(80).word(64).word(0x7FFF).byte(9).byte(0).text("DIMM " + text);
  out.text("BANK").byte(0x22).word(0x80).word(4800).text("Maker").text("S" + text).text("Tag");
  out.text("Part123456").byte(2).dword(65536).word(4800).word(1100).word(1100).word(1100).byte(3);
  return out.raw(std::string(0x5C - 0x29, '\0'));
}

std::string fullTable() {
  std::string bytes = test::Structure(16).raw(std::string(19, '\3')).encode(0);
  for (int i = 0; bytes.size() < kTableSize; ++i) bytes += memoryDevice(i).encode(1);
  return bytes;
}

void BM_DecodeDmi(benchmark::State& state) {
  const std::string table = fullTable();
  const DmiEntryPoint entryPoint{.version = {3, 7},
                                 .tableAddress = 0,
                                 .tableLength = static_cast<uint32_t>(table.size()),
                                 .structureCount = {},
                                 .endsAtEndStructure = true};
  for (auto _ : state) {
    const DmiTable decoded = decodeDmiTable(table, entryPoint);
    benchmark::DoNotOptimize(dmiMemoryFacts(decoded).installedMiB);
  }
  state.counters["table_bytes"] = static_cast<double>(table.size());
}
BENCHMARK(BM_DecodeDmi)->Unit(benchmark::kMicrosecond);

// Entry point "_SM3_" of SMBIOS 3.7 for a table of so many bytes at address 0; DSP0134 5.2.2.
std::string entryPoint(size_t tableSize) {
  std::string bytes("_SM3_\0\x18\3\7\0\1\0", 12);
  for (int shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>(tableSize >> shift & 0xFF);
  }
  bytes += std::string(8, '\0');
  uint8_t sum = 0;
  for (const char byte : bytes) sum = static_cast<uint8_t>(sum + static_cast<uint8_t>(byte));
  bytes[5] = static_cast<char>(-sum);
  return bytes;
}

void BM_ReportDmi(benchmark::State& state) {
  test::FakeHost machine;
  machine.files["/sys/firmware/dmi/tables/DMI"] = fullTable();
  machine.files["/sys/firmware/dmi/tables/smbios_entry_point"] = entryPoint(fullTable().size());
  size_t rows = 0;
  for (auto _ : state) rows = test::collectFirmwareGroups();
  state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(BM_ReportDmi)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace quenlor
