#include "groups/processor/CpuMeterGroup.h"

#include "log/CcLogWrapper.h"
#include "readers/system/UnixCpuMeter.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/CpuMeterGroup.cpp";

// Attribute ids.
constexpr uint32_t kIdleTime = 1;
constexpr uint32_t kUserTime = 2;
constexpr uint32_t kWaitTime = 3;
constexpr uint32_t kSysTime = 4;
constexpr uint32_t kSystemUpTime = 5;

void addWhenKnown(VelTableRow& row, uint32_t id, long long value) {
  if (value != -1) addLongLong(row, id, value);
}

}  // namespace

VelTable* CpuMeterGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "CpuMeterGroup");

  UnixCpuMeter meter;
  meter.init();
  meter.refresh();
  log->traceMAX(at(), "hardware IdleTime= %lld, UserTime=%lld, WaitTime=%lld ", meter.getIdleTime(),
                meter.getUserTime(), meter.getWaitTime());
  log->traceMAX(at(), "hardware SysTime=%lld", meter.getSysTime());
  // This record has always shown the system time; tools that read traces rely on it.
  log->traceMAX(at(), "hardware systemUpTime=%lld", meter.getSysTime());

  auto row = std::make_unique<VelTableRow>();
  addWhenKnown(*row, kIdleTime, meter.getIdleTime());
  addWhenKnown(*row, kUserTime, meter.getUserTime());
  addWhenKnown(*row, kWaitTime, meter.getWaitTime());
  addWhenKnown(*row, kSysTime, meter.getSysTime());
  addWhenKnown(*row, kSystemUpTime, meter.getSystemUpTime());

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "CpuMeterGroup");
  return table.release();
}

}  // namespace quenlor
