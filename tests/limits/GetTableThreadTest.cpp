#include "limits/GetTableThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>

#include "tests/support/ConfiguredProgram.h"

namespace quenlor {
namespace {

using test::ConfiguredProgram;

class ScriptedGroup : public VelGroup {
 public:
  explicit ScriptedGroup(std::function<VelTable*()> generate)
      : VelGroup(group::kStorage, 1), m_generate(std::move(generate)) {}
  VelTable* getTable() override { return nullptr; }
  VelTable* generateTable() override { return m_generate(); }

 private:
  std::function<VelTable*()> m_generate;
};

TEST(GetTableThread, tableIsThereOnceTheEventIsSignalled) {
  ScriptedGroup group([] { return new VelTable(group::kStorage, 1); });
  Event done;
  GetTableThread thread(&group, &done);
  EXPECT_EQ(thread.get_table(), nullptr);
  ASSERT_TRUE(thread.start());
  EXPECT_EQ(done.wait(thread.get_Time()), 0);
  const std::unique_ptr<VelTable> table(thread.get_table());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getGroupId(), group::kStorage);
  thread.join();
}

TEST(GetTableThread, groupWithoutTableStillSignals) {
  ScriptedGroup group([]() -> VelTable* { return nullptr; });
  Event done;
  GetTableThread thread(&group, &done);
  ASSERT_TRUE(thread.start());
  EXPECT_EQ(done.wait(60000), 0);
  EXPECT_EQ(thread.get_table(), nullptr);
  thread.join();
}

TEST(GetTableThread, hungGroupIsNotWaitedForLongerThanTheLimit) {
  const ConfiguredProgram program("hwscanner.timeout = 50\n");
  Event release;
  ScriptedGroup group([&release]() -> VelTable* {
    release.wait(60000);
    return nullptr;
  });
  Event done;
  GetTableThread thread(&group, &done);
  ASSERT_TRUE(thread.start());
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(done.wait(thread.get_Time()), Event::kTimedOut);
  const auto waited = std::chrono::steady_clock::now() - before;
  EXPECT_GE(waited, std::chrono::milliseconds(50));
  EXPECT_LT(waited, std::chrono::seconds(5));
  release.signal();  // only so that the test can end cleanly
  thread.join();
}

int32_t limitWith(const std::string& configuration) {
  const ConfiguredProgram program(configuration);
  Event done;
  return GetTableThread(nullptr, &done).get_Time();
}

TEST(GetTableThread, limitIsConfiguredInMilliseconds) {
  EXPECT_EQ(limitWith(""), 200000);
  EXPECT_EQ(limitWith("hwscanner.timeout =\n"), 200000);
  EXPECT_EQ(limitWith("hwscanner.timeout = 1500\n"), 1500);
  EXPECT_EQ(limitWith("hwscanner.timeout = -3\n"), -3);
}

TEST(GetTableThread, limitThatIsNoNumberIsZero) {
  EXPECT_EQ(limitWith("hwscanner.timeout = soon\n"), 0);
  EXPECT_EQ(limitWith("hwscanner.timeout = 12 seconds\n"), 12);
  EXPECT_EQ(limitWith("hwscanner.timeout = 0x10\n"), 0);
}

TEST(GetTableThread, limitBeyondThirtyTwoBitsIsClamped) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  EXPECT_EQ(limitWith("hwscanner.timeout = 2147483648\n"), kMost);
  EXPECT_EQ(limitWith("hwscanner.timeout = 99999999999999999999999\n"), kMost);
  EXPECT_EQ(limitWith("hwscanner.timeout = -99999999999\n"), std::numeric_limits<int32_t>::min());
}

TEST(GetTableThread, limitOfBrokenConfigurationIsTheDefault) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(limitWith("hwscanner.timeout = 7\nno assignment\n"), 200000);
  ::testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace quenlor
