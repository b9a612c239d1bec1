#include "supervise/Patience.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

class PatienceTest : public ::testing::Test {
 protected:
  PatienceTest() { state.idleLimit = 12000; }

  // How much of the scan's time passes until it is given up; every wait takes as long as asked for.
  milliseconds timeUntilOver(Patience& patience) {
    for (milliseconds passed{0};;) {
      const milliseconds wait = patience.nextWait();
      passed += wait;
      if (patience.isOverAfter(wait)) return passed;
    }
  }

  ScanState state;
};

TEST_F(PatienceTest, endsAfterItsLimitWithoutProgress) {
  Patience patience(state);
  EXPECT_EQ(timeUntilOver(patience), 12s);
}

TEST_F(PatienceTest, beginsAnewWithEveryProgress) {
  Patience patience(state);
  EXPECT_FALSE(patience.isOverAfter(1s));
  EXPECT_FALSE(patience.isOverAfter(1s));
  ++state.progress;
  EXPECT_FALSE(patience.isOverAfter(1s));
  EXPECT_EQ(timeUntilOver(patience), 12s);
}

TEST_F(PatienceTest, limitThatTheScanSetsLaterHolds) {
  Patience patience(state);
  EXPECT_FALSE(patience.isOverAfter(1s));
  state.idleLimit = 20000;
  EXPECT_EQ(timeUntilOver(patience), 19s);
}

TEST_F(PatienceTest, scanLimitEndsScanThatKeepsBusy) {
  state.scanLimit = 1300;
  Patience patience(state);
  ++state.progress;
  EXPECT_FALSE(patience.isOverAfter(1s));
  ++state.progress;
  EXPECT_EQ(patience.nextWait(), 300ms);
  EXPECT_TRUE(patience.isOverAfter(300ms));
}

TEST_F(PatienceTest, readersTimeIsNotTheScans_butHasItsEndToo) {
  state.scanLimit = 3000;
  state.isReadersTurn = true;
  Patience patience(state);
  EXPECT_EQ(timeUntilOver(patience), 12s);
}

TEST_F(PatienceTest, hoursForWhichBothProcessesWereStoppedCountAsOneWait) {
  Patience patience(state);
  EXPECT_FALSE(patience.isOverAfter(3h));
  EXPECT_FALSE(patience.isOverAfter(3h));
  EXPECT_EQ(timeUntilOver(patience), 10s);
}

TEST_F(PatienceTest, waitsAreShort_soThatLaterLimitAndProgressAreSeen) {
  state.idleLimit = 900000;
  Patience patience(state);
  EXPECT_EQ(patience.nextWait(), 1s);
  state.idleLimit = 0;
  EXPECT_EQ(patience.nextWait(), 1ms) << "waiting for nothing at all would be a busy loop";
  EXPECT_TRUE(patience.isOverAfter(0ms));
}

}  // namespace
}  // namespace quenlor
