// What the "flags" line of /proc/cpuinfo means as a whole: what the kernel enabled, not what the
// processor was built with.
#pragma once

#include <string_view>

namespace quenlor {

// The highest level of the x86-64 psABI ("Micro-Architecture Levels") whose flags, and those of all
// levels below, are there: "x86-64-v1" to "x86-64-v4"; "" for a 32-bit processor or no flags.
const char* instructionSetOf(std::string_view flags);

// "vmx", "svm" or "".
const char* virtualizationExtensionOf(std::string_view flags);

}  // namespace quenlor
