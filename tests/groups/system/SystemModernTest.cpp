// Groups of the modern sources that tell of the operating system and of the scan itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>

#include "groups/modern/Collectors.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::RowValues;
using test::valueOf;

class SystemModernTest : public ::testing::Test {
 protected:
  SystemModernTest() {
    machine.setUname("mars.example.org", "6.1.0-18-amd64", "x86_64");
    machine.clocks[CLOCK_BOOTTIME] = {3600, 0};
    machine.clocks[CLOCK_REALTIME] = {1700000000, 0};
  }

  RowValues collect(uint32_t group, ModernCollector collector) {
    scan = std::make_shared<ModernScan>(ScanSettings{});
    table = std::make_unique<ModernTable>(*findGroup(MODERN_GROUPS_DEF, group));
    collector(*scan, *table);
    const auto rows = test::rowsOf(table->build().get());
    return rows.empty() ? RowValues{} : rows[0];
  }

  RowValues system() { return collect(group::kOperatingSystem, collectOperatingSystem); }
  RowValues parameters() { return collect(group::kUnixSystemParams, collectUnixSystemParams); }

  FakeHost machine;
  std::shared_ptr<ModernScan> scan;
  std::unique_ptr<ModernTable> table;
};

TEST_F(SystemModernTest, theDistributionNamesItself) {
  machine.files["/etc/os-release"] =
      "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\nVERSION_ID=\"12\"\n"
      "VERSION_CODENAME=bookworm\n";
  const RowValues row = system();
  EXPECT_EQ(valueOf(row, 1), "Debian GNU/Linux 12 (bookworm)");
  EXPECT_EQ(valueOf(row, 12), "Debian GNU/Linux 12 (bookworm)");
  EXPECT_EQ(valueOf(row, 101), "debian");
  EXPECT_EQ(valueOf(row, 102), "12");
  EXPECT_EQ(valueOf(row, 103), "bookworm");
  EXPECT_EQ(valueOf(row, 2), "37");
  EXPECT_EQ(valueOf(row, 104), "6.1.0-18-amd64");
  EXPECT_EQ(valueOf(row, 5), "0-18-amd64");
}

TEST_F(SystemModernTest, aMachineThatTellsNothingKeepsWhatIsAlwaysThere) {
  machine.unameResult.reset();
  const RowValues row = system();
  EXPECT_EQ(valueOf(row, 1), "Linux");
  EXPECT_EQ(valueOf(row, 3), "0");
  EXPECT_EQ(valueOf(row, 10), "");
  EXPECT_EQ(valueOf(row, 11), "");
  EXPECT_EQ(valueOf(row, 101), "(absent)");
  EXPECT_EQ(valueOf(row, 6), "(absent)");
  EXPECT_EQ(valueOf(row, 110), "(absent)");
}

TEST_F(SystemModernTest, localesAreTheSystemsOwn) {
  machine.files["/etc/default/locale"] = "LANG=de_DE.UTF-8\n";
  const RowValues row = system();
  EXPECT_EQ(valueOf(row, 14), "de_DE.UTF-8");
  EXPECT_EQ(valueOf(row, 17), "de_DE.UTF-8");
  EXPECT_EQ(valueOf(row, 15), "C");
  EXPECT_EQ(valueOf(collect(group::kRegional, collectRegional), 102), "de_DE.UTF-8");
}

TEST_F(SystemModernTest, theAliasIsTheNamesFirstLabel) {
  const RowValues row = parameters();
  EXPECT_EQ(valueOf(row, 3), "mars.example.org");
  EXPECT_EQ(valueOf(row, 4), "mars");
  EXPECT_EQ(valueOf(row, 101), "example.org");
}

TEST_F(SystemModernTest, theMachineIdStaysOnTheMachine) {
  machine.files["/etc/machine-id"] = "0123456789abcdef0123456789abcdef\n";
  EXPECT_EQ(valueOf(parameters(), 102), "11eae4a169d5e4d91887273bf2913cae");
  for (const char* none : {"", "uninitialized\n", "0123\n", "0123456789abcdef0123456789abcdeg\n"}) {
    machine.files["/etc/machine-id"] = none;
    EXPECT_EQ(valueOf(parameters(), 102), "(absent)") << none;
  }
}

TEST_F(SystemModernTest, aMachineIdThatIsRefusedIsTold) {
  machine.files["/etc/machine-id"] = "0123456789abcdef0123456789abcdef\n";
  machine.openErrors["/etc/machine-id"] = EACCES;
  parameters();
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kPartial);
}

TEST_F(SystemModernTest, noProgramIsStartedAndEveryFileIsOpenedOnce) {
  scan = std::make_shared<ModernScan>(ScanSettings{});
  for (const auto& [id, collector] :
       std::map<uint32_t, ModernCollector>{{group::kOperatingSystem, collectOperatingSystem},
                                           {group::kUnixSystemParams, collectUnixSystemParams},
                                           {group::kRegional, collectRegional},
                                           {group::kScanInfo, collectScanInfo},
                                           {group::kCpuMeter, collectCpuMeter},
                                           {group::kUnixCpuMeter, collectUnixCpuMeter}}) {
    ModernTable each(*findGroup(MODERN_GROUPS_DEF, id));
    collector(*scan, each);
  }
  EXPECT_TRUE(machine.started.empty());
  auto paths = machine.opened;
  std::sort(paths.begin(), paths.end());
  EXPECT_EQ(std::adjacent_find(paths.begin(), paths.end()), paths.end());
}

TEST_F(SystemModernTest, theScanTellsItsTimeItsSourcesAndItsUser) {
  RowValues row = collect(group::kScanInfo, collectScanInfo);
  EXPECT_EQ(valueOf(row, 101), "2023-11-14T22:13:20Z");
  EXPECT_EQ(valueOf(row, 102), "modern");
  EXPECT_EQ(valueOf(row, 103), "root");
  EXPECT_EQ(valueOf(row, 6), "3600");
  machine.user = 1000;
  EXPECT_EQ(valueOf(collect(group::kScanInfo, collectScanInfo), 103), "1000");
}

TEST_F(SystemModernTest, timesAreThoseOfOneProcessor) {
  machine.files["/proc/stat"] = "cpu  100 20 30 400 50 6 7 80\ncpu0 1\ncpu1 1\nintr 1\n";
  machine.files["/proc/uptime"] = "100.99 5.00\n";
  EXPECT_EQ(
      collect(group::kCpuMeter, collectCpuMeter),
      (RowValues{
          {1, "200"}, {2, "50"}, {3, "25"}, {4, "15"}, {5, "10000"}, {101, "40"}, {102, "2"}}));
}

TEST_F(SystemModernTest, aKernelWithoutCountersIsNoSource) {
  EXPECT_EQ(collect(group::kCpuMeter, collectCpuMeter), RowValues{});
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kNoSource);
}

}  // namespace
}  // namespace quenlor
