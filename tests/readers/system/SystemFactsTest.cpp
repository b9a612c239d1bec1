// Boot target, install date, zone, locale, security state, clocks and counters of the kernel.
#include <gtest/gtest.h>

#include <cerrno>

#include "readers/system/BootClock.h"
#include "readers/system/BootTarget.h"
#include "readers/system/InstallDate.h"
#include "readers/system/KernelStatistics.h"
#include "readers/system/Security.h"
#include "readers/system/ZoneAndLocale.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;

TEST(BootTargetTest, unitsMapToRunLevels) {
  EXPECT_EQ(runLevelOfTarget("graphical.target"), 5u);
  EXPECT_EQ(runLevelOfTarget("multi-user.target"), 3u);
  EXPECT_EQ(runLevelOfTarget("rescue.target"), 1u);
  EXPECT_EQ(runLevelOfTarget("emergency.target"), 1u);
  EXPECT_EQ(runLevelOfTarget("reboot.target"), 6u);
  EXPECT_EQ(runLevelOfTarget("poweroff.target"), 0u);
  EXPECT_EQ(runLevelOfTarget("runlevel4.target"), 4u);
  EXPECT_FALSE(runLevelOfTarget("runlevel9.target"));
  EXPECT_FALSE(runLevelOfTarget("kiosk.target"));
  EXPECT_FALSE(runLevelOfTarget("multi-user"));
  EXPECT_FALSE(runLevelOfTarget(""));
}

TEST(BootTargetTest, theKernelsCommandLineNamesOne) {
  EXPECT_EQ(runLevelOfCommandLine("root=/dev/sda1 quiet 3\n"), 3u);
  EXPECT_EQ(runLevelOfCommandLine("quiet single"), 1u);
  EXPECT_EQ(runLevelOfCommandLine("systemd.unit=rescue.target 5"), 5u);
  EXPECT_FALSE(runLevelOfCommandLine("root=/dev/sda1 33 7 0 -3"));
  EXPECT_FALSE(runLevelOfCommandLine(""));
}

TEST(BootTargetTest, inittabNamesOne) {
  EXPECT_EQ(runLevelOfInittab("# id:5:initdefault:\nid:3:initdefault:\n"), 3u);
  EXPECT_FALSE(runLevelOfInittab("1:2345:respawn:/sbin/getty\n"));
  EXPECT_FALSE(runLevelOfInittab("id::initdefault:\n"));
  EXPECT_FALSE(runLevelOfInittab("id:"));
}

TEST(BootTargetTest, linksOfTheAdministratorComeBeforeThoseOfTheSystem) {
  FakeHost machine;
  machine.links["/usr/lib/systemd/system/default.target"] = "graphical.target";
  EXPECT_EQ(readBootRunLevel(), 5u);
  machine.links["/etc/systemd/system/default.target"] = "/lib/systemd/system/multi-user.target";
  EXPECT_EQ(readBootRunLevel(), 3u);
  machine.files["/proc/cmdline"] = "quiet single\n";
  EXPECT_EQ(readBootRunLevel(), 1u);
}

TEST(BootTargetTest, aMachineThatNamesNoneHasNone) {
  const FakeHost machine;
  EXPECT_FALSE(readBootRunLevel());
}

constexpr time_t kNow = 1700000000;

struct statx modifiedAt(time_t seconds) {
  struct statx facts {};
  facts.stx_mask = STATX_MTIME | STATX_BTIME;
  facts.stx_mtime.tv_sec = seconds;
  facts.stx_btime.tv_sec = seconds;
  return facts;
}

TEST(InstallDateTest, theOldestPlausibleDateWins) {
  EXPECT_EQ(oldestPlausible({kNow - 5, kNow - 500, kNow - 50}, kNow), kNow - 500);
}

TEST(InstallDateTest, noDateBefore2000AndNoneAfterNowCounts) {
  EXPECT_EQ(oldestPlausible({0, 946684799, 946684800, kNow + 1}, kNow), 946684800);
  EXPECT_FALSE(oldestPlausible({0, kNow + 1}, kNow));
  EXPECT_FALSE(oldestPlausible({}, kNow));
}

