// The guarded collection: module handling, time limit, and what an abandoned worker may still
// touch.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "groups/storage/StorageGroup.h"
#include "limits/GetTableThread.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/ConfiguredProgram.h"
#include "tests/support/NoThreads.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::ScriptedSgDevice;
using ::testing::Contains;
using ::testing::Not;
using Clock = std::chrono::steady_clock;

constexpr const char* kLoad = "/sbin/modprobe --first-time sg 2>/tmp/modprobe.error";
constexpr const char* kShow = "cat /tmp/modprobe.error 2>/dev/null";
constexpr const char* kUnload = "/sbin/modprobe --first-time -r sg 2>/dev/null";

// The time limit of collections, in milliseconds, for the object's lifetime.
class TimeLimit {
 public:
  explicit TimeLimit(int milliseconds)
      : m_program("hwscanner.timeout = " + std::to_string(milliseconds) + "\n") {}

 private:
  test::ConfiguredProgram m_program;
};

// A device whose first read does not return until it is released.
class StuckDevice {
 public:
  test::FakeDevice node() {
    test::FakeDevice stuck = m_device.genericNode();
    stuck.read = [this, answer = stuck.read](void* data, size_t size) {
      std::unique_lock lock(m_mutex);
      m_reader = gettid();
      m_isRead = true;
      m_changed.notify_all();
      m_changed.wait(lock, [this] { return m_isReleased; });
      return answer(data, size);
    };
    return stuck;
  }

  void waitUntilRead() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isRead; });
  }

  // Lets the reading thread go on and waits for its end, which nobody can join.
  void releaseAndOutlive() {
    std::unique_lock lock(m_mutex);
    m_isReleased = true;
    m_changed.notify_all();
    const std::string reader = "/proc/self/task/" + std::to_string(m_reader);
    lock.unlock();
    while (std::filesystem::exists(reader))
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    lock.lock();  // what the thread did under the lock has happened before
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_isRead = false;
  bool m_isReleased = false;
  pid_t m_reader = 0;
  ScriptedSgDevice m_device;
};

class StorageTimeoutTest : public ::testing::Test {
 protected:
  StorageTimeoutTest() { StorageGroup::forgetEnumeration(); }
  ~StorageTimeoutTest() override { StorageGroup::forgetEnumeration(); }

  void letModprobeLoadTheModule() {
    machine.directories["/tmp"];
    machine.permissions["/tmp"] = 01777;
    machine.commands[kLoad] = {};
    machine.commands[kShow] = {};
  }

  FakeHost machine;
};

TEST_F(StorageTimeoutTest, tableOfACollectionThatEndsInTimeIsReturned) {
  const TimeLimit limit(60000);
  const bool earlierTestAbandonedOne = hasAbandonedWorkers();
  ScriptedSgDevice disk;
  machine.devices["/dev/sg0"] = disk.genericNode();
  EXPECT_EQ(test::collect<StorageGroup>().size(), 1U);
  EXPECT_THAT(machine.started, Not(Contains(kUnload)));
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.openCommands(), 0);
  EXPECT_EQ(hasAbandonedWorkers(), earlierTestAbandonedOne);
}

TEST_F(StorageTimeoutTest, moduleThatThisRunLoadedIsUnloaded) {
  const TimeLimit limit(60000);
  letModprobeLoadTheModule();
  EXPECT_TRUE(test::collect<StorageGroup>().empty());
  EXPECT_EQ(machine.started.front(), kLoad);
  EXPECT_EQ(machine.started.back(), kUnload);
}

TEST_F(StorageTimeoutTest, traceFollowsTheCollectionFromTheModuleToItsResult) {
  const test::CapturedTraces traces;
  const TimeLimit limit(60000);
  letModprobeLoadTheModule();
  machine.directories["/proc/scsi/sg"];
  EXPECT_TRUE(test::collect<StorageGroup>().empty());
  long last = -1;
  for (const char* record :
       {"hardware StorageGroup", "hardware  found /dev/sg*  cycle = 0", "hardware Load SG Module",
        "call gatherIDEDriveInformation()", "hardware Thread for StorageGroup finished : 0",
        "hardware Unload SG MODULE"}) {
    EXPECT_GT(traces.position(record), last) << record;
    last = traces.position(record);
  }
}

