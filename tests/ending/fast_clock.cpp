// A clock that runs fast for the process that outlives a scan, so that a test need not wait for a
// quarter of an hour: preloaded, it stretches what that process measures and shortens what it waits
// for. The scan itself, a child, lives in ordinary time.
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <ctime>

namespace {

constexpr long kFactor = 300;
constexpr long kNanoseconds = 1000000000;

bool g_isFast = true;

__attribute__((constructor)) void stayOrdinaryInChildren() {
  pthread_atfork(nullptr, nullptr, [] { g_isFast = false; });
}

template <class Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) {
  static const auto call = original<int(clockid_t, timespec*)>("clock_gettime");
  const int result = call(clock, time);
  if (!g_isFast || result != 0) return result;
  const long nanoseconds = time->tv_nsec * kFactor;
  time->tv_sec = time->tv_sec * kFactor + nanoseconds / kNanoseconds;
  time->tv_nsec = nanoseconds % kNanoseconds;
  return result;
}

extern "C" int poll(pollfd* descriptors, nfds_t count, int timeout) {
  static const auto call = original<int(pollfd*, nfds_t, int)>("poll");
  if (!g_isFast || timeout <= 0) return call(descriptors, count, timeout);
  return call(descriptors, count, static_cast<int>(timeout / kFactor + 1));
}
