#include "groups/system/RegionalGroup.h"

#include <clocale>
#include <cstdlib>

#include "host/Host.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/RegionalGroup.cpp";

// Attribute ids.
constexpr uint32_t kLocal = 1;
constexpr uint32_t kTimeZoneSeconds = 2;
constexpr uint32_t kTimeZonePlusMinus = 3;
constexpr uint32_t kDaylight = 4;
constexpr uint32_t kTimeZoneName = 5;
constexpr uint32_t kTimeZoneDaylightName = 6;

// Values of REGIONAL_TZ_PLUS_MINUS and REGIONAL_TZ_DAYLIGHT.
constexpr uint32_t kPlus = 1;
constexpr uint32_t kMinus = 2;
constexpr uint32_t kTrue = 1;
constexpr uint32_t kFalse = 2;

const char* characterLocale(CcLogWrapper* log, const TraceFunction& at) {
  const char* locale = host().setlocale(LC_CTYPE, "");
  if (locale == nullptr) {
    log->traceMIN(at(), "hardware setlocale returned NULL");
    locale = "";
  }
  log->traceMAX(at(), "hardware %s %s", "LC_CTYPE locale=", locale);
  return locale;
}

}  // namespace

VelTable* RegionalGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "RegionalGroup");

  const TimeZone zone = host().timeZone();
  const std::string locale = characterLocale(log, at);
  const auto seconds = saturateToUlong(static_cast<uint64_t>(std::labs(zone.secondsWest)));
  const bool west = zone.secondsWest > 0;
  log->traceMAX(at(), "hardware %s %u", "Timezone seconds=", seconds);
  log->traceMAX(at(), "hardware %s %c", "Timezone plus/minus=", west ? '-' : '+');
  log->traceMAX(at(), "hardware %s %d", "Timezone daylight=", zone.daylight ? 1 : 0);
  log->traceMAX(at(), "hardware %s %s", "Timezone tzname=", zone.name.c_str());
  log->traceMAX(at(), "hardware %s %s", "Timezone tzname daylight=", zone.daylightName.c_str());

  auto row = std::make_unique<VelTableRow>();
  addText(*row, kLocal, locale);
  addUlong(*row, kTimeZoneSeconds, seconds);
  addUlong(*row, kTimeZonePlusMinus, west ? kMinus : kPlus);
  addUlong(*row, kDaylight, zone.daylight ? kTrue : kFalse);
  addText(*row, kTimeZoneName, zone.name);
  addText(*row, kTimeZoneDaylightName, zone.daylightName);

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "RegionalGroup");
  return table.release();
}

}  // namespace quenlor
