// Memory: what the kernel has, and what the firmware says of the slots.
#include "groups/modern/Collectors.h"
#include "host/Host.h"
#include "readers/dmi/DmiFacts.h"
#include "readers/system/MemoryAmounts.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kTotalPhysical = 1;
constexpr uint32_t kFreePhysical = 2;
constexpr uint32_t kTotalVirtual = 3;
constexpr uint32_t kFreeVirtual = 4;
constexpr uint32_t kTotalPage = 5;
constexpr uint32_t kFreePage = 6;
constexpr uint32_t kPageSize = 7;
constexpr uint32_t kMaxMemoryMB = 8;
constexpr uint32_t kNumSlotsSupported = 9;
constexpr uint32_t kAvailable = 101;
constexpr uint32_t kInstalledMB = 102;
constexpr uint32_t kErrorCorrection = 103;
constexpr uint32_t kTotalPhysicalBytes = 104;
constexpr uint32_t kSwapTotalKB = 105;

constexpr uint64_t kBytesPerKiB = 1024;

void addAmounts(ModernRow& row, const MemoryAmounts& amounts) {
  const uint64_t total = amounts.total.value_or(0);
  const uint64_t free = amounts.free.value_or(0);
  const auto pageSize = static_cast<uint64_t>(host().getpagesize());
  const uint64_t divisor = pageSize == 0 ? 1 : pageSize;
  row.ulong(kTotalPhysical, total)
      .ulong(kFreePhysical, free)
      .ulong(kTotalVirtual, total + amounts.swapTotal.value_or(0))
      .ulong(kFreeVirtual, free + amounts.swapFree.value_or(0))
      // Kilobytes divided by a page size in bytes: readers of the inventory expect these figures.
      .ulong(kTotalPage, total / divisor)
      .ulong(kFreePage, free / divisor)
      .ulong(kPageSize, pageSize)
      .longlong(kAvailable, amounts.available)
      .longlong(kSwapTotalKB, amounts.swapTotal);
  if (amounts.total) row.longlong(kTotalPhysicalBytes, *amounts.total * kBytesPerKiB);
}

void addSlots(ModernRow& row, const DmiMemoryFacts& facts) {
  row.ulong(kInstalledMB, facts.installedMiB);
  row.text(kErrorCorrection, std::string(facts.errorCorrection));
  if (facts.slots == 0) return;
  row.ulong(kNumSlotsSupported, facts.slots);
  if (facts.maxMiB != 0) row.ulong(kMaxMemoryMB, facts.maxMiB);
}

}  // namespace

void collectMemory(ModernScan& scan, ModernTable& table) {
  const MemoryAmounts amounts = readMemoryAmounts();
  table.outcome().merge(amounts.outcome);
  ModernRow& row = table.addRow();
  addAmounts(row, amounts);
  const DmiTable* dmi = scan.dmi(table.outcome());
  if (dmi == nullptr) return;
  table.outcome().mergePart(dmi->structureOutcome);
  addSlots(row, dmiMemoryFacts(*dmi));
}

}  // namespace quenlor
