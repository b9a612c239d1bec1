#include "groups/system/UnixSystemParamsGroup.h"

#include <array>
#include <cstring>
#include <ctime>
#include <string>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/UnixSystemParamsGroup.cpp";
constexpr const char* kRunLevelCommand = "/sbin/runlevel";
constexpr size_t kRunLevelLineSize = 79;
constexpr size_t kRunLevelPosition = 2;  // "N 5": previous level, blank, level

// Attribute ids.
constexpr uint32_t kBootTime = 1;
constexpr uint32_t kRunLevel = 2;
constexpr uint32_t kHostname = 3;
constexpr uint32_t kComputerAlias = 4;

// The character's distance from '0', whatever the character: "unknown" gives 59. 0 without one.
uint32_t parseRunLevel(const char* line) {
  if (std::strlen(line) <= kRunLevelPosition) return 0;
  return static_cast<uint32_t>(line[kRunLevelPosition] - '0');
}

uint32_t readRunLevel(CcLogWrapper* log, const TraceFunction& at) {
  const CommandStream command(kRunLevelCommand);
  LineReader reader(command.get(), kRunLevelLineSize);
  if (!reader.next()) return 0;
  log->traceMAX(at(), "hardware %s %s", "Linux runlevel=", reader.line());
  return parseRunLevel(reader.line());
}

std::string readNodeName(CcLogWrapper* log, const TraceFunction& at) {
  struct utsname name = {};
  host().uname(&name);
  log->traceMAX(at(), "hardware %s %s", "uname nodename=", name.nodename);
  return name.nodename;
}

void traceRecord(CcLogWrapper* log, const TraceFunction& at, const struct utmp& record) {
  if (!log->isEnabled(TraceLevel::kMax)) return;
  const std::string line(record.ut_line, strnlen(record.ut_line, sizeof record.ut_line));
  log->traceMAX(at(), "hardware %s %s", "RUNLEVEL line=", line.c_str());
  const time_t seconds = record.ut_tv.tv_sec;
  struct tm broken = {};
  std::array<char, 64> text{};
  if (localtime_r(&seconds, &broken) != nullptr) asctime_r(&broken, text.data());
  log->traceMAX(at(), "hardware %s %ld %s", "RUNLEVEL uptime=", static_cast<long>(seconds),
                text.data());
}

time_t readBootTime(CcLogWrapper* log, const TraceFunction& at) {
  struct utmp record = {};
  if (!host().findUtmp(RUN_LVL, &record)) {
    log->traceMIN(at(), "hardware Failure getting the boot time");
    return 0;
  }
  traceRecord(log, at, record);
  return record.ut_tv.tv_sec;
}

}  // namespace

VelTable* UnixSystemParamsGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "UnixSystemParamsGroup");

  const uint32_t runLevel = readRunLevel(log, at);
  const std::string nodeName = readNodeName(log, at);
  const time_t bootTime = readBootTime(log, at);

  auto row = std::make_unique<VelTableRow>();
  addTime(*row, kBootTime, bootTime);
  addUlong(*row, kRunLevel, runLevel);
  addText(*row, kHostname, nodeName);
  addText(*row, kComputerAlias, nodeName);

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "UnixSystemParamsGroup");
  return table.release();
}

}  // namespace quenlor
