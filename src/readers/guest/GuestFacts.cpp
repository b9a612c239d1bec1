#include "readers/guest/GuestFacts.h"

#include <sys/stat.h>
#include <sys/utsname.h>

#include <cstring>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/guest/ContainerRules.h"

namespace quenlor {
namespace {

constexpr uint32_t kFirstHypervisorLeaf = 0x40000000;
constexpr uint32_t kHypervisorLeafStep = 0x100;
// Interfaces that a hypervisor imitates beside its own; none is known to show more than two.
constexpr uint32_t kMostInterfaces = 4;
constexpr uint32_t kTdxLeaf = 0x21;

std::string wordsText(uint32_t first, uint32_t second, uint32_t third) {
  std::string text(3 * sizeof(uint32_t), '\0');
  const uint32_t words[] = {first, second, third};
  std::memcpy(text.data(), words, sizeof words);
  return text;
}

void readHypervisorLeaves(CpuidFacts& facts) {
  CpuidRegisters registers;
  for (uint32_t number = 0; number < kMostInterfaces; ++number) {
    const uint32_t leaf = kFirstHypervisorLeaf + number * kHypervisorLeafStep;
    if (!host().cpuid(leaf, 0, &registers)) break;
    facts.signatures.push_back(wordsText(registers.ebx, registers.ecx, registers.edx));
  }
  if (facts.signatures.empty() || facts.signatures[0] != "Microsoft Hv") return;
  if (host().cpuid(0x40000003, 0, &registers)) facts.hyperVPrivileges = registers.ebx;
  if (host().cpuid(0x4000000C, 0, &registers)) facts.hyperVIsolation = registers.ebx;
}

CpuidFacts readCpuidFacts() {
  CpuidFacts facts;
  CpuidRegisters registers;
  if (!host().cpuid(1, 0, &registers)) return facts;
  facts.isGuest = (registers.ecx >> 31) != 0;
  if (!facts.isGuest) return facts;
  readHypervisorLeaves(facts);
  if (host().cpuid(kTdxLeaf, 0, &registers)) {
    facts.isTdx = wordsText(registers.ebx, registers.edx, registers.ecx) == "IntelTDX    ";
  }
  return facts;
}

bool exists(const char* path) {
  struct stat facts {};
  return host().stat(path, &facts) == 0;
}

std::string textOf(const std::string& path) {
  const WholeFile file = readWholeFile(path);
  return std::string(trimmed(file.bytes));
}

std::string linkOf(const char* path) {
  std::string target;
  return host().readLink(path, target) ? target : "";
}

XenFacts readXenFacts() {
  XenFacts facts;
  facts.hasProcXen = exists("/proc/xen");
  facts.type = textOf("/sys/hypervisor/type");
  if (facts.type.empty() && !facts.hasProcXen) return facts;
  facts.features = textOf("/sys/hypervisor/properties/features");
  facts.capabilities = textOf("/proc/xen/capabilities");
  return facts;
}

std::string readTracer() {
  const std::string process = statusField(textOf("/proc/self/status"), "TracerPid");
  const bool isNumber = process.find_first_not_of("0123456789") == std::string::npos;
  if (process.empty() || process == "0" || !isNumber) return "";
  return textOf("/proc/" + process + "/comm");
}

void readMarks(ContainerFacts& facts) {
  facts.hasVz = exists("/proc/vz");
  facts.hasBc = exists("/proc/bc");
  facts.hostManager = textOf("/run/host/container-manager");
  facts.systemdManager = textOf("/run/systemd/container");
  facts.hasContainerenv = exists("/run/.containerenv");
  facts.hasDockerenv = exists("/.dockerenv");
  facts.hasLxdSocket = exists("/dev/lxd/sock");
  facts.hasIncusSocket = exists("/dev/incus/sock");
  facts.hasKubernetesService = host().getenv("KUBERNETES_SERVICE_HOST") != nullptr;
  facts.hasKubernetesSecrets = exists("/var/run/secrets/kubernetes.io");
}

void readProcesses(ContainerFacts& facts) {
  facts.tracer = readTracer();
  const WholeFile environment = readWholeFile("/proc/1/environ");
  facts.isInitRefused = environment.status == FileStatus::kRefused;
  facts.initEnvironment = environmentValue(environment.bytes, "container");
  facts.cgroups = textOf("/proc/self/cgroup");
  facts.initCgroups = textOf("/proc/1/cgroup");
  facts.hasCgroupType = exists("/sys/fs/cgroup/cgroup.type");
  facts.uidMap = textOf("/proc/self/uid_map");
  facts.pidNamespace = linkOf("/proc/self/ns/pid");
  facts.cgroupNamespace = linkOf("/proc/self/ns/cgroup");
}

ContainerFacts readContainerFacts() {
  ContainerFacts facts;
  struct utsname names {};
  if (host().uname(&names) == 0) facts.osRelease = names.release;
  facts.kernelVersion = textOf("/proc/version");
  facts.hasModules = exists("/proc/modules");
  readMarks(facts);
  readProcesses(facts);
  return facts;
}

}  // namespace

std::string statusField(const std::string& status, const std::string& key) {
  std::string_view rest = status;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    if (line.starts_with(key + ":")) return std::string(trimmed(line.substr(key.size() + 1)));
    rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  }
  return "";
}

std::string environmentValue(const std::string& environment, const std::string& name) {
  std::string_view rest = environment;
  while (!rest.empty()) {
    const size_t end = rest.find('\0');
    const std::string_view variable = rest.substr(0, end);
    if (variable.starts_with(name + "=")) return std::string(variable.substr(name.size() + 1));
    rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  }
  return "";
}

std::string acpiMakerOf(const std::string& table) {
  constexpr size_t kMakerOffset = 10;
  constexpr size_t kMakerSize = 6;
  if (table.size() < kMakerOffset + kMakerSize) return "";
  return table.substr(kMakerOffset, kMakerSize);
}

GuestFacts readGuestFacts() {
  GuestFacts facts;
  facts.cpuid = readCpuidFacts();
  facts.xen = readXenFacts();
  facts.container = readContainerFacts();
  facts.hasSevGuestDevice = exists("/dev/sev-guest");
  facts.hasTdxGuestDevice = exists("/dev/tdx_guest");
  if (facts.cpuid.isGuest) {
    facts.acpiMaker = acpiMakerOf(readWholeFile("/sys/firmware/acpi/tables/DSDT").bytes);
  }
  facts.cloudInstanceId = textOf("/var/lib/cloud/data/instance-id");
  const std::string container = judgeContainer(facts.container).container;
  if (!container.empty()) facts.limits = readCgroupLimits(facts.container.cgroups);
  if (container == "other" && facts.container.isInitRefused) {
    facts.outcome.note(OutcomeStatus::kPartial, "kind of container: first process refused");
  }
  return facts;
}

}  // namespace quenlor
