// Regional of the modern sources: the environment's locale and zone as in the classic ones, and the
// system's own beside them.
#include <clocale>
#include <cstdlib>

#include "groups/modern/Collectors.h"
#include "host/Host.h"
#include "readers/system/ZoneAndLocale.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kLocal = 1;
constexpr uint32_t kTimeZoneSeconds = 2;
constexpr uint32_t kTimeZonePlusMinus = 3;
constexpr uint32_t kDaylight = 4;
constexpr uint32_t kTimeZoneName = 5;
constexpr uint32_t kTimeZoneDaylightName = 6;
constexpr uint32_t kZone = 101;
constexpr uint32_t kSystemLocale = 102;

// Values of REGIONAL_TZ_PLUS_MINUS and REGIONAL_TZ_DAYLIGHT.
constexpr uint32_t kPlus = 1;
constexpr uint32_t kMinus = 2;
constexpr uint32_t kTrue = 1;
constexpr uint32_t kFalse = 2;

}  // namespace

void collectRegional(ModernScan& scan, ModernTable& table) {
  const TimeZone zone = host().timeZone();
  const SystemLocale* locale = scan.systemLocale(table.outcome());
  table
      .addRow()
      // Asked only: setting it would change the locale under the feet of other workers.
      .localeText(kLocal, host().setlocale(LC_CTYPE, nullptr))
      .ulong(kTimeZoneSeconds, static_cast<uint64_t>(std::labs(zone.secondsWest)))
      .ulong(kTimeZonePlusMinus, zone.secondsWest > 0 ? kMinus : kPlus)
      .ulong(kDaylight, zone.daylight ? kTrue : kFalse)
      .localeText(kTimeZoneName, zone.name.c_str())
      .localeText(kTimeZoneDaylightName, zone.daylightName.c_str())
      .text(kZone, readZone())
      .text(kSystemLocale, locale == nullptr ? std::string() : locale->lang);
}

}  // namespace quenlor
