#include "base/Event.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

TEST(Event, timesOutAfterTheGivenMilliseconds) {
  Event event;
  const auto start = Clock::now();
  EXPECT_EQ(event.wait(30), -172);
  const auto waited = Clock::now() - start;
  EXPECT_GE(waited, milliseconds(30));
  EXPECT_LT(waited, milliseconds(5000));
}

TEST(Event, zeroAndNegativeTimesTestTheStateWithoutWaiting) {
  Event event;
  const auto start = Clock::now();
  EXPECT_EQ(event.wait(0), Event::kTimedOut);
  EXPECT_EQ(event.wait(-1), Event::kTimedOut);
  EXPECT_EQ(event.wait(INT32_MIN), Event::kTimedOut);
  EXPECT_LT(Clock::now() - start, milliseconds(1000));
  event.signal();
  EXPECT_EQ(event.wait(0), 0);
  EXPECT_EQ(event.wait(-1), 0);
}

TEST(Event, staysSignalled) {
  Event event;
  event.signal();
  event.signal();
  EXPECT_EQ(event.wait(INT32_MAX), 0);
  EXPECT_EQ(event.wait(INT32_MAX), 0);
}

TEST(Event, waitEndsAsSoonAsAnotherThreadSignals) {
  Event event;
  const auto start = Clock::now();
  std::thread other([&] {
    std::this_thread::sleep_for(milliseconds(10));
    event.signal();
  });
  EXPECT_EQ(event.wait(60000), 0);
  EXPECT_LT(Clock::now() - start, milliseconds(10000));
  other.join();
}

TEST(Event, mayBeDestroyedAsSoonAsItsWaitReturned) {
  for (int round = 0; round < 200; ++round) {
    auto event = std::make_unique<Event>();
    std::thread other([signalled = event.get()] { signalled->signal(); });
    EXPECT_EQ(event->wait(60000), 0);
    event.reset();
    other.join();
  }
}

}  // namespace
}  // namespace quenlor
