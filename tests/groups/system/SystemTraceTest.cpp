// What the groups of the running system and the meters write to the trace file, record by record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>

#include "groups/processor/CpuMeterGroup.h"
#include "groups/processor/UnixCpuMeterGroup.h"
#include "groups/system/MemoryGroup.h"
#include "groups/system/OperatingSystemGroup.h"
#include "groups/system/RegionalGroup.h"
#include "groups/system/ScanInfoGroup.h"
#include "groups/system/UnixSystemParamsGroup.h"
#include "readers/system/UnixCpuMeter.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;

class SystemTraceTest : public ::testing::Test {
 protected:
  // Records of collecting a group.
  template <class Group>
  std::vector<std::string> tracesOf() {
    const test::CapturedTraces traces;
    test::collect<Group>();
    return traces.texts();
  }

  test::FakeHost machine;
};

TEST_F(SystemTraceTest, meterTracesEveryValueInTheOrderOfReading) {
  machine.files["/proc/stat"] = "cpu  10 20 30 40 50\ncpu0 5\ncpu1 5\nintr 1\n";
  machine.files["/proc/loadavg"] = "0.20 0.18 0.12 1/80 11206\n";
  machine.files["/proc/uptime"] = "93784.55 180012.33\n";
  const test::CapturedTraces traces;
  UnixCpuMeter().refresh();
  EXPECT_THAT(
      traces.texts(),
      ElementsAre(
          "MAX linux/UnixCpuMeter.cpp refresh() hardware opened /proc/stat",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware Read string <cpu  10 20 30 40 50\n>",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware number of cpu=2",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware userTime: 5",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware niceTime:  10",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware sysTime: 15",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware idleTime: 20",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware waitTime: 25",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware opened /proc/loadavg",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware parsing this line 0.20 0.18 0.12 1/80 "
          "11206\n",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware loadAvg1: 0.20, converted: 0.200000 ",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware loadAvg5: 0.18, converted: 0.180000 ",
          "MAX linux/UnixCpuMeter.cpp refresh() hardware loadAvg15: 0.12, converted: 0.120000 ",
          "MAX linux/UnixCpuMeter.cpp readSystemUpTime() hardware looking for /proc/uptime.",
          "MAX linux/UnixCpuMeter.cpp readSystemUpTime() hardware opened /proc/uptime",
          "MAX linux/UnixCpuMeter.cpp readSystemUpTime() hardware returning system uptime:  93784",
          "MAX linux/UnixCpuMeter.cpp readSystemUpTime() hardware 1 days: 2 hours: 3 minutes: 4 "
          "seconds"));
}

TEST_F(SystemTraceTest, meterWithoutFilesTracesTheMissingUptimeAsAFailure) {
  const test::CapturedTraces traces;
  UnixCpuMeter().refresh();
  EXPECT_THAT(
      traces.texts(),
      ElementsAre(
          "MAX linux/UnixCpuMeter.cpp readSystemUpTime() hardware looking for /proc/uptime.",
          "MIN linux/UnixCpuMeter.cpp readSystemUpTime() hardware cannot open /proc/uptime."));
}

// The records of the group alone, without those of the meter that it reads.
std::vector<std::string> ofSource(const std::vector<std::string>& records,
                                  const std::string& source) {
  std::vector<std::string> chosen;
  for (const std::string& record : records) {
    if (record.find(' ' + source + ' ') != std::string::npos) chosen.push_back(record);
  }
  return chosen;
}

TEST_F(SystemTraceTest, cpuMeterShowsTheSystemTimeAsUpTime) {
  machine.files["/proc/stat"] = "cpu  10 20 30 40 50\ncpu0 5\n";
  machine.files["/proc/uptime"] = "7.5\n";
  EXPECT_THAT(
      ofSource(tracesOf<CpuMeterGroup>(), "linux/CpuMeterGroup.cpp"),
      ElementsAre("MID entry linux/CpuMeterGroup.cpp getTable() hardware CpuMeterGroup",
                  "MAX linux/CpuMeterGroup.cpp getTable() hardware IdleTime= 40, UserTime=10, "
                  "WaitTime=50 ",
                  "MAX linux/CpuMeterGroup.cpp getTable() hardware SysTime=30",
                  "MAX linux/CpuMeterGroup.cpp getTable() hardware systemUpTime=30",
                  "MID exit linux/CpuMeterGroup.cpp getTable() hardware CpuMeterGroup"));
}

