#include "groups/system/UnixSystemParamsGroup.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "groups/system/ScanInfoGroup.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::FakeHost;
using test::RowValues;
using test::valueOf;

class UnixSystemParamsGroupTest : public ::testing::Test {
 protected:
  UnixSystemParamsGroupTest() {
    setenv("TZ", "UTC", 1);
    tzset();
    machine.setUname("node5.example.com", "6.1.0", "x86_64");
  }

  ~UnixSystemParamsGroupTest() override { EXPECT_EQ(machine.openCommands(), 0); }

  void setRunLevelRecord(time_t seconds) {
    struct utmp record = {};
    record.ut_type = RUN_LVL;
    record.ut_tv.tv_sec = static_cast<int32_t>(seconds);
    std::memset(record.ut_line, '~', sizeof record.ut_line);  // as long as the field: no terminator
    machine.utmpRecords[RUN_LVL] = record;
  }

  std::string runLevelOf(const std::string& output) {
    machine.commands["/sbin/runlevel"] = {output, 0};
    return valueOf(collect<UnixSystemParamsGroup>()[0], 2);
  }

  FakeHost machine;
};

TEST_F(UnixSystemParamsGroupTest, reportsBootTimeRunLevelAndNames) {
  machine.commands["/sbin/runlevel"] = {"N 5\n", 0};
  setRunLevelRecord(1000000000);
  EXPECT_EQ(collect<UnixSystemParamsGroup>(),
            (std::vector<RowValues>{{{1, "2001-09-09-01.46.40.000000"},
                                     {2, "5"},
                                     {3, "node5.example.com"},
                                     {4, "node5.example.com"}}}));
}

TEST_F(UnixSystemParamsGroupTest, thirdCharacterIsTakenAsItIs) {
  EXPECT_EQ(runLevelOf("unknown\n"), "59");
  EXPECT_EQ(runLevelOf("3 S\n"), "35");
  EXPECT_EQ(runLevelOf("3 #\n"), "4294967283");
}

TEST_F(UnixSystemParamsGroupTest, shortOutputHasNoThirdCharacter) {
  EXPECT_EQ(runLevelOf(""), "0");
  EXPECT_EQ(runLevelOf("N"), "0");
  EXPECT_EQ(runLevelOf("N\n"), "0");
}

TEST_F(UnixSystemParamsGroupTest, onlyTheFirstLineOfRunlevelCounts) {
  EXPECT_EQ(runLevelOf("N 2\nN 5\n"), "2");
  EXPECT_EQ(runLevelOf("N 3" + std::string(100000, 'x')), "3");
}

TEST_F(UnixSystemParamsGroupTest, withoutUnameTheNamesAreEmpty) {
  machine.unameResult.reset();
  const RowValues row = collect<UnixSystemParamsGroup>()[0];
  EXPECT_EQ(valueOf(row, 3), "");
  EXPECT_EQ(valueOf(row, 4), "");
}

TEST_F(UnixSystemParamsGroupTest, missingCommandGivesRunLevelZero) {
  EXPECT_EQ(valueOf(collect<UnixSystemParamsGroup>()[0], 2), "0");
  machine.unstartableCommands.insert("/sbin/runlevel");
  EXPECT_EQ(valueOf(collect<UnixSystemParamsGroup>()[0], 2), "0");
}

TEST_F(UnixSystemParamsGroupTest, withoutUtmpRecordBootTimeIsTheEpoch) {
  EXPECT_EQ(valueOf(collect<UnixSystemParamsGroup>()[0], 1), "1970-01-01-00.00.00.000000");
}

TEST_F(UnixSystemParamsGroupTest, scanInfoReportsVersionDateAndUptime) {
  machine.now = 1000000100;
  setRunLevelRecord(1000000000);
  const auto rows = collect<ScanInfoGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0], (RowValues{{1, "Marrow Systems Inc."},
                                {2, "2"},
                                {3, "3"},
                                {7, "1036"},
                                {4, "2001-09-09-01.48.20.000000"},
                                {5, getBuildDate()},
                                {6, "100"}}));
}

TEST_F(UnixSystemParamsGroupTest, scanInfoWithoutUtmpRecordHasNoUptime) {
  EXPECT_EQ(valueOf(collect<ScanInfoGroup>()[0], 6), "(absent)");
}

TEST_F(UnixSystemParamsGroupTest, scanInfoUptimeIsNeverNegative) {
  machine.now = 10;
  setRunLevelRecord(1000000000);
  EXPECT_EQ(valueOf(collect<ScanInfoGroup>()[0], 6), "0");
}

}  // namespace
}  // namespace quenlor
