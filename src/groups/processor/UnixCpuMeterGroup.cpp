#include "groups/processor/UnixCpuMeterGroup.h"

#include "log/CcLogWrapper.h"
#include "readers/system/UnixCpuMeter.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/UnixCpuMeterGroup.cpp";

// Attribute ids.
constexpr uint32_t kLoadAvg1 = 1;
constexpr uint32_t kLoadAvg5 = 2;
constexpr uint32_t kLoadAvg15 = 3;

constexpr float kUnknown = -1.0F;

// Only exactly -1 means "not known"; a NaN is a value and is reported.
void addWhenKnown(VelTableRow& row, uint32_t id, float value) {
  if (value != kUnknown) addFloat(row, id, value);
}

}  // namespace

VelTable* UnixCpuMeterGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "UnixCpuMeterGroup");

  UnixCpuMeter meter;
  meter.init();
  meter.refresh();
  log->traceMAX(at(), "hardware loadAvg1=%f, loadAvg5=%f, loadAvg15=%f",
                static_cast<double>(meter.getLoadAvg1()), static_cast<double>(meter.getLoadAvg5()),
                static_cast<double>(meter.getLoadAvg15()));

  auto row = std::make_unique<VelTableRow>();
  addWhenKnown(*row, kLoadAvg1, meter.getLoadAvg1());
  addWhenKnown(*row, kLoadAvg5, meter.getLoadAvg5());
  addWhenKnown(*row, kLoadAvg15, meter.getLoadAvg15());

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "UnixCpuMeterGroup");
  return table.release();
}

}  // namespace quenlor
