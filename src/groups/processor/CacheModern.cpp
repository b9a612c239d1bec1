// Cache: one row for the caches of one level, kind and size, from the kernel's cache directories.
#include "groups/modern/Collectors.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kLevel = 2;
constexpr uint32_t kKind = 3;
constexpr uint32_t kSizeKb = 4;
constexpr uint32_t kCount = 5;
constexpr uint32_t kWays = 6;
constexpr uint32_t kLineBytes = 7;
constexpr uint32_t kSharedBy = 8;

constexpr uint32_t kDeepestLevel = 4;

const char* kindWord(CacheType type) {
  switch (type) {
    case CacheType::kData:
      return "data";
    case CacheType::kInstruction:
      return "instruction";
    case CacheType::kUnified:
      return "unified";
  }
  return "";
}

void addCache(ModernTable& table, const CacheSummary& cache) {
  table.addNumberedRow()
      .ulong(kLevel, cache.level)
      .text(kKind, kindWord(cache.type))
      .ulong(kSizeKb, cache.kiloBytes)
      .ulong(kCount, cache.count)
      .ulong(kWays, cache.ways)
      .ulong(kLineBytes, cache.lineBytes)
      .ulong(kSharedBy, cache.sharedBy);
}

}  // namespace

void collectCache(ModernScan& scan, ModernTable& table) {
  const CpuInventory* cpus = scan.cpus(table.outcome());
  if (cpus == nullptr) return;
  for (const CacheSummary& cache : summarizeCaches(*cpus)) {
    if (cache.level >= 1 && cache.level <= kDeepestLevel) addCache(table, cache);
  }
  if (table.rowCount() == 0) {
    table.outcome().note(OutcomeStatus::kNoSource, "caches: the kernel tells of none");
  }
}

}  // namespace quenlor
