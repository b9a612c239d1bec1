// The kernel's cache directories, and what follows from all caches of a package or a machine.
#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "readers/cpuid/CpuTopology.h"
#include "readers/topology/PackageCpuid.h"
#include "readers/topology/SysfsCpus.h"

namespace quenlor {
namespace {

// No processor has more caches around a thread; a kernel that always has one more is not followed.
constexpr uint32_t kMostIndexes = 16;

struct TypeName {
  const char* name;
  CacheType type;
};
constexpr TypeName TYPES[] = {{"Data", CacheType::kData},
                              {"Instruction", CacheType::kInstruction},
                              {"Unified", CacheType::kUnified}};

std::string indexName(uint32_t index, const char* file) {
  return "cache/index" + std::to_string(index) + "/" + file;
}

std::optional<CacheType> typeNamed(const std::string& text) {
  for (const TypeName& type : TYPES) {
    if (text == type.name) return type.type;
  }
  return std::nullopt;
}

// What all caches behind one index of one kind of core have in common.
struct CacheShape {
  uint32_t level = 0;
  CacheType type = CacheType::kUnified;
  std::optional<uint32_t> ways, lineBytes;
};

std::optional<CacheShape> readShape(uint32_t cpu, uint32_t index) {
  const auto level = cpuNumberAttribute(cpu, indexName(index, "level"));
  if (!level) return std::nullopt;
  const auto type = typeNamed(cpuAttribute(cpu, indexName(index, "type")).value_or(""));
  if (!type) return std::nullopt;
  CacheShape shape{*level, *type,
                   cpuNumberAttribute(cpu, indexName(index, "ways_of_associativity")),
                   cpuNumberAttribute(cpu, indexName(index, "coherency_line_size"))};
  if (shape.ways == 0u) shape.ways.reset();  // fully associative
  return shape;
}

// Reads a package's caches: sizes of every cache, since dies of one package differ in them, the
// shape once per kind of core.
class CacheReader {
 public:
  explicit CacheReader(const CpuPackage& package) : m_package(package) {}

  std::vector<CpuCache> read() {
    for (const CpuCore& core : m_package.cores) {
      // Some hypervisors give each thread a first level of its own.
      for (const uint32_t cpu : core.cpus) readAround(cpu, core);
    }
    return std::move(m_caches);
  }

 private:
  void readAround(uint32_t cpu, const CpuCore& core) {
    const std::vector<CacheShape>& shapes = shapesOf(core);
    for (uint32_t index = 0; index < shapes.size(); ++index) {
      const CacheShape& shape = shapes[index];
      const bool isKnown = m_covered.count({shape.level, shape.type, cpu}) != 0;
      if (!isKnown) readCache(cpu, core, index, shape);
    }
  }

  const std::vector<CacheShape>& shapesOf(const CpuCore& core) {
    const auto [found, isNew] = m_shapes.try_emplace(core.kind);
    for (uint32_t index = 0; isNew && index < kMostIndexes; ++index) {
      const std::optional<CacheShape> shape = readShape(core.firstCpu, index);
      if (!shape) break;
      found->second.push_back(*shape);
    }
    return found->second;
  }

  void readCache(uint32_t cpu, const CpuCore& core, uint32_t index, const CacheShape& shape) {
    const auto size = cpuAttribute(cpu, indexName(index, "size"));
    const auto kiloBytes = cacheSizeKiloBytes(size.value_or(""));
    if (!kiloBytes) return;
    const auto list = cpuListAttribute(cpu, indexName(index, "shared_cpu_list"));
    const CpuList& shared = list ? *list : core.cpus;
    for (const uint32_t other : shared) m_covered.insert({shape.level, shape.type, other});
    m_caches.push_back({shape.level, shape.type, *kiloBytes, shape.ways, shape.lineBytes,
                        static_cast<uint32_t>(list && !list->empty() ? list->size() : 1),
                        core.kind});
  }

  const CpuPackage& m_package;
  std::vector<CpuCache> m_caches;
  std::map<CoreKind, std::vector<CacheShape>> m_shapes;
  std::set<std::tuple<uint32_t, CacheType, uint32_t>> m_covered;  // the last is a processor
};

void keepCommon(std::optional<uint32_t>& all, std::optional<uint32_t> one) {
  if (all != one) all.reset();
}

void addToSummary(CacheSummary& summary, const CpuCache& cache) {
  if (summary.count++ == 0) {
    summary.ways = cache.ways;
    summary.lineBytes = cache.lineBytes;
    summary.sharedBy = cache.sharedBy;
  }
  keepCommon(summary.ways, cache.ways);
  keepCommon(summary.lineBytes, cache.lineBytes);
  keepCommon(summary.sharedBy, cache.sharedBy);
}

}  // namespace

std::vector<CpuCache> readSysfsCaches(const CpuPackage& package) {
  return CacheReader(package).read();
}

std::vector<CacheSummary> summarizeCaches(const CpuInventory& inventory) {
  std::map<std::tuple<uint32_t, CacheType, uint32_t>, CacheSummary> summaries;
  for (const CpuPackage& package : inventory.packages) {
    for (const CpuCache& cache : package.caches) {
      CacheSummary& summary = summaries[{cache.level, cache.type, cache.kiloBytes}];
      summary.level = cache.level;
      summary.type = cache.type;
      summary.kiloBytes = cache.kiloBytes;
      addToSummary(summary, cache);
    }
  }
  std::vector<CacheSummary> rows;
  rows.reserve(summaries.size());
  for (const auto& [key, summary] : summaries) rows.push_back(summary);
  return rows;
}

std::optional<uint32_t> sumOfCaches(const CpuPackage& package, uint32_t level, CacheType type) {
  uint64_t sum = 0;
  for (const CpuCache& cache : package.caches) {
    if (cache.level == level && cache.type == type) sum += cache.kiloBytes;
  }
  if (sum == 0) return std::nullopt;
  return static_cast<uint32_t>(std::min<uint64_t>(sum, std::numeric_limits<uint32_t>::max()));
}

std::optional<uint32_t> largestCache(const CpuPackage& package, uint32_t level) {
  uint32_t largest = 0;
  uint32_t largestOfFastCores = 0;
  for (const CpuCache& cache : package.caches) {
    if (cache.level != level || cache.type == CacheType::kInstruction) continue;
    uint32_t& size = cache.kind == CoreKind::kEfficiency ? largest : largestOfFastCores;
    size = std::max(size, cache.kiloBytes);
  }
  if (largestOfFastCores != 0) return largestOfFastCores;
  if (largest != 0) return largest;
  return cacheKiloBytesOfLeaves(package.leaves, level);
}

}  // namespace quenlor
