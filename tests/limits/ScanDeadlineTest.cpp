#include "limits/ScanDeadline.h"

#include <gtest/gtest.h>

#include "host/ScanState.h"
#include "tests/support/ConfiguredProgram.h"

namespace quenlor {
namespace {

class ScanDeadlineTest : public ::testing::Test {
 protected:
  ScanDeadlineTest() { useScanState(&state); }
  ~ScanDeadlineTest() override { useScanState(nullptr); }

  int64_t idleLimitWith(const std::string& configuration) {
    const test::ConfiguredProgram program(configuration);
    announceClassicDeadline();
    EXPECT_EQ(state.scanLimit, 0);
    return state.idleLimit;
  }

  ScanState state;
};

TEST_F(ScanDeadlineTest, classicScanHasQuarterOfAnHourForEachStep) {
  EXPECT_EQ(state.idleLimit, 900000) << "before anything is announced";
  EXPECT_EQ(idleLimitWith(""), 900000);
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = 300000\n"), 900000);
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = never\n"), 900000);
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = -5\n"), 900000);
}

TEST_F(ScanDeadlineTest, classicScanHasMinuteMoreThanItsLongestStepMayTake) {
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = 840000\n"), 900000);
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = 840001\n"), 900001);
  EXPECT_EQ(idleLimitWith("hwscanner.timeout = 99999999999\n"), 2147483647LL + 60000);
}

TEST_F(ScanDeadlineTest, scanWithLimitOfItsOwnHasFiveSecondsMore) {
  announceScanDeadline(30000);
  EXPECT_EQ(state.scanLimit, 35000);
  EXPECT_EQ(state.idleLimit, 900000) << "for a reader that takes its time";
  announceScanDeadline(3600000);
  EXPECT_EQ(state.scanLimit, 3605000);
  EXPECT_EQ(state.idleLimit, 3605000);
}

}  // namespace
}  // namespace quenlor
