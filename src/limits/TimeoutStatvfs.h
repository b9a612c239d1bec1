// statvfs with a time limit, for mounts whose server is gone.
#pragma once

#include <sys/statvfs.h>

#include <chrono>

namespace quenlor {

// What one worker and its caller share.
struct ThreadParams {
  explicit ThreadParams(const char* path);
  ~ThreadParams();
  ThreadParams(const ThreadParams&) = delete;
  ThreadParams& operator=(const ThreadParams&) = delete;

  char* path;  // heap copy, null when constructed from null
  struct statvfs result;
  int rc;
  int finished;
};

// Body of the worker; params is a ThreadParams. Returns null.
void* helper_execute(void* params);
// The same for the mount point of an automounter, which measuring it must not set to work: the file
// system is the automounter's own as long as nothing is mounted over it.
void* helper_execute_autofs(void* params);

// 0 when the call ended in time (out filled; all zero when statvfs failed), 1 on time-out or when
// no worker could be made. timeout in microseconds, rounded up to whole steps of 50 ms; 0 or less
// looks once and does not wait. A worker left behind is reported with reportAbandonedWorker().
int timeout_statvfs(const char* path, struct statvfs* out, int timeout);

// The same with helper_execute_autofs.
int timeout_statvfs_autofs(const char* path, struct statvfs* out, int timeout);

// The limit that a timeout in microseconds amounts to: whole steps of 50 ms.
std::chrono::microseconds wholeSteps(int timeout);

// The limit for timeout_statvfs in microseconds: "hwscanner.timeout", else five seconds.
int GetDOVMaxTimeout();

}  // namespace quenlor
