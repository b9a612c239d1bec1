#include "limits/TimeoutStatvfs.h"

#include <fcntl.h>
#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include "host/Handles.h"
#include "host/Host.h"
#include "limits/ConfiguredLimit.h"
#include "limits/GetTableThread.h"

namespace quenlor {
namespace {

constexpr int kDefaultMicroseconds = 5000000;
constexpr int64_t kStepMicroseconds = 50000;

using Body = void* (*)(void* params);

// Owned by the caller and its worker together: whoever is done with it last frees it, so that a
// worker that comes back after its time still has what it writes to.
struct Measurement {
  Measurement(const char* path, Body measure) : params(path), body(measure) {}

  bool waitUntilDone(std::chrono::microseconds limit) {
    std::unique_lock lock(mutex);
    if (limit.count() <= 0) return isDone;
    return changed.wait_until(lock, std::chrono::steady_clock::now() + limit,
                              [this] { return isDone; });
  }

  void setDone() {
    const std::lock_guard lock(mutex);
    isDone = true;
    changed.notify_all();
  }

  ThreadParams params;  // the worker's alone until isDone
  const Body body;

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool isDone = false;
};

// A cancelled worker leaves by unwinding from within the body: nothing on the way may be noexcept.
void* runMeasurement(void* argument) {
  using Share = std::shared_ptr<Measurement>;
  const std::unique_ptr<const Share> share(static_cast<const Share*>(argument));
  Measurement& measurement = **share;
  measurement.body(&measurement.params);
  measurement.setDone();
  return nullptr;
}

// To open the mounted directory, or only to walk to it as a directory, makes the automounter mount
// what belongs there. Without O_DIRECTORY, O_PATH stops at the mount point itself.
void* measureAutofs(void* argument) {
  // Closing is a cancellation point, and a destructor is no place to be unwound from.
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  auto* params = static_cast<ThreadParams*>(argument);
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

int measureWithin(int timeout, const char* path, struct statvfs* out, Body body) {
  const auto measurement = std::make_shared<Measurement>(path, body);
  auto workersShare = std::make_unique<std::shared_ptr<Measurement>>(measurement);
  pthread_t worker{};
  if (pthread_create(&worker, nullptr, runMeasurement, workersShare.get()) != 0) return 1;
  static_cast<void>(workersShare.release());  // the worker's now

  if (!measurement->waitUntilDone(wholeSteps(timeout))) {
    reportAbandonedWorker();
    pthread_cancel(worker);
    pthread_detach(worker);
    return 1;
  }
  pthread_join(worker, nullptr);  // it has nothing left to do
  *out = measurement->params.rc == 0 ? measurement->params.result : (struct statvfs){};
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

int timeout_statvfs(const char* path, struct statvfs* out, int timeout) {
  return measureWithin(timeout, path, out, helper_execute);
}

int timeout_statvfs_autofs(const char* path, struct statvfs* out, int timeout) {
  return measureWithin(timeout, path, out, measureAutofs);
}

int GetDOVMaxTimeout() { return configuredLimit().value_or(kDefaultMicroseconds); }

}  // namespace quenlor