TEST(InstallDateTest, evidenceIsLookedAtAndNothingIsOpened) {
  FakeHost machine;
  machine.fileFacts["/"] = modifiedAt(0);
  machine.fileFacts["/etc/machine-id"] = modifiedAt(kNow - 100);
  machine.fileFacts["/etc/ssh/ssh_host_ed25519_key"] = modifiedAt(kNow - 200);
  EXPECT_EQ(readInstallDate(kNow), kNow - 200);
  machine.fileFacts["/"] = modifiedAt(kNow - 300);
  EXPECT_EQ(readInstallDate(kNow), kNow - 300);
  EXPECT_TRUE(machine.opened.empty());
}

TEST(InstallDateTest, aTimeThatTheFileSystemLacksIsNone) {
  FakeHost machine;
  struct statx facts = modifiedAt(kNow - 300);
  facts.stx_mask = 0;
  machine.fileFacts["/"] = facts;
  EXPECT_FALSE(readInstallDate(kNow));
}

TEST(ZoneTest, theNameStandsBehindZoneinfo) {
  EXPECT_EQ(zoneOfPath("/usr/share/zoneinfo/Europe/Berlin"), "Europe/Berlin");
  EXPECT_EQ(zoneOfPath("../usr/share/zoneinfo/posix/Asia/Tokyo"), "Asia/Tokyo");
  EXPECT_EQ(zoneOfPath("/usr/share/zoneinfo/right/UTC"), "UTC");
  EXPECT_EQ(zoneOfPath("/etc/my-zone"), "");
}

TEST(ZoneTest, aLinkWinsOverTheFileAndNothingAtAllIsUtc) {
  FakeHost machine;
  EXPECT_EQ(readZone(), "UTC");
  machine.files["/etc/localtime"] = "TZif2";  // a copy
  machine.files["/etc/timezone"] = "Europe/Paris\n";
  EXPECT_EQ(readZone(), "Europe/Paris");
  machine.links["/etc/localtime"] = "/usr/share/zoneinfo/Europe/Berlin";
  EXPECT_EQ(readZone(), "Europe/Berlin");
}

TEST(ZoneTest, aCopyWithoutAFileThatNamesItIsNotKnown) {
  FakeHost machine;
  machine.files["/etc/localtime"] = "TZif2";
  EXPECT_EQ(readZone(), "");
}

TEST(SystemLocaleTest, theFirstFileThatSetsItCounts) {
  FakeHost machine;
  EXPECT_EQ(readSystemLocale().lang, "");
  machine.files["/etc/sysconfig/i18n"] = "LANG=\"en_US.UTF-8\"\n";
  EXPECT_EQ(readSystemLocale().lang, "en_US.UTF-8");
  machine.files["/etc/default/locale"] = "LANG='de_DE.UTF-8'\n";
  machine.files["/etc/locale.conf"] = "LC_TIME=C\n";
  EXPECT_EQ(readSystemLocale().lang, "de_DE.UTF-8");
}

TEST(SecurityTest, theActiveLockdownStandsInBrackets) {
  EXPECT_EQ(bracketedWord("none [integrity] confidentiality"), "integrity");
  EXPECT_EQ(bracketedWord("none integrity"), "");
  EXPECT_EQ(bracketedWord("[none"), "");
}

TEST(SecurityTest, selinuxIsWhatTheKernelSaysElseDisabledWhereItIsConfigured) {
  FakeHost machine;
  EXPECT_EQ(readSecurity().selinuxMode, "");
  machine.files["/etc/selinux/config"] = "# mode\nSELINUX=enforcing\nSELINUXTYPE=targeted\n";
  EXPECT_EQ(readSecurity().selinuxMode, "disabled");
  machine.files["/sys/fs/selinux/enforce"] = "0";
  EXPECT_EQ(readSecurity().selinuxMode, "permissive");
  machine.files["/sys/fs/selinux/enforce"] = "1";
  EXPECT_EQ(readSecurity().selinuxMode, "enforcing");
}

