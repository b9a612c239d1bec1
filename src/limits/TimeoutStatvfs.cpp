#include "limits/TimeoutStatvfs.h"

#include <fcntl.h>
#include <pthread.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/Handles.h"
#include "host/Host.h"
#include "limits/ConfiguredLimit.h"
#include "limits/WorkerPool.h"

namespace quenlor {
namespace {

constexpr int kDefaultMicroseconds = 5000000;
constexpr int64_t kStepMicroseconds = 50000;

using Body = void* (*)(void* params);

int measureWithin(int timeout, const char* path, struct statvfs* out, Body body) {
  const auto params = std::make_shared<ThreadParams>(path);
  WorkerBudget budget(1);
  WorkerPool pool({wholeSteps(timeout)}, budget);
  const auto outcomes = pool.run({{[params, body] { body(params.get()); }, false}});
  if (outcomes.front() != WorkerPool::Outcome::kAnswered) return 1;
  *out = params->rc == 0 ? params->result : (struct statvfs){};
  return 0;
}

}  // namespace

ThreadParams::ThreadParams(const char* pathToCopy)
    : path(pathToCopy == nullptr ? nullptr : ::strdup(pathToCopy)), result(), rc(0), finished(0) {}

ThreadParams::~ThreadParams() { std::free(path); }

void* helper_execute(void* argument) {
  auto* params = static_cast<ThreadParams*>(argument);
  if (params == nullptr) return nullptr;
  if (params->path != nullptr) params->rc = host().statvfs(params->path, &params->result);
  params->finished = 1;
  return nullptr;
}

// To open the mounted directory, or only to walk to it as a directory, makes the automounter mount
// what belongs there. Without O_DIRECTORY, O_PATH stops at the mount point itself.
void* helper_execute_autofs(void* argument) {
  // Closing is a cancellation point, and a destructor is no place to be unwound from.
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  auto* params = static_cast<ThreadParams*>(argument);
  if (params == nullptr) return nullptr;
  if (params->path != nullptr) {
    const Descriptor directory(host().open(params->path, O_PATH, 0));
    params->rc = directory ? host().fstatvfs(directory.get(), &params->result) : -1;
  }
  params->finished = 1;
  return nullptr;
}

std::chrono::microseconds wholeSteps(int timeout) {
  const int64_t steps = (int64_t{timeout} + kStepMicroseconds - 1) / kStepMicroseconds;
  return std::chrono::microseconds(steps * kStepMicroseconds);
}

int timeout_statvfs(const char* path, struct statvfs* out, int timeout) {
  return measureWithin(timeout, path, out, helper_execute);
}

int timeout_statvfs_autofs(const char* path, struct statvfs* out, int timeout) {
  return measureWithin(timeout, path, out, helper_execute_autofs);
}

int GetDOVMaxTimeout() { return configuredLimit().value_or(kDefaultMicroseconds); }

}  // namespace quenlor
