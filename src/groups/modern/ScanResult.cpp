// Scan Result: how complete each group of this scan is, how long it took, and what is missing.
#include "groups/modern/Collectors.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kGroup = 1;
constexpr uint32_t kRows = 2;
constexpr uint32_t kMilliseconds = 3;
constexpr uint32_t kStatus = 4;
constexpr uint32_t kReason = 5;

}  // namespace

void collectScanResult(ModernScan& scan, ModernTable& table) {
  for (const GroupResult& result : scan.results()) {
    table.addRow()
        .textAlways(kGroup, result.group)
        .ulong(kRows, result.rows)
        .ulong(kMilliseconds, static_cast<uint64_t>(result.time.count()))
        .text(kStatus, std::string(outcomeWord(result.outcome.status())))
        .text(kReason, result.outcome.reason());
  }
}

}  // namespace quenlor
