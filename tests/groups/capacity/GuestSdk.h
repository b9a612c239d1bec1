// The guest SDK's library on a fake machine.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

inline constexpr uint32_t kUnlimited = 0xFFFFFFFF;

// The guest SDK, as far as the group asks it: no handle, a session, four numbers.
struct GuestSdk {
  static inline uint32_t limit = kUnlimited;
  static inline uint32_t hostSpeed = 2000;

  static const char* errorText(int) { return "text"; }
  static int openHandle(void**) { return 0; }
  static int withHandle(void*) { return 0; }
  static int sessionId(void*, uint64_t* id) {
    *id = 1;
    return 0;
  }
  static int getLimit(void*, uint32_t* mhz) {
    *mhz = limit;
    return 0;
  }
  static int getHostSpeed(void*, uint32_t* mhz) {
    *mhz = hostSpeed;
    return 0;
  }
  static int getOther(void*, uint32_t* value) {
    *value = 7;
    return 0;
  }

  static void* find(void*, const char* symbol) {
    const std::string name = symbol;
    if (name == "VMGuestLib_GetErrorText") return reinterpret_cast<void*>(errorText);
    if (name == "VMGuestLib_OpenHandle") return reinterpret_cast<void*>(openHandle);
    if (name == "VMGuestLib_GetSessionId") return reinterpret_cast<void*>(sessionId);
    if (name == "VMGuestLib_GetCpuLimitMHz") return reinterpret_cast<void*>(getLimit);
    if (name == "VMGuestLib_GetHostProcessorSpeed") return reinterpret_cast<void*>(getHostSpeed);
    if (name.starts_with("VMGuestLib_GetCpu")) return reinterpret_cast<void*>(getOther);
    return reinterpret_cast<void*>(withHandle);
  }

  static void installOn(FakeHost& host, uint32_t cpuLimit, uint32_t hostMhz) {
    limit = cpuLimit;
    hostSpeed = hostMhz;
    host.loadLibrary = [&host](const char*, int) -> void* { return &host; };
    host.findSymbol = find;
  }
};

}  // namespace quenlor::test
