#include "limits/AbandonedWorkers.h"

#include <atomic>

namespace quenlor {
namespace {

std::atomic<bool> g_anyAbandoned{false};

}  // namespace

void reportAbandonedWorker() { g_anyAbandoned = true; }

bool hasAbandonedWorkers() { return g_anyAbandoned; }

}  // namespace quenlor
