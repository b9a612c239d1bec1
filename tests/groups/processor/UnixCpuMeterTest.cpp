#include "readers/system/UnixCpuMeter.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "groups/processor/CpuMeterGroup.h"
#include "groups/processor/UnixCpuMeterGroup.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"
#include "tests/support/TestLocale.h"

namespace quenlor {
namespace {

using test::collect;
using test::FakeHost;
using test::RowValues;

constexpr const char* kTwoProcessors =
    "cpu  1000 20 300 5000 40 1 2 3 0 0\n"
    "cpu0 600 10 200 2410 20 1 1 1 0 0\n"
    "cpu1 400 10 100 2590 20 0 1 2 0 0\n"
    "intr 1462898 1448892 2 0\n"
    "cpufoo 1 2 3\n";

class UnixCpuMeterTest : public ::testing::Test {
 protected:
  ~UnixCpuMeterTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  FakeHost machine;
};

TEST_F(UnixCpuMeterTest, timesAreAveragedPerProcessor) {
  machine.files["/proc/stat"] = kTwoProcessors;
  const auto rows = collect<CpuMeterGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0], (RowValues{{1, "2500"}, {2, "500"}, {3, "20"}, {4, "150"}}));
}

TEST_F(UnixCpuMeterTest, countingStopsAtTheFirstLineThatIsNoProcessor) {
  machine.files["/proc/stat"] = kTwoProcessors;
  UnixCpuMeter meter;
  meter.refresh();
  EXPECT_EQ(meter.getUserTime(), 500);  // "cpufoo" behind "intr" is not counted
}

TEST_F(UnixCpuMeterTest, lineCountsWhenItsFirstWordHoldsCpuAnywhere) {
  machine.files["/proc/stat"] = "cpu 12\nxcpu0 1\n cpu 2\nthecpus\nx cpu\ncpu3\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], (RowValues{{2, "4"}}));
}

TEST_F(UnixCpuMeterTest, firstLineIsReadInPiecesOf1023Characters) {
  // The first piece ends behind the 4, and what follows counts as a line of its own.
  const std::string columns = "cpu 10 20 30 40";
  machine.files["/proc/stat"] = columns + std::string(1022 - columns.size(), ' ') + "4cpu0 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], (RowValues{{1, "40"}, {2, "10"}, {3, "4"}, {4, "30"}}));
}

TEST_F(UnixCpuMeterTest, onlyMinusOneIsUnknownAmongTheTimes) {
  machine.files["/proc/stat"] = "cpu -4 0 -2 -7 -3\ncpu0 1\ncpu1 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], (RowValues{{1, "-3"}, {2, "-2"}}));
}

TEST_F(UnixCpuMeterTest, kernelWithoutIowaitHasNoWaitTime) {
  machine.files["/proc/stat"] =
      "cpu  1000 20 300 5000\ncpu0 600 10 200 2410\ncpu1 400 10 100 2590\n";
  const auto rows = collect<CpuMeterGroup>();
  EXPECT_EQ(rows[0], (RowValues{{1, "2500"}, {2, "500"}, {4, "150"}}));
}

TEST_F(UnixCpuMeterTest, columnsEndAtTheFirstThatIsNoNumber) {
  machine.files["/proc/stat"] = "  cpu\t1000 20 x 5000 40\ncpu0 1\ncpu1 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], (RowValues{{2, "500"}}));
  machine.files["/proc/stat"] = "cpu\ncpu0 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], RowValues{});
  machine.files["/proc/stat"] = "\ncpu0 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], RowValues{});
}

TEST_F(UnixCpuMeterTest, statWithoutProcessorLinesLeavesTheTimesOut) {
  machine.files["/proc/stat"] = "cpu  1000 20 300 5000 40\nintr 1\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], RowValues{});
}

TEST_F(UnixCpuMeterTest, upTimeIsInHundredthsAndDropsTheFraction) {
  machine.files["/proc/uptime"] = "93784.55 180012.33\n";
  EXPECT_EQ(collect<CpuMeterGroup>()[0], (RowValues{{5, "9378400"}}));
}

TEST_F(UnixCpuMeterTest, upTimeIsUnknownWithoutAnumber) {
  for (const char* text : {"", "\n", "up\n", "-1 5\n"}) {
    machine.files["/proc/uptime"] = text;
    UnixCpuMeter meter;
    EXPECT_EQ(meter.readSystemUpTime(), -1) << text;
  }
}

TEST_F(UnixCpuMeterTest, upTimeBeyond32BitsIsNoUpTime) {
  const auto upTimeOf = [this](const std::string& text) {
    machine.files["/proc/uptime"] = text;
    return UnixCpuMeter().readSystemUpTime();
  };
  EXPECT_EQ(upTimeOf("2147483647.99 0\n"), 214748364700);
  EXPECT_EQ(upTimeOf("2147483648 0\n"), -1);
  EXPECT_EQ(upTimeOf("9223372036854775807 0\n"), -1);
  EXPECT_EQ(upTimeOf("-9223372036854775808 0\n"), -1);
}

