#include "groups/modern/ModernGroup.h"

#include <chrono>
#include <ctime>
#include <utility>

#include "host/Host.h"

namespace quenlor {
namespace {

constexpr uint32_t kVersion = 1;

// By the machine's clock: a recorded machine's stands still, and so do its documents.
std::chrono::nanoseconds now() {
  struct timespec time {};
  host().clockGettime(CLOCK_MONOTONIC, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

Milliseconds since(std::chrono::nanoseconds start) {
  return std::chrono::duration_cast<Milliseconds>(now() - start);
}

}  // namespace

ModernGroup::ModernGroup(const velGroupDef& group, std::shared_ptr<ModernScan> scan,
                         ModernCollector collect)
    : VelGroup(group.id, kVersion), m_group(group), m_scan(std::move(scan)), m_collect(collect) {}

// What all the others came to is always told: it is there already, and waits for nothing.
VelTable* ModernGroup::collectResults() {
  ModernTable table(m_group);
  m_collect(*m_scan, table);
  return table.build().release();
}

VelTable* ModernGroup::getTable() {
  if (m_group.id == group::kScanResult) return collectResults();
  const auto start = now();
  auto table = std::make_shared<ModernTable>(m_group);
  const auto result =
      m_scan->runGroup([scan = m_scan, table, collect = m_collect] { collect(*scan, *table); });
  GroupResult report{m_group.name, 0, since(start), {}};
  if (result.end != BoundedWorker::End::kDone) {
    noteEnd(report.outcome, result, "group");
    m_scan->addResult(std::move(report));
    return nullptr;
  }
  report.rows = table->rowCount();
  report.outcome = table->outcome();
  m_scan->addResult(std::move(report));
  return table->build().release();
}

}  // namespace quenlor
