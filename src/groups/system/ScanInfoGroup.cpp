#include "groups/system/ScanInfoGroup.h"

#include <algorithm>

#include "groups/system/ScannerVersion.h"
#include "host/Host.h"
#include "log/CcLogWrapper.h"
#include "tables/Render.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ScanInfoGroup.cpp";

// Attribute ids.
constexpr uint32_t kManufacturer = 1;
constexpr uint32_t kMajorVersion = 2;
constexpr uint32_t kMinorVersion = 3;
constexpr uint32_t kScanDate = 4;
constexpr uint32_t kBuild = 5;
constexpr uint32_t kUptime = 6;
constexpr uint32_t kMaintenanceVersion = 7;

// Seconds since the machine entered its run level; none when utmp has no such record, as in
// containers.
void addUptime(VelTableRow& row) {
  struct utmp record = {};
  if (!host().findUtmp(RUN_LVL, &record)) return;
  // A clock that was set back since gives no negative time.
  const time_t seconds = std::max<time_t>(0, host().time() - record.ut_tv.tv_sec);
  addUlong(row, kUptime, saturateToUlong(static_cast<uint64_t>(seconds)));
}

}  // namespace

VelTable* ScanInfoGroup::getTable() {
  struct timeval scanTime = {};
  host().gettimeofday(&scanTime);

  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "ScanInfoGroup");

  auto row = std::make_unique<VelTableRow>();
  addText(*row, kManufacturer, kScannerManufacturer);
  addUlong(*row, kMajorVersion, kScannerMajor);
  addUlong(*row, kMinorVersion, kScannerMinor);
  addUlong(*row, kMaintenanceVersion, kScannerMaintenance);
  addTime(*row, kScanDate, scanTime.tv_sec);
  addText(*row, kBuild, getBuildDate());
  addUptime(*row);

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "ScanInfoGroup");
  return table.release();
}

}  // namespace quenlor
