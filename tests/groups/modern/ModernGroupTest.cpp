#include "groups/modern/ModernGroup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>

#include "groups/modern/Collectors.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::rowsOf;
using test::valueOf;

// Holds hanging collectors until the test ends; never destroyed, for a worker may still leave it.
class Gate {
 public:
  static Gate& instance() {
    static auto& gate = *new Gate;
    return gate;
  }
  void wait() {
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    const int round = m_round;
    m_changed.wait(lock, [&] { return m_round != round; });
    --m_waiting;
    m_changed.notify_all();
  }
  void release() {
    std::unique_lock lock(m_mutex);
    ++m_round;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_waiting == 0; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_round = 0;
  int m_waiting = 0;
};

class ModernGroupTest : public ::testing::Test {
 protected:
  ~ModernGroupTest() override { Gate::instance().release(); }

  std::unique_ptr<VelTable> collect(ModernCollector collector) {
    ModernGroup group(*findGroup(MODERN_GROUPS_DEF, group::kMachine), scan, collector);
    return std::unique_ptr<VelTable>(group.getTable());
  }

  const Outcome& outcome() const { return scan->results().back().outcome; }
  const char* status() const { return outcomeWord(outcome().status()); }

  void limit(uint32_t groupLimit, uint32_t scanLimit) {
    ScanSettings settings;
    settings.sources = Sources::kModern;
    settings.groupLimit = groupLimit;
    settings.scanLimit = scanLimit;
    scan = std::make_shared<ModernScan>(settings);
  }

  std::shared_ptr<ModernScan> scan = std::make_shared<ModernScan>(ScanSettings{});
};

TEST_F(ModernGroupTest, aGroupThatWasReadToItsEndIsComplete) {
  const auto table = collect([](ModernScan&, ModernTable& t) { t.addRow().text(3, "server"); });
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getNumRows(), 1u);
  EXPECT_STREQ(status(), "complete");
  EXPECT_EQ(scan->results().back().group, "Machine");
  EXPECT_EQ(scan->results().back().rows, 1u);
}

TEST_F(ModernGroupTest, aGroupWithoutSourceHasATableWithoutRowsAndSaysSo) {
  const auto table = collect([](ModernScan&, ModernTable& t) {
    t.outcome().note(OutcomeStatus::kNoSource, "firmware table: not there");
  });
  EXPECT_EQ(table->getNumRows(), 0u);
  EXPECT_STREQ(status(), "no source");
  EXPECT_EQ(outcome().reason(), "firmware table: not there");
}

TEST_F(ModernGroupTest, aGroupThatIsRefusedSaysSo) {
  collect(
      [](ModernScan&, ModernTable& t) { t.outcome().note(OutcomeStatus::kRefused, "not root"); });
  EXPECT_STREQ(status(), "refused");
}

TEST_F(ModernGroupTest, aGroupThatThrowsHasFailedAndTheNextOneIsCollected) {
  EXPECT_EQ(collect([](ModernScan&, ModernTable&) { throw std::runtime_error("broken"); }),
            nullptr);
  EXPECT_STREQ(status(), "failed");
  EXPECT_EQ(outcome().reason(), "group: broken");
  EXPECT_NE(collect([](ModernScan&, ModernTable&) {}), nullptr);
}

TEST_F(ModernGroupTest, aGroupThatRunsOutOfMemoryHasFailed) {
  EXPECT_EQ(collect([](ModernScan&, ModernTable&) { throw std::bad_alloc(); }), nullptr);
  EXPECT_EQ(outcome().reason(), "group: out of memory");
}

TEST_F(ModernGroupTest, aGroupThatHangsTimesOutAndTheNextOneIsCollected) {
  limit(50, 30000);
  EXPECT_EQ(collect([](ModernScan&, ModernTable& t) {
              t.addRow();
              Gate::instance().wait();
            }),
            nullptr);
  EXPECT_STREQ(status(), "timed out");
  EXPECT_EQ(scan->results().back().rows, 0u);
  EXPECT_GE(scan->results().back().time.count(), 50);
  EXPECT_NE(collect([](ModernScan&, ModernTable&) {}), nullptr);
  EXPECT_STREQ(status(), "complete");
}

