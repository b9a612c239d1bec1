// Scan Info of the modern sources: as the classic ones, but the up-time is the kernel's own clock.
#include <array>
#include <ctime>
#include <string>

#include "groups/modern/Collectors.h"
#include "groups/system/ScannerVersion.h"
#include "host/Host.h"
#include "readers/system/BootClock.h"
#include "tables/Render.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kManufacturer = 1;
constexpr uint32_t kMajorVersion = 2;
constexpr uint32_t kMinorVersion = 3;
constexpr uint32_t kScanDate = 4;
constexpr uint32_t kBuild = 5;
constexpr uint32_t kUptime = 6;
constexpr uint32_t kMaintenanceVersion = 7;
constexpr uint32_t kScanTime = 101;
constexpr uint32_t kSources = 102;
constexpr uint32_t kUser = 103;

std::string utcText(time_t seconds) {
  struct tm utc {};
  if (gmtime_r(&seconds, &utc) == nullptr) return {};
  std::array<char, 40> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text.data();
}

std::string userText(uid_t user) { return user == 0 ? "root" : std::to_string(user); }

}  // namespace

void collectScanInfo(ModernScan&, ModernTable& table) {
  struct timespec now {};
  host().clockGettime(CLOCK_REALTIME, &now);
  table.addRow()
      .textAlways(kManufacturer, kScannerManufacturer)
      .ulong(kMajorVersion, kScannerMajor)
      .ulong(kMinorVersion, kScannerMinor)
      .ulong(kMaintenanceVersion, kScannerMaintenance)
      .time(kScanDate, now.tv_sec)
      .textAlways(kBuild, getBuildDate())
      .ulong(kUptime, readUptime())
      .text(kScanTime, utcText(now.tv_sec))
      .text(kSources, "modern")
      .text(kUser, userText(host().geteuid()));
}

}  // namespace quenlor