TEST_F(StorageTimeoutTest, sgMapIsReadOncePerRun) {
  const TimeLimit limit(60000);
  ScriptedSgDevice disk;
  machine.devices["/dev/sg0"] = disk.genericNode();
  for (int scan = 0; scan < 2; ++scan) EXPECT_EQ(test::collect<StorageGroup>().size(), 1U);
  EXPECT_EQ(std::count(machine.started.begin(), machine.started.end(), "sg_map -x 2>/dev/null"), 1);
}

TEST_F(StorageTimeoutTest, collectionThatHangsYieldsNoTableAndSaysSo) {
  const test::CapturedTraces failures("MIN");
  const TimeLimit limit(200);
  letModprobeLoadTheModule();
  StuckDevice stuck;
  machine.devices["/dev/sg0"] = stuck.node();
  auto group = std::make_unique<StorageGroup>();

  ::testing::internal::CaptureStderr();
  const auto start = Clock::now();
  EXPECT_EQ(group->getTable(), nullptr);
  const auto elapsed = Clock::now() - start;
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: Storage did not finish within 200 ms and is left out\n");
  EXPECT_GE(elapsed, std::chrono::milliseconds(200));
  EXPECT_LT(elapsed, std::chrono::milliseconds(300));
  EXPECT_TRUE(hasAbandonedWorkers());
  EXPECT_EQ(machine.started.back(), kUnload);
  EXPECT_EQ(failures.count("getTable() hardware Thread for StorageGroup hang : -172"), 1);

  // The driver deletes the group while the worker is still at work.
  stuck.waitUntilRead();
  group.reset();
  stuck.releaseAndOutlive();
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(StorageTimeoutTest, nextCollectionAfterAHangStartsAfresh) {
  const TimeLimit limit(200);
  ScriptedSgDevice first;
  StuckDevice stuck;
  machine.devices["/dev/sg0"] = first.genericNode();
  machine.devices["/dev/sg1"] = stuck.node();
  ::testing::internal::CaptureStderr();
  EXPECT_TRUE(test::collect<StorageGroup>().empty());
  ::testing::internal::GetCapturedStderr();
  stuck.waitUntilRead();

  // The worker is in the middle of its walk over the nodes and keeps its place there.
  const TimeLimit enough(60000);
  FakeHost repaired;
  ScriptedSgDevice second;
  repaired.devices["/dev/sg0"] = second.genericNode();
  const auto rows = test::collect<StorageGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(test::valueOf(rows[0], 1), "1");
  EXPECT_THAT(repaired.started, Contains("sg_map -x 2>/dev/null"));
  stuck.releaseAndOutlive();
  EXPECT_EQ(repaired.openDescriptors(), 0);
}

TEST_F(StorageTimeoutTest, workerThatCannotBeStartedYieldsNoTableAndSaysSo) {
  const test::CapturedTraces failures("MIN");
  letModprobeLoadTheModule();
  ::testing::internal::CaptureStderr();
  {
    const test::NoThreads refused;
    StorageGroup group;
    EXPECT_EQ(group.getTable(), nullptr);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: Storage could not be started and is left out\n");
  EXPECT_EQ(failures.count("getTable() hardware Thread for StorageGroup cannot be started"), 1);
  EXPECT_EQ(machine.started.back(), kUnload);
}

TEST_F(StorageTimeoutTest, limitThatIsNoNumberGivesUpAtOnceUnlessDone) {
  const TimeLimit limit(0);
  StuckDevice stuck;
  machine.devices["/dev/sg0"] = stuck.node();
  ::testing::internal::CaptureStderr();
  StorageGroup group;
  EXPECT_EQ(group.getTable(), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: Storage did not finish within 0 ms and is left out\n");
  stuck.waitUntilRead();
  stuck.releaseAndOutlive();
  EXPECT_EQ(machine.openDescriptors(), 0);
}

}  // namespace
}  // namespace quenlor
