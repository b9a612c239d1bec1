#include "groups/modern/ModernGroup.h"

#include <chrono>
#include <utility>

namespace quenlor {
namespace {

constexpr uint32_t kVersion = 1;

using Clock = std::chrono::steady_clock;

Milliseconds since(Clock::time_point start) {
  return std::chrono::duration_cast<Milliseconds>(Clock::now() - start);
}

}  // namespace

ModernGroup::ModernGroup(const velGroupDef& group, std::shared_ptr<ModernScan> scan,
                         ModernCollector collect)
    : VelGroup(group.id, kVersion), m_group(group), m_scan(std::move(scan)), m_collect(collect) {}

VelTable* ModernGroup::getTable() {
  const auto start = Clock::now();
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
