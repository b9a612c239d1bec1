// A clock that runs fast for the process that outlives a scan, so that a test need not wait for a
// quarter of an hour: preloaded, it stretches what that process measures and shortens what it waits
// for. Once that process has something to say, its patience is over and it lives in ordinary time,
// as the scan itself, a child, always does.
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <ctime>

namespace {

constexpr long kFactor = 300;
constexpr long kNanoseconds = 1000000000;

bool g_isFast = true;
timespec g_ahead{};  // of the real clock, in ordinary time

template <class Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int realTime(clockid_t clock, timespec* time) {
  static const auto call = original<int(clockid_t, timespec*)>("clock_gettime");
  return call(clock, time);
}

timespec sum(const timespec& one, const timespec& other) {
  const long nanoseconds = one.tv_nsec + other.tv_nsec;
  return {one.tv_sec + other.tv_sec + nanoseconds / kNanoseconds, nanoseconds % kNanoseconds};
}

timespec times(const timespec& time, long factor) {
  const long nanoseconds = time.tv_nsec * factor;
  return {time.tv_sec * factor + nanoseconds / kNanoseconds, nanoseconds % kNanoseconds};
}

// The clock goes on from where it is.
void becomeOrdinary() {
  timespec now{};
  realTime(CLOCK_MONOTONIC, &now);
  g_ahead = times(now, kFactor - 1);
  g_isFast = false;
}

__attribute__((constructor)) void stayOrdinaryInChildren() {
  pthread_atfork(nullptr, nullptr, [] { g_isFast = false; });
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) {
  const int result = realTime(clock, time);
  if (result == 0) *time = g_isFast ? times(*time, kFactor) : sum(*time, g_ahead);
  return result;
}

extern "C" int poll(pollfd* descriptors, nfds_t count, int timeout) {
  static const auto call = original<int(pollfd*, nfds_t, int)>("poll");
  if (g_isFast && descriptors->fd == STDERR_FILENO) becomeOrdinary();
  const bool isShortened = g_isFast && timeout > 0;
  return call(descriptors, count, isShortened ? static_cast<int>(timeout / kFactor + 1) : timeout);
}