TEST(SecurityTest, whatIsRefusedIsNoted) {
  FakeHost machine;
  machine.files["/etc/selinux/config"] = "SELINUX=enforcing\n";
  for (const char* path : {"/sys/kernel/security/lsm", "/sys/kernel/security/lockdown",
                           "/sys/fs/selinux/enforce", "/proc/sys/crypto/fips_enabled"}) {
    machine.files[path] = "1";
    machine.openErrors[path] = EACCES;
  }
  const Security security = readSecurity();
  EXPECT_TRUE(security.isLockedDown);
  // A mode that may not be read is not "disabled".
  EXPECT_EQ(security.selinuxMode, "");
  EXPECT_EQ(security.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(security.outcome.reason(),
            "security modules: refused; lockdown: refused; SELinux mode: refused; FIPS: refused");
}

TEST(SecurityTest, whatTheKernelDoesNotTellIsNotKnown) {
  FakeHost machine;
  EXPECT_FALSE(readSecurity().fips);
  EXPECT_EQ(readSecurity().lockdown, "");
  EXPECT_FALSE(readSecurity().isLockedDown);
  machine.files["/proc/sys/crypto/fips_enabled"] = "1\n";
  machine.files["/sys/kernel/security/lockdown"] = "[none] integrity confidentiality\n";
  machine.files["/sys/kernel/security/lsm"] = "lockdown,capability,yama";
  const Security security = readSecurity();
  EXPECT_EQ(security.fips, true);
  EXPECT_EQ(security.lockdown, "none");
  EXPECT_FALSE(security.isLockedDown);
  machine.files["/sys/kernel/security/lockdown"] = "none [integrity] confidentiality\n";
  EXPECT_TRUE(readSecurity().isLockedDown);
  EXPECT_EQ(security.modules, "lockdown,capability,yama");
}

TEST(BootClockTest, theBootTimeIsNowLessTheUptime) {
  FakeHost machine;
  machine.clocks[CLOCK_BOOTTIME] = {1000, 999999999};
  machine.clocks[CLOCK_REALTIME] = {kNow, 0};
  EXPECT_EQ(readUptime(), 1000);
  EXPECT_EQ(readBootTime(), kNow - 1000);
}

TEST(KernelStatisticsTest, columnsAndProcessorLinesAreCounted) {
  const auto times = parseProcessorTimes(
      "cpu  100 20 30 400 50 6 7 80 9 10\ncpu0 1 2 3\ncpu1 1 2 3\nintr 5 4\ncpu9 x\n");
  EXPECT_EQ(times.user, 100u);
  EXPECT_EQ(times.idle, 400u);
  EXPECT_EQ(times.steal, 80u);
  EXPECT_EQ(times.processors, 2u);
}

TEST(KernelStatisticsTest, oldKernelsPrintFewerColumns) {
  const auto times = parseProcessorTimes("cpu  100 20 30 400\ncpu0 100 20 30 400\n");
  EXPECT_EQ(times.idle, 400u);
  EXPECT_FALSE(times.wait);
  EXPECT_FALSE(times.steal);
}

TEST(KernelStatisticsTest, rubbishHasNoTimes) {
  for (const char* text :
       {"", "\n", "cpu", "cpux 1 2 3", "cpu -1 2 3", "cpu 99999999999999999999"}) {
    const auto times = parseProcessorTimes(text);
    EXPECT_FALSE(times.user) << text;
    EXPECT_EQ(times.processors, 0u) << text;
  }
}

TEST(KernelStatisticsTest, loadAveragesAreThreeNumbers) {
  const auto load = parseLoadAverages("0.25 1.50 10.00 1/100 1234\n");
  EXPECT_EQ(load.one, 0.25F);
  EXPECT_EQ(load.fifteen, 10.0F);
  EXPECT_FALSE(parseLoadAverages("0.25 x").five);
  EXPECT_FALSE(parseLoadAverages("").one);
}

TEST(KernelStatisticsTest, whatIsRefusedOrMissingIsTold) {
  FakeHost machine;
  machine.files["/proc/stat"] = "cpu 1 2 3 4\ncpu0 1 2 3 4\n";
  machine.files["/proc/uptime"] = "4718.55 100.00\n";
  machine.openErrors["/proc/loadavg"] = EACCES;
  const KernelStatistics statistics = readKernelStatistics();
  EXPECT_EQ(statistics.timesOutcome.status(), OutcomeStatus::kComplete);
  EXPECT_EQ(statistics.loadOutcome.status(), OutcomeStatus::kRefused);
  EXPECT_EQ(statistics.uptime, 471800u);
}

}  // namespace
}  // namespace quenlor