TEST_F(ModernGroupTest, aGroupsTimeIsToldByTheMachinesClock) {
  test::FakeHost fake;
  fake.clocks[CLOCK_MONOTONIC] = {100, 900000000};
  collect([](ModernScan&, ModernTable&) {
    struct timespec& clock = static_cast<test::FakeHost&>(host()).clocks[CLOCK_MONOTONIC];
    clock = {102, 400000000};
  });
  EXPECT_EQ(scan->results().back().time, Milliseconds(1500));
}

TEST_F(ModernGroupTest, groupsAfterTheScansLimitAreNotBegun) {
  limit(10000, 60);
  collect([](ModernScan&, ModernTable&) { Gate::instance().wait(); });
  EXPECT_STREQ(status(), "timed out");
  static bool begun;
  begun = false;
  EXPECT_EQ(collect([](ModernScan&, ModernTable&) { begun = true; }), nullptr);
  EXPECT_STREQ(status(), "timed out");
  EXPECT_FALSE(begun);
}

// --- shared readers ---

struct Facts {
  int number = 0;
};

std::atomic<int> g_reads{0};

Facts readFacts() { return {++g_reads}; }
Facts hang() {
  ++g_reads;
  Gate::instance().wait();
  return {};
}
Facts fail() { throw std::runtime_error("no such bus"); }

class SharedReaderTest : public ModernGroupTest {
 protected:
  SharedReaderTest() { g_reads = 0; }

  ReaderLine line{[this] { return scan->limit(); }};
};

TEST_F(SharedReaderTest, aReaderRunsOnceForAllGroups) {
  SharedReader<Facts> reader("facts", readFacts);
  Outcome outcome;
  const Facts* first = reader.get(line, outcome);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(reader.get(line, outcome), first);
  EXPECT_EQ(g_reads, 1);
  EXPECT_EQ(outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(SharedReaderTest, everyGroupThatNeedsAReaderThatHangsSaysSo) {
  limit(50, 30000);
  SharedReader<Facts> reader("drives", hang);
  for (int i = 0; i < 2; ++i) {
    Outcome outcome;
    EXPECT_EQ(reader.get(line, outcome), nullptr);
    EXPECT_EQ(outcome.status(), OutcomeStatus::kTimedOut);
    EXPECT_EQ(outcome.reason(), "drives: timed out");
  }
  EXPECT_EQ(g_reads, 1);
}

TEST_F(SharedReaderTest, aReaderThatFailsSaysWhy) {
  SharedReader<Facts> reader("cards", fail);
  Outcome outcome;
  EXPECT_EQ(reader.get(line, outcome), nullptr);
  EXPECT_EQ(outcome.reason(), "cards: no such bus");
  EXPECT_EQ(outcome.status(), OutcomeStatus::kFailed);
}

TEST_F(SharedReaderTest, anotherReaderRunsAfterOneThatHangs) {
  limit(50, 30000);
  SharedReader<Facts> broken("drives", hang);
  SharedReader<Facts> sound("facts", readFacts);
  Outcome outcome;
  EXPECT_EQ(broken.get(line, outcome), nullptr);
  EXPECT_NE(sound.get(line, outcome), nullptr);
}

TEST_F(SharedReaderTest, whatAGroupWaitsForIsNotItsOwnTime) {
  line.beginGroup();
  EXPECT_EQ(line.waited().count(), 0);
  {
    const ReaderLine::Turn turn(line);
    std::this_thread::sleep_for(Milliseconds(60));
  }
  EXPECT_GE(line.waited().count(), 60);
  line.beginGroup();
  EXPECT_EQ(line.waited().count(), 0);
}

// --- the scan's own table ---

TEST_F(ModernGroupTest, theScansResultHasARowPerGroupInTheirOrder) {
  scan->addResult({"Memory", 1, Milliseconds(3), {}});
  Outcome partial;
  partial.note(OutcomeStatus::kPartial, "serial numbers: not root");
  scan->addResult({"Storage", 2, Milliseconds(15), partial});
  ModernTable table(*findGroup(MODERN_GROUPS_DEF, group::kScanResult));
  collectScanResult(*scan, table);
  const auto rows = rowsOf(table.build().get());
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0], (test::RowValues{{1, "Memory"}, {2, "1"}, {3, "3"}, {4, "complete"}}));
  EXPECT_EQ(
      rows[1],
      (test::RowValues{
          {1, "Storage"}, {2, "2"}, {3, "15"}, {4, "partial"}, {5, "serial numbers: not root"}}));
}

}  // namespace
}  // namespace quenlor
