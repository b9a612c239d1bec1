// The "cpuid" command: one processor's identity from its CPUID leaves, the machine's packages,
// cores and threads from /sys/devices/system/cpu, else /proc/cpuinfo, else CPUID alone.
#pragma once

#include <memory>

#include "readers/cpuid/VtCommand.h"

namespace quenlor {

// The result as VtCommand.h describes it; null when neither CPUID nor the kernel tells anything.
std::unique_ptr<VtExecInfo> runCpuidCommand();

}  // namespace quenlor
