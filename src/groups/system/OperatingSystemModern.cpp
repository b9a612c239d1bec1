// Operating System of the modern sources: the distribution's own description, the kernel's release,
// what protects it, and when it was installed.
#include <clocale>
#include <cstring>
#include <string>

#include "groups/modern/Collectors.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/system/BootClock.h"
#include "readers/system/Distribution.h"
#include "readers/system/InstallDate.h"
#include "readers/system/Release.h"
#include "readers/system/Security.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kName = 1;
constexpr uint32_t kType = 2;
constexpr uint32_t kMajorVersion = 3;
constexpr uint32_t kMinorVersion = 4;
constexpr uint32_t kSubVersion = 5;
constexpr uint32_t kInstallDate = 6;
constexpr uint32_t kOsArch = 10;
constexpr uint32_t kOsKernelMode = 11;
constexpr uint32_t kDescription = 12;
constexpr uint32_t kLocaleId = 14;
constexpr uint32_t kMessagesLocale = 15;
constexpr uint32_t kLastBootUpTime = 16;
constexpr uint32_t kUserLocaleId = 17;
constexpr uint32_t kDistribution = 101;
constexpr uint32_t kDistributionVersion = 102;
constexpr uint32_t kDistributionCodename = 103;
constexpr uint32_t kKernelRelease = 104;
constexpr uint32_t kKernelBuild = 105;
constexpr uint32_t kSecurityModules = 106;
constexpr uint32_t kLockdown = 107;
constexpr uint32_t kInitSystem = 108;
constexpr uint32_t kSelinuxMode = 109;
constexpr uint32_t kFips = 110;

constexpr uint32_t kTypeLinux = 37;  // OS_TYPE_ENUM_DEF
constexpr char kLinux[] = "Linux";

void addKernel(ModernRow& row) {
  struct utsname names {};
  if (host().uname(&names) != 0) std::memset(&names, 0, sizeof names);
  const KernelRelease kernel = parseKernelRelease(names.release);
  row.ulong(kMajorVersion, kernel.majorVersion)
      .ulong(kMinorVersion, kernel.minorVersion)
      .textAlways(kSubVersion, kernel.subVersion)
      .textAlways(kOsArch, names.machine)
      .textAlways(kOsKernelMode, "")  // no kernel of this architecture tells its mode
      .text(kKernelRelease, names.release)
      .text(kKernelBuild, names.version);
}

void addDistribution(ModernRow& row, const Distribution& distribution) {
  const std::string name = distribution.name.empty() ? kLinux : distribution.name;
  row.textAlways(kName, name)
      .ulong(kType, kTypeLinux)
      .textAlways(kDescription, name)
      .text(kDistribution, distribution.id)
      .text(kDistributionVersion, distribution.version)
      .text(kDistributionCodename, distribution.codename);
}

void addSecurity(ModernRow& row, const Security& security) {
  row.text(kSecurityModules, security.modules)
      .text(kLockdown, security.lockdown)
      .text(kSelinuxMode, security.selinuxMode)
      .yesNo(kFips, security.fips);
}

}  // namespace

void collectOperatingSystem(ModernScan& scan, ModernTable& table) {
  struct timespec now {};
  host().clockGettime(CLOCK_REALTIME, &now);
  const SystemLocale* locale = scan.systemLocale(table.outcome());
  const std::string lang = locale == nullptr ? std::string() : locale->lang;
  ModernRow& row = table.addRow();
  addDistribution(row, readDistribution(table.outcome()));
  addKernel(row);
  if (const Security* security = scan.security(table.outcome())) {
    table.outcome().merge(security->outcome);
    addSecurity(row, *security);
  }
  row.time(kInstallDate, readInstallDate(now.tv_sec))
      .time(kLastBootUpTime, readBootTime())
      .text(kLocaleId, lang)
      .text(kUserLocaleId, lang)
      .localeText(kMessagesLocale, host().setlocale(LC_MESSAGES, nullptr))
      .text(kInitSystem, readAttribute("/proc/1/comm"));
}

}  // namespace quenlor
