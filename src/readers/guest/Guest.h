// Where the system runs: on the machine itself, under a hypervisor, in a container, in a cloud.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "readers/guest/CgroupLimits.h"
#include "readers/guest/GuestFacts.h"

namespace quenlor {

struct Guest {
  bool isVirtualMachine = false;
  bool isContainer = false;
  bool isVmware = false;              // CPUID says so: the agent of VMware may be asked
  std::string hypervisor, container;  // words of HypervisorRules.h and ContainerRules.h; or empty
  std::vector<std::string> evidence;  // what told hypervisor and container
  std::string cloud, instanceId;      // or empty
  std::string confidential;           // or empty
  CgroupLimits limits;                // only in a container

  // "none", "vm", "container" or "container in vm".
  const char* virtualization() const;
};

// The texts come from the firmware's table, the vendor is the processor's by /proc/cpuinfo: both
// have readers of their own.
Guest judgeGuest(const GuestFacts& facts, const MachineTexts& texts, const std::string& cpuVendor);

}  // namespace quenlor
