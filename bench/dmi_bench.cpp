// Decoding a firmware table of 64 KiB with today's memory devices. It must stay under 1 ms.
#include <benchmark/benchmark.h>

#include <string>

#include "readers/dmi/DmiFacts.h"
#include "readers/dmi/DmiTable.h"
#include "tests/firmware/Firmware.h"

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

}  // namespace
}  // namespace quenlor
