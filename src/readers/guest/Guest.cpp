#include "readers/guest/Guest.h"

#include "readers/guest/CloudRules.h"
#include "readers/guest/ContainerRules.h"
#include "readers/guest/HypervisorRules.h"

namespace quenlor {

const char* Guest::virtualization() const {
  if (isVirtualMachine) return isContainer ? "container in vm" : "vm";
  return isContainer ? "container" : "none";
}

Guest judgeGuest(const GuestFacts& facts, const MachineTexts& texts, const std::string& cpuVendor) {
  Guest guest;
  const HypervisorVerdict hypervisor = judgeHypervisor(facts, texts, cpuVendor);
  const ContainerVerdict container = judgeContainer(facts.container);
  guest.isVirtualMachine = hypervisor.isGuest;
  guest.hypervisor = hypervisor.hypervisor;
  guest.isContainer = !container.container.empty();
  guest.container = container.container;
  guest.limits = facts.limits;
  for (const std::string& evidence : {hypervisor.evidence, container.evidence}) {
    if (!evidence.empty()) guest.evidence.push_back(evidence);
  }
  const CloudVerdict cloud = judgeCloud(facts, texts);
  guest.cloud = cloud.cloud;
  guest.instanceId = cloud.instanceId;
  guest.isVmware = isVmwareByCpuid(facts);
  guest.confidential = confidentialKind(facts);
  return guest;
}

}  // namespace quenlor
