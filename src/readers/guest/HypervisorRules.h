// Which hypervisor a machine runs under, judged from facts in an order that avoids known mistakes:
// some hypervisors imitate others, and some real machines look like guests.
#pragma once

#include <optional>
#include <string>

#include "readers/guest/GuestFacts.h"

namespace quenlor {

struct HypervisorVerdict {
  bool isGuest = false;
  // "kvm", "qemu", "vmware", "hyper-v", "xen", "virtualbox", "parallels", "bhyve", "acrn", "apple",
  // "firecracker" or "other"; empty outside a guest.
  std::string hypervisor;
  std::string evidence;  // "cpuid:KVMKVMKVM"; empty outside a guest
};

// `cpuVendor` is the processor's vendor by /proc/cpuinfo.
HypervisorVerdict judgeHypervisor(const GuestFacts& facts, const MachineTexts& texts,
                                  const std::string& cpuVendor);

// CPUID says VMware, whatever else is told: only then may its agent be asked.
bool isVmwareByCpuid(const GuestFacts& facts);

// "sev-snp" or "tdx" where it is certainly active; empty elsewhere. That a processor can do it
// proves nothing, and what would tell of SEV alone is a register that only a driver reads.
std::string confidentialKind(const GuestFacts& facts);

}  // namespace quenlor
