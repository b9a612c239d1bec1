// Workers that were given up: while one lives, the process must not run destructors under its feet.
#pragma once

namespace quenlor {

void reportAbandonedWorker();
bool hasAbandonedWorkers();

}  // namespace quenlor
