#include "limits/WorkerPool.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <numeric>
#include <utility>

#include "host/ScanState.h"
#include "limits/AbandonedWorkers.h"

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using Outcome = WorkerPool::Outcome;
using Request = WorkerPool::Request;
using std::chrono::microseconds;

// A healthy call takes microseconds. One that takes this long keeps those behind it waiting.
constexpr std::chrono::milliseconds kPatience{20};

struct Worker {
  pthread_t thread{};       // the caller's alone
  size_t request = 0;       // that it is at
  Clock::time_point since;  // when it began with it
  bool hasEnded = false;    // takes no more requests
  bool isGivenUp = false;   // nobody looks at what it does any more

  bool isRunning() const { return !hasEnded && !isGivenUp; }
};

// Owned by the caller and its workers together: whoever comes back late still has what it touches.
struct Shared {
  std::mutex mutex;
  std::condition_variable changed;  // a worker has ended
  std::vector<Request> requests;    // never changed while workers run
  std::vector<size_t> order;        // those that may hang come last
  std::vector<Outcome> outcomes;
  std::vector<std::unique_ptr<Worker>> workers;
  size_t next = 0;       // in order
  size_t running = 0;    // workers at a request, but for those given up
  size_t atFirst = 0;    // of them at one that should not hang
  size_t mayGiveUp = 0;  // so many more

  bool isQueueEmpty() const { return next == order.size(); }
  const Request& front() const { return requests[order[next]]; }

  // Whether all requests that should not hang and are running do hang, it seems.
  bool isKeptWaiting() const {
    const auto recently = Clock::now() - kPatience;
    return std::none_of(workers.begin(), workers.end(), [&](const auto& worker) {
      return worker->isRunning() && !requests[worker->request].mayHang && worker->since > recently;
    });
  }

  // Whether the next request may be begun beside the running ones: each can hang. What may hang
  // lets all others be done before, unless those have used up the patience with them.
  bool mayBegin() const {
    if (isQueueEmpty() || (front().mayHang && atFirst > 0 && !isKeptWaiting())) return false;
    const size_t kept = front().mayHang ? WorkerPool::kReserve : 0;
    return running + kept < mayGiveUp;
  }

  void begin(Worker& worker) {
    worker.request = order[next++];
    worker.since = Clock::now();
    count(worker, 1);
  }

  // A worker that is at its request, or no longer is.
  void count(const Worker& worker, int step) {
    running += static_cast<size_t>(step);
    if (!requests[worker.request].mayHang) atFirst += static_cast<size_t>(step);
  }

  // What the worker is to do next, after what it has done; null: it is to end.
  const Request* finish(Worker& worker) {
    const std::lock_guard lock(mutex);
    if (worker.isGivenUp) return nullptr;
    countProgress();
    outcomes[worker.request] = Outcome::kAnswered;
    count(worker, -1);
    if (mayBegin()) {
      begin(worker);
      return &requests[worker.request];
    }
    worker.hasEnded = true;
    changed.notify_all();
    return nullptr;
  }
};

struct WorkerStart {
  std::shared_ptr<Shared> shared;
  Worker* worker;
  const Request* first;
};

// A cancelled worker leaves by unwinding from within the call: nothing on the way may be noexcept.
void* runWorker(void* argument) {
  const std::unique_ptr<const WorkerStart> start(static_cast<const WorkerStart*>(argument));
  Shared& shared = *start->shared;
  const Request* request = start->first;
  while (request != nullptr) {
    request->call();
    request = shared.finish(*start->worker);
  }
  return nullptr;
}

// The caller's side of one run.
class Supervisor {
 public:
  Supervisor(std::shared_ptr<Shared> shared, const WorkerPool::Limits& limits, WorkerBudget& budget)
      : m_shared(std::move(shared)),
        m_limit(std::max(limits.each, microseconds(0))),
        m_end(limits.together ? Clock::now() + *limits.together : Clock::time_point::max()),
        m_budget(budget) {}

  void run() {
    std::unique_lock lock(m_shared->mutex);
    while (addWorkers() || m_shared->running > 0) {
      m_shared->changed.wait_until(lock, nextLook());
      giveUpOverdue();
    }
    // What is left is not asked.
    m_shared->next = m_shared->order.size();
    lock.unlock();
    joinEnded();
  }

 private:
  // False when none was needed, or none could be had.
  bool addWorkers() {
    bool added = false;
    while (needsWorker() && startWorker()) added = true;
    return added;
  }

  bool needsWorker() const {
    const Shared& shared = *m_shared;
    if (shared.running >= WorkerPool::kMostWorkers || !shared.mayBegin() || Clock::now() >= m_end) {
      return false;
    }
    return shared.running == 0 || shared.front().mayHang || shared.isKeptWaiting();
  }

  bool startWorker() {
    Shared& shared = *m_shared;
    Worker& worker = *shared.workers.emplace_back(std::make_unique<Worker>());
    shared.begin(worker);
    auto start = std::make_unique<WorkerStart>(
        WorkerStart{m_shared, &worker, &shared.requests[worker.request]});
    if (pthread_create(&worker.thread, nullptr, runWorker, start.get()) != 0) {
      --shared.next;
      shared.count(worker, -1);
      shared.workers.pop_back();
      return false;
    }
    static_cast<void>(start.release());  // the worker's now
    return true;
  }

  // When a worker's time is over, all of them's, or patience with those that should not hang.
  Clock::time_point nextLook() const {
    Clock::time_point look = m_end;
    for (const auto& worker : m_shared->workers) {
      if (worker->isRunning()) look = std::min(look, worker->since + m_limit);
    }
    const bool othersWait = !m_shared->isQueueEmpty() && m_shared->atFirst > 0;
    return othersWait ? std::min(look, Clock::now() + kPatience) : look;
  }

  void giveUpOverdue() {
    const auto now = Clock::now();
    for (const auto& worker : m_shared->workers) {
      if (worker->isRunning() && (now >= m_end || now >= worker->since + m_limit)) giveUp(*worker);
    }
  }

  void giveUp(Worker& worker) {
    worker.isGivenUp = true;
    m_shared->outcomes[worker.request] = Outcome::kNoAnswer;
    m_shared->count(worker, -1);
    --m_shared->mayGiveUp;
    m_budget.spend();
    reportAbandonedWorker();
    countProgress();  // the scan goes on without it
    pthread_cancel(worker.thread);
    pthread_detach(worker.thread);
  }

  void joinEnded() {
    for (const auto& worker : m_shared->workers) {
      if (!worker->isGivenUp) pthread_join(worker->thread, nullptr);
    }
  }

  std::shared_ptr<Shared> m_shared;
  const microseconds m_limit;
  const Clock::time_point m_end;
  WorkerBudget& m_budget;
};

// Positions of the requests, those that may hang last.
std::vector<size_t> orderOf(const std::vector<Request>& requests) {
  std::vector<size_t> order(requests.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_partition(order.begin(), order.end(),
                        [&requests](size_t i) { return !requests[i].mayHang; });
  return order;
}

}  // namespace

std::vector<Outcome> WorkerPool::run(std::vector<Request> requests) {
  const auto shared = std::make_shared<Shared>();
  shared->order = orderOf(requests);
  shared->outcomes.assign(requests.size(), Outcome::kNotAsked);
  shared->requests = std::move(requests);
  shared->mayGiveUp = m_budget.left();
  Supervisor(shared, m_limits, m_budget).run();
  const std::lock_guard lock(shared->mutex);
  return shared->outcomes;
}

}  // namespace quenlor
