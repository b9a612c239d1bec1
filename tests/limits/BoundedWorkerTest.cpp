#include "limits/BoundedWorker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <new>
#include <stdexcept>
#include <thread>

#include "limits/AbandonedWorkers.h"
#include "tests/support/NoThreads.h"

namespace quenlor {
namespace {

using End = BoundedWorker::End;
constexpr Milliseconds kLong{20000};
constexpr Milliseconds kShort{30};

TEST(BoundedWorkerTest, aJobRunsOnAThreadOfItsOwn) {
  BoundedWorker worker;
  std::thread::id id;
  EXPECT_EQ(worker.run([&] { id = std::this_thread::get_id(); }, kLong).end, End::kDone);
  EXPECT_NE(id, std::this_thread::get_id());
}

TEST(BoundedWorkerTest, jobsOneAfterTheOtherShareTheThread) {
  BoundedWorker worker;
  std::thread::id first;
  std::thread::id second;
  worker.run([&] { first = std::this_thread::get_id(); }, kLong);
  worker.run([&] { second = std::this_thread::get_id(); }, kLong);
  EXPECT_EQ(first, second);
}

TEST(BoundedWorkerTest, anExceptionIsAResult) {
  BoundedWorker worker;
  const auto result = worker.run([] { throw std::runtime_error("broken"); }, kLong);
  EXPECT_EQ(result.end, End::kThrew);
  EXPECT_EQ(result.what, "broken");
  EXPECT_EQ(worker.run([] { throw std::bad_alloc(); }, kLong).what, "out of memory");
  EXPECT_EQ(worker.run([] {}, kLong).end, End::kDone);
}

TEST(BoundedWorkerTest, aJobThatHangsIsGivenUpAndTheNextOneRuns) {
  auto release = std::make_shared<std::promise<void>>();
  auto ended = std::make_shared<std::promise<void>>();
  auto gate = std::make_shared<std::shared_future<void>>(release->get_future().share());
  {
    BoundedWorker worker;
    const auto result = worker.run(
        [gate, ended] {
          gate->wait();
          ended->set_value();
        },
        kShort);
    EXPECT_EQ(result.end, End::kTimedOut);
    EXPECT_TRUE(hasAbandonedWorkers());
    bool ran = false;
    EXPECT_EQ(worker.run([&] { ran = true; }, kLong).end, End::kDone);
    EXPECT_TRUE(ran);
  }
  release->set_value();  // it outlives the worker and touches what it owns alone
  EXPECT_EQ(ended->get_future().wait_for(kLong), std::future_status::ready);
}

TEST(BoundedWorkerTest, whatIsExcusedPutsTheLimitOff) {
  BoundedWorker worker;
  const auto excused = [] { return Milliseconds(10000); };
  const auto slow = [] { std::this_thread::sleep_for(4 * kShort); };
  EXPECT_EQ(worker.run(slow, kShort, excused).end, End::kDone);
}

TEST(BoundedWorkerTest, nothingExcusedLeavesTheLimit) {
  BoundedWorker worker;
  auto release = std::make_shared<std::promise<void>>();
  auto gate = std::make_shared<std::shared_future<void>>(release->get_future().share());
  EXPECT_EQ(worker.run([gate] { gate->wait(); }, kShort, [] { return Milliseconds(0); }).end,
            End::kTimedOut);
  release->set_value();
}

TEST(BoundedWorkerTest, whereNoThreadCanBeMadeTheJobRunsHere) {
  const test::NoThreads none;
  BoundedWorker worker;
  std::thread::id id;
  EXPECT_EQ(worker.run([&] { id = std::this_thread::get_id(); }, kShort).end, End::kDone);
  EXPECT_EQ(id, std::this_thread::get_id());
}

}  // namespace
}  // namespace quenlor