TEST_F(SystemTraceTest, unixCpuMeterShowsItsThreeAverages) {
  machine.files["/proc/loadavg"] = "0.20 0.18\n";
  EXPECT_THAT(
      ofSource(tracesOf<UnixCpuMeterGroup>(), "linux/UnixCpuMeterGroup.cpp"),
      ElementsAre("MID entry linux/UnixCpuMeterGroup.cpp getTable() hardware UnixCpuMeterGroup",
                  "MAX linux/UnixCpuMeterGroup.cpp getTable() hardware loadAvg1=0.200000, "
                  "loadAvg5=0.180000, loadAvg15=-1.000000",
                  "MID exit linux/UnixCpuMeterGroup.cpp getTable() hardware UnixCpuMeterGroup"));
}

TEST_F(SystemTraceTest, operatingSystemShowsKernelDistributionAndArchitecture) {
  machine.setUname("node5", "2.4.21-4.ELsmp", "i686");
  machine.files["/etc/redhat-release"] = "Red Hat Linux release 9\n";
  const std::string at = " linux/OperatingSystemGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      tracesOf<OperatingSystemGroup>(),
      ElementsAre("MID entry" + at + "OperatingSystemGroup", "MAX" + at + "uname name= Linux",
                  "MAX" + at + "node= node5", "MAX" + at + "rel= 2.4.21-4.ELsmp",
                  "MAX" + at + "ver= " + machine.unameResult->version, "MAX" + at + "mach= i686",
                  "MAX" + at + "OS Description retrieved= Red Hat Linux release 9 ",
                  "MAX" + at + "Arch retrieved= i686", "MAX" + at + "Kernel mode retrieved= ",
                  "MID exit" + at + "OperatingSystemGroup"));
}

TEST_F(SystemTraceTest, operatingSystemWithoutAnySourceTracesNoDescription) {
  machine.unameResult.reset();
  machine.locales[LC_MESSAGES] = std::nullopt;
  const std::string at = " linux/OperatingSystemGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      tracesOf<OperatingSystemGroup>(),
      ElementsAre("MID entry" + at + "OperatingSystemGroup", "MAX" + at + "Arch retrieved= ",
                  "MAX" + at + "Kernel mode retrieved= ", "MIN" + at + "setlocale returned NULL",
                  "MID exit" + at + "OperatingSystemGroup"));
}

TEST_F(SystemTraceTest, memoryTracesWhichSourceServed) {
  const std::string at = " linux/MemoryGroup.cpp ";
  EXPECT_THAT(
      tracesOf<MemoryGroup>(),
      ElementsAre("MID entry" + at + "getTable() hardware MemoryGroup",
                  "MIN" + at +
                      "getFromMeminfo() hardware Could not open file /proc/meminfo:"
                      "return= 0",
                  "MAX" + at + "getTable() hardware getFromMeminfo returned 0 - using sysinfo",
                  "MID exit" + at + "getTable() hardware MemoryGroup"));
  machine.files["/proc/meminfo"] = "MemTotal: 0 kB\n";
  EXPECT_THAT(
      tracesOf<MemoryGroup>(),
      ElementsAre("MID entry" + at + "getTable() hardware MemoryGroup",
                  "MAX" + at +
                      "getFromMeminfo() hardware MemTotal=0 matches sysinfo data, so "
                      "exiting from getFromMeminfo, return=0",
                  "MAX" + at + "getTable() hardware getFromMeminfo returned 0 - using sysinfo",
                  "MID exit" + at + "getTable() hardware MemoryGroup"));
  machine.files["/proc/meminfo"] = "MemTotal: 5 kB\n";
  EXPECT_THAT(tracesOf<MemoryGroup>(),
              ElementsAre("MID entry" + at + "getTable() hardware MemoryGroup",
                          "MAX" + at + "getTable() hardware getFromMeminfo successful",
                          "MID exit" + at + "getTable() hardware MemoryGroup"));
}

TEST_F(SystemTraceTest, regionalShowsLocaleAndZone) {
  machine.zone = {-3600, true, "CET", "CEST"};
  machine.locales[LC_CTYPE] = "de_DE.UTF-8";
  const std::string at = " linux/RegionalGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      tracesOf<RegionalGroup>(),
      ElementsAre("MID entry" + at + "RegionalGroup", "MAX" + at + "LC_CTYPE locale= de_DE.UTF-8",
                  "MAX" + at + "Timezone seconds= 3600", "MAX" + at + "Timezone plus/minus= +",
                  "MAX" + at + "Timezone daylight= 1", "MAX" + at + "Timezone tzname= CET",
                  "MAX" + at + "Timezone tzname daylight= CEST",
                  "MID exit" + at + "RegionalGroup"));
}

