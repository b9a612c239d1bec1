// Feature bits of a processor: the EDX half of CPUID leaf 1.
#pragma once

#include <cstdint>

namespace quenlor {

inline constexpr uint32_t kHyperThreadingFlag = 1u << 28;

struct X86Flag {
  const char* name;  // as the kernel writes it
  uint32_t mask;
};

extern const X86Flag IntelX86Flags[24];

// The masks of all flags whose name occurs anywhere in the text, "sse" in "sse2" included: the
// digest that identifies a processor depends on it.
uint32_t makeCPUflagsFromString(const char* flags);

}  // namespace quenlor
