#include "limits/WorkerPool.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/Event.h"
#include "host/ScanState.h"
#include "limits/GetTableThread.h"
#include "tests/support/NoThreads.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Outcome = WorkerPool::Outcome;
using Request = WorkerPool::Request;

constexpr WorkerPool::Limits kGenerous{60s};

// Calls that hang until the test ends. What they touch they share with the test.
class Hanging {
 public:
  Request request(bool mayHang = true) {
    return {[state = m_state] {
              // As in the kernel, which does not let go of a cancelled thread either.
              pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
              ++state->entered;
              state->release.wait(60000);
              ++state->left;
            },
            mayHang};
  }

  int entered() const { return m_state->entered; }

  ~Hanging() {
    m_state->release.signal();
    while (m_state->left < m_state->entered) std::this_thread::sleep_for(1ms);
  }

 private:
  struct State {
    Event release;
    std::atomic<int> entered{0};
    std::atomic<int> left{0};
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

std::vector<Request> hangingRequests(Hanging& hanging, size_t count, bool mayHang = true) {
  std::vector<Request> requests;
  for (size_t i = 0; i < count; ++i) requests.push_back(hanging.request(mayHang));
  return requests;
}

size_t count(const std::vector<Outcome>& outcomes, Outcome wanted) {
  return static_cast<size_t>(std::count(outcomes.begin(), outcomes.end(), wanted));
}

TEST(WorkerPool, nothingToDoIsDoneAtOnce) {
  WorkerBudget budget(8);
  EXPECT_TRUE(WorkerPool(kGenerous, budget).run({}).empty());
}

TEST(WorkerPool, everyCallIsMadeOnce_outcomesStandInOrder) {
  WorkerBudget budget(8);
  const auto calls = std::make_shared<std::vector<std::atomic<int>>>(1000);
  std::vector<Request> requests;
  for (size_t i = 0; i < 1000; ++i) requests.push_back({[calls, i] { ++(*calls)[i]; }, i % 3 == 0});
  const auto outcomes = WorkerPool(kGenerous, budget).run(requests);
  EXPECT_EQ(count(outcomes, Outcome::kAnswered), 1000u);
  for (const auto& calledTimes : *calls) EXPECT_EQ(calledTimes, 1);
  EXPECT_EQ(budget.left(), 8u);
}

TEST(WorkerPool, quickCallsThatShouldNotHangShareOneWorker) {
  WorkerBudget budget(64);
  std::mutex mutex;
  std::set<pthread_t> workers;
  std::vector<Request> requests(5000, {[&] {
                                         const std::lock_guard lock(mutex);
                                         workers.insert(pthread_self());
                                       },
                                       false});
  WorkerPool(kGenerous, budget).run(requests);
  // One, and company only where this machine let it wait.
  EXPECT_LE(workers.size(), 8u);
}

TEST(WorkerPool, whatMayHangIsAskedLast) {
  WorkerBudget budget(64);
  std::mutex mutex;
  std::string order;
  const auto note = [&](char letter) {
    return [&, letter] {
      const std::lock_guard lock(mutex);
      order += letter;
    };
  };
  const std::vector<Request> requests{{note('R'), true}, {note('a'), false}, {note('b'), false}};
  // The best of a few rounds: what a busy machine delays is not waited for.
  for (int round = 0; round < 5; ++round) {
    order.clear();
    WorkerPool(kGenerous, budget).run(requests);
    ASSERT_EQ(order.size(), 3u);
    if (order.back() == 'R') break;
  }
  EXPECT_EQ(order.back(), 'R');
}

TEST(WorkerPool, twentyCallsThatHangCostOneLimit) {
  WorkerBudget budget(64);
  Hanging hanging;
  const auto before = Clock::now();
  const auto outcomes = WorkerPool({500ms}, budget).run(hangingRequests(hanging, 20));
  const auto waited = Clock::now() - before;
  EXPECT_EQ(count(outcomes, Outcome::kNoAnswer), 20u);
  EXPECT_GE(waited, 500ms);
  EXPECT_LT(waited, 1000ms);
  EXPECT_EQ(budget.left(), 44u);
  EXPECT_TRUE(hasAbandonedWorkers());
}

TEST(WorkerPool, callsThatHangWhereNoneShouldGetCompanyAndCostOneLimit) {
  WorkerBudget budget(64);
  Hanging hanging;
  auto requests = hangingRequests(hanging, 5, false);
  requests.push_back({[] {}, false});
  const auto before = Clock::now();
  const auto outcomes = WorkerPool({1s}, budget).run(requests);
  EXPECT_EQ(count(outcomes, Outcome::kNoAnswer), 5u);
  EXPECT_EQ(outcomes[5], Outcome::kAnswered);
  EXPECT_LT(Clock::now() - before, 2s);
}

TEST(WorkerPool, callThatHangsWhereNoneShouldHoldsUpThoseThatMayHangOnlyForMoment) {
  WorkerBudget budget(64);
  Hanging hanging;
  std::atomic<int> answered{0};
  std::vector<Request> requests(500, {[&answered] { ++answered; }, true});
  requests.push_back(hanging.request(false));
  const auto before = Clock::now();
  WorkerPool({1s}, budget).run(requests);
  EXPECT_EQ(answered, 500);
  EXPECT_LT(Clock::now() - before, 3s);
}

TEST(WorkerPool, eachCallHasItsOwnLimit_slowOnesTogetherMayTakeLonger) {
  WorkerBudget budget(2);  // one worker for what may hang
  std::vector<Request> slow(4, {[] { std::this_thread::sleep_for(100ms); }, true});
  const auto outcomes = WorkerPool({10s}, budget).run(slow);
  EXPECT_EQ(count(outcomes, Outcome::kAnswered), 4u);
}

TEST(WorkerPool, limitTogetherEndsAll_whatWasNotBegunIsNotAsked) {
  WorkerBudget budget(5);
  Hanging hanging;
  const auto before = Clock::now();
  const auto outcomes = WorkerPool({60s, 200ms}, budget).run(hangingRequests(hanging, 10));
  EXPECT_GE(Clock::now() - before, 200ms);
  EXPECT_LT(Clock::now() - before, 10s);
  EXPECT_EQ(count(outcomes, Outcome::kNoAnswer), 4u);
  EXPECT_EQ(count(outcomes, Outcome::kNotAsked), 6u);
}

TEST(WorkerPool, noMoreAreGivenUpThanTheBudgetAllows_oneIsKeptForThoseThatShouldNotHang) {
  WorkerBudget budget(64);
  Hanging hanging;
  const auto outcomes = WorkerPool({200ms}, budget).run(hangingRequests(hanging, 100));
  EXPECT_EQ(count(outcomes, Outcome::kNoAnswer), 63u);
  EXPECT_EQ(count(outcomes, Outcome::kNotAsked), 37u);
  EXPECT_EQ(hanging.entered(), 63);
  EXPECT_EQ(budget.left(), 1u);

  const auto later = WorkerPool({200ms}, budget).run({{[] {}, true}, {[] {}, false}});
  EXPECT_EQ(later, (std::vector<Outcome>{Outcome::kNotAsked, Outcome::kAnswered}));
}

TEST(WorkerPool, workerThatHangsIsReplaced) {
  WorkerBudget budget(3);  // two workers at once for what may hang
  Hanging hanging;
  std::vector<Request> requests{hanging.request()};
  std::atomic<int> answered{0};
  for (int i = 0; i < 10; ++i) requests.push_back({[&answered] { ++answered; }, true});
  const auto outcomes = WorkerPool({200ms}, budget).run(requests);
  EXPECT_EQ(outcomes[0], Outcome::kNoAnswer);
  EXPECT_EQ(answered, 10);
}

TEST(WorkerPool, limitOfZeroLooksOnce) {
  WorkerBudget budget(64);
  Hanging hanging;
  const auto before = Clock::now();
  const auto outcomes = WorkerPool({0us}, budget).run({hanging.request()});
  EXPECT_EQ(outcomes[0], Outcome::kNoAnswer);
  EXPECT_LT(Clock::now() - before, 5s);
  while (hanging.entered() == 0) std::this_thread::sleep_for(1ms);
}

TEST(WorkerPool, withoutThreadsNothingIsAsked) {
  const test::NoThreads none;
  WorkerBudget budget(64);
  bool asked = false;
  const auto outcomes = WorkerPool(kGenerous, budget).run({{[&asked] { asked = true; }, true}});
  EXPECT_EQ(outcomes[0], Outcome::kNotAsked);
  EXPECT_FALSE(asked);
}

TEST(WorkerPool, eachAnswerAndEachWorkerGivenUpIsProgressOfTheScan) {
  ScanState state;
  useScanState(&state);
  WorkerBudget budget(64);
  WorkerPool(kGenerous, budget).run(std::vector<Request>(100, {[] {}, true}));
  EXPECT_EQ(state.progress, 100U);
  Hanging hanging;
  WorkerPool({50ms}, budget).run({hanging.request()});
  EXPECT_EQ(state.progress, 101U);
  useScanState(nullptr);
}

TEST(WorkerPool, callThatReturnsTooLateChangesNoOutcome) {
  WorkerBudget budget(64);
  std::vector<Outcome> outcomes;
  {
    Hanging hanging;
    outcomes = WorkerPool({50ms}, budget).run({hanging.request(), {[] {}, true}});
  }
  EXPECT_EQ(outcomes, (std::vector<Outcome>{Outcome::kNoAnswer, Outcome::kAnswered}));
}

}  // namespace
}  // namespace quenlor