TEST_F(SystemTraceTest, regionalInTheWestWithAnUnknownLocale) {
  machine.zone = {18000, false, "EST", "EST"};
  machine.locales[LC_CTYPE] = std::nullopt;
  const std::string at = " linux/RegionalGroup.cpp getTable() hardware ";
  const auto records = tracesOf<RegionalGroup>();
  EXPECT_THAT(records, AllOf(Contains("MIN" + at + "setlocale returned NULL"),
                             Contains("MAX" + at + "LC_CTYPE locale= "),
                             Contains("MAX" + at + "Timezone plus/minus= -"),
                             Contains("MAX" + at + "Timezone daylight= 0")));
}

TEST_F(SystemTraceTest, systemParametersShowRunLevelNameAndBoot) {
  setenv("TZ", "UTC", 1);
  tzset();
  machine.setUname("node5.example.com", "6.1.0", "x86_64");
  machine.commands["/sbin/runlevel"] = {"N 5\n", 0};
  struct utmp record = {};
  record.ut_type = RUN_LVL;
  record.ut_tv.tv_sec = 1000000000;
  record.ut_line[0] = '~';
  machine.utmpRecords[RUN_LVL] = record;
  const std::string at = " linux/UnixSystemParamsGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      tracesOf<UnixSystemParamsGroup>(),
      ElementsAre("MID entry" + at + "UnixSystemParamsGroup", "MAX" + at + "Linux runlevel= N 5\n",
                  "MAX" + at + "uname nodename= node5.example.com", "MAX" + at + "RUNLEVEL line= ~",
                  "MAX" + at + "RUNLEVEL uptime= 1000000000 Sun Sep  9 01:46:40 2001\n",
                  "MID exit" + at + "UnixSystemParamsGroup"));
}

TEST_F(SystemTraceTest, lineOfRunlevelIsReadTo78Characters) {
  machine.commands["/sbin/runlevel"] = {"N 5" + std::string(100, 'x'), 0};
  EXPECT_THAT(
      tracesOf<UnixSystemParamsGroup>(),
      Contains("MAX linux/UnixSystemParamsGroup.cpp getTable() hardware Linux runlevel= N 5" +
               std::string(75, 'x')));
}

TEST_F(SystemTraceTest, systemParametersWithoutBootRecordTraceTheFailure) {
  machine.setUname("n", "6.1.0", "x86_64");
  const std::string at = " linux/UnixSystemParamsGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      tracesOf<UnixSystemParamsGroup>(),
      ElementsAre("MID entry" + at + "UnixSystemParamsGroup", "MAX" + at + "uname nodename= n",
                  "MIN" + at + "Failure getting the boot time",
                  "MID exit" + at + "UnixSystemParamsGroup"));
}

TEST_F(SystemTraceTest, scanInfoTracesEntryAndExit) {
  const std::string at = " linux/ScanInfoGroup.cpp getTable() hardware ScanInfoGroup";
  EXPECT_THAT(tracesOf<ScanInfoGroup>(), ElementsAre("MID entry" + at, "MID exit" + at));
}

TEST(ScanInfoTraceTest, dateIsThatBeforeTheFirstRecord) {
  class MachineWithTwoClocks : public test::FakeHost {
   public:
    explicit MachineWithTwoClocks(const test::CapturedTraces& traces) : m_traces(traces) {}
    int gettimeofday(struct timeval* out) override {
      out->tv_sec = m_traces.texts().empty() ? 1000000000 : 1;
      return 0;
    }
    time_t time() override { return 1000000060; }

   private:
    const test::CapturedTraces& m_traces;
  };
  setenv("TZ", "UTC", 1);
  tzset();
  const test::CapturedTraces traces;
  MachineWithTwoClocks machine(traces);
  struct utmp record = {};
  record.ut_type = RUN_LVL;
  record.ut_tv.tv_sec = 1000000000;
  machine.utmpRecords[RUN_LVL] = record;
  const auto row = test::collect<ScanInfoGroup>()[0];
  EXPECT_EQ(test::valueOf(row, 4), "2001-09-09-01.46.40.000000");
  EXPECT_EQ(test::valueOf(row, 6), "60");
}

}  // namespace
}  // namespace quenlor