TEST_F(UnixCpuMeterTest, missingFilesLeaveEmptyRows) {
  EXPECT_EQ(collect<CpuMeterGroup>(), std::vector<RowValues>{RowValues{}});
  EXPECT_EQ(collect<UnixCpuMeterGroup>(), std::vector<RowValues>{RowValues{}});
}

TEST_F(UnixCpuMeterTest, loadAveragesAreReadWithoutFinalNewline) {
  machine.files["/proc/loadavg"] = "0.20 0.18 0.12 1/80 11206";
  EXPECT_EQ(collect<UnixCpuMeterGroup>()[0],
            (RowValues{{1, "0.200000"}, {2, "0.180000"}, {3, "0.120000"}}));
}

TEST_F(UnixCpuMeterTest, missingWordsLeaveTheirAverageOut) {
  machine.files["/proc/loadavg"] = "0.52";
  EXPECT_EQ(collect<UnixCpuMeterGroup>()[0], (RowValues{{1, "0.520000"}}));
}

TEST_F(UnixCpuMeterTest, blanksAndNewlineAreNoWords) {
  for (const char* text : {"", "\n", "  \n"}) {
    machine.files["/proc/loadavg"] = text;
    EXPECT_EQ(collect<UnixCpuMeterGroup>()[0], RowValues{}) << text;
  }
  machine.files["/proc/loadavg"] = "0.52 0.18 \n";
  EXPECT_EQ(collect<UnixCpuMeterGroup>()[0], (RowValues{{1, "0.520000"}, {2, "0.180000"}}));
}

TEST_F(UnixCpuMeterTest, decimalPointIsReadInALocaleWithAComma) {
  const std::string source =
      testing::TempDir() + "quenlor-decimal-comma-" + std::to_string(getpid());
  std::ofstream(source) << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\n"
                           "END LC_NUMERIC\n";
  const test::CompiledLocale compiled("xx_YY", source, "ANSI_X3.4-1968");
  std::filesystem::remove(source);
  if (!compiled) GTEST_SKIP() << "no localedef";
  const test::ScopedLocale locale("xx_YY");
  ASSERT_EQ(std::strtod("0,5", nullptr), 0.5);
  machine.files["/proc/loadavg"] = "0.52 0.18 0.12 1/80 11206\n";
  EXPECT_EQ(collect<UnixCpuMeterGroup>()[0],
            (RowValues{{1, "0.520000"}, {2, "0.180000"}, {3, "0.120000"}}));
}

TEST_F(UnixCpuMeterTest, minusOneIsUnknownButNotANumberIsReported) {
  machine.files["/proc/loadavg"] = "-1 nan 2.5\n";
  EXPECT_EQ(collect<UnixCpuMeterGroup>()[0], (RowValues{{2, "nan"}, {3, "2.500000"}}));
}

TEST_F(UnixCpuMeterTest, binaryAndOverlongStatDoesNoHarm) {
  machine.files["/proc/stat"] =
      std::string(5000, '\xff') + std::string("\0\n\0cpu", 6) + "\ncpu0 1\n";
  machine.files["/proc/loadavg"] = std::string(3000, '9');
  machine.files["/proc/uptime"] = std::string(3000, '9');
  UnixCpuMeter meter;
  meter.refresh();
  EXPECT_EQ(meter.getUserTime(), -1);
}

TEST_F(UnixCpuMeterTest, refreshingAfterInitForgetsOldValues) {
  machine.files["/proc/stat"] = kTwoProcessors;
  machine.files["/proc/uptime"] = "5.0 1\n";
  machine.files["/proc/loadavg"] = "0.20 0.18 0.12 1/80 11206\n";
  UnixCpuMeter meter;
  meter.refresh();
  EXPECT_EQ(meter.getWaitTime(), 20);
  machine.files.clear();
  meter.init();
  meter.refresh();
  EXPECT_EQ(meter.getIdleTime(), -1);
  EXPECT_EQ(meter.getWaitTime(), -1);
  EXPECT_EQ(meter.getUserTime(), -1);
  EXPECT_EQ(meter.getSysTime(), -1);
  EXPECT_EQ(meter.getSystemUpTime(), -1);
  EXPECT_EQ(meter.getLoadAvg1(), -1.0F);
  EXPECT_EQ(meter.getLoadAvg5(), -1.0F);
  EXPECT_EQ(meter.getLoadAvg15(), -1.0F);
}

}  // namespace
}  // namespace quenlor
