#include "readers/network/HostNames.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>

#include "host/Host.h"
#include "limits/WorkerPool.h"

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using Names = std::vector<std::optional<std::string>>;
using Outcome = WorkerPool::Outcome;
using std::chrono::milliseconds;

// A question that was lost on the way is asked again after the first round. The answer comes soon.
constexpr milliseconds kTimeForRetry{1000};

std::optional<std::string> lookUp(const in_addr& address) {
  std::string name;
  if (!host().hostNameOfAddress(address, name)) return std::nullopt;
  return name;
}

std::vector<WorkerPool::Request> requestsFor(const std::vector<in_addr>& addresses,
                                             const std::shared_ptr<Names>& names) {
  std::vector<WorkerPool::Request> requests;
  for (size_t i = 0; i < addresses.size(); ++i) {
    requests.push_back({[names, i, address = addresses[i]] {
      // Unwound from within, the resolver would keep its locks.
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
      (*names)[i] = lookUp(address);
    }});
  }
  return requests;
}

void tellUnlessAllAnswered(const std::vector<Outcome>& outcomes, milliseconds limit) {
  if (std::count(outcomes.begin(), outcomes.end(), Outcome::kNoAnswer) == 0) return;
  std::fprintf(stderr,
               "quenlor: the name service did not answer within %lld ms, addresses have this "
               "machine's own name\n",
               static_cast<long long>(limit.count()));
}

}  // namespace

std::vector<std::optional<std::string>> hostNamesOf(const std::vector<in_addr>& addresses) {
  if (addresses.empty()) return {};
  const milliseconds limit = host().resolverRound() + kTimeForRetry;
  const auto end = Clock::now() + limit;
  const auto names = std::make_shared<Names>(addresses.size());
  WorkerBudget budget(WorkerPool::kMostWorkers);
  const auto outcomes = WorkerPool({limit, limit}, budget).run(requestsFor(addresses, names));
  tellUnlessAllAnswered(outcomes, limit);

  Names result(addresses.size());
  for (size_t i = 0; i < addresses.size(); ++i) {
    if (outcomes[i] == Outcome::kAnswered) result[i] = std::move((*names)[i]);
    // Where no thread can be made, look-ups are done in turn here.
    if (outcomes[i] == Outcome::kNotAsked && Clock::now() < end) result[i] = lookUp(addresses[i]);
  }
  return result;
}

}  // namespace quenlor
