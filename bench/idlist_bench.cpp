// One pass over a list of PCI ids as long as those that distributions carry. It must stay under 2
// ms.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "readers/idlist/IdList.h"

namespace quenlor {
namespace {

constexpr uint32_t kVendors = 2400;
constexpr uint32_t kDevicesPerVendor = 16;
constexpr size_t kPiece = 16 << 10;

std::string longList() {
  std::string list;
  char line[128];
  for (uint32_t vendor = 0; vendor < kVendors; ++vendor) {
    std::snprintf(line, sizeof line, "%04x  Maker of many devices %u\n", vendor * 27, vendor);
    list += line;
    for (uint32_t device = 0; device < kDevicesPerVendor; ++device) {
      std::snprintf(line, sizeof line, "\t%04x  A device of the maker %u\n", device * 257, device);
      list += line;
    }
  }
  return list;
}

void BM_IdListPass(benchmark::State& state) {
  const std::string list = longList();
  for (auto _ : state) {
    IdNames names;
    for (uint16_t wanted = 0; wanted < 40; ++wanted) {
      names.wantDevice(static_cast<uint16_t>(wanted * 27 * 50),
                       static_cast<uint16_t>(wanted * 257));
    }
    const std::string_view whole = list;
    for (size_t at = 0; at < whole.size(); at += kPiece) names.take(whole.substr(at, kPiece));
    names.endList();
    benchmark::DoNotOptimize(names.vendor(0));
  }
  state.counters["list_bytes"] = static_cast<double>(list.size());
}
BENCHMARK(BM_IdListPass)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlor
