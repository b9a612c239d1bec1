#include "readers/guest/ContainerRules.h"

#include <optional>
#include <sstream>
#include <string_view>

namespace quenlor {
namespace {

using Verdict = std::optional<ContainerVerdict>;

struct NamedManager {
  const char* manager;
  const char* container;
};
constexpr NamedManager MANAGERS[] = {
    {"lxc", "lxc"},       {"lxc-libvirt", "lxc"}, {"systemd-nspawn", "nspawn"},
    {"docker", "docker"}, {"podman", "podman"},   {"wsl", "wsl"},
    {"openvz", "openvz"},
};

// Parts of a control group's path; the runtime's own before that of what started it.
struct CgroupRule {
  const char* part;
  const char* container;
};
constexpr CgroupRule CGROUPS[] = {
    {"/libpod-", "podman"},  {"/kubepods", "kubernetes"},
    {"/docker/", "docker"},  {"/docker-", "docker"},
    {"/ecs/", "docker"},     {"/lxc/", "lxc"},
    {"/lxc.payload", "lxc"}, {"/machine.slice/machine-", "nspawn"},
};

// Inodes of the initial namespaces (include/linux/proc_ns.h).
constexpr const char* kInitialCgroupNamespace = "cgroup:[4026531835]";
constexpr const char* kInitialPidNamespace = "pid:[4026531836]";

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

bool isOther(const std::string& link, const char* initial) {
  return !link.empty() && link != initial;
}

bool isUserNamespace(const std::string& uidMap) {
  std::istringstream words(uidMap);
  unsigned long inside = 0;
  unsigned long outside = 0;
  unsigned long count = 0;
  if (!(words >> inside >> outside >> count)) return false;
  return inside != 0 || outside != 0 || count != 4294967295ul;
}

const CgroupRule* cgroupRule(const ContainerFacts& facts) {
  for (const CgroupRule& rule : CGROUPS) {
    if (contains(facts.cgroups, rule.part) || contains(facts.initCgroups, rule.part)) return &rule;
  }
  return nullptr;
}

// How many kinds of separation there are; a service's own sandbox may have one.
int separations(const ContainerFacts& facts) {
  const bool hasOwnCgroups =
      facts.hasCgroupType || isOther(facts.cgroupNamespace, kInitialCgroupNamespace);
  return static_cast<int>(isOther(facts.pidNamespace, kInitialPidNamespace)) +
         static_cast<int>(hasOwnCgroups) + static_cast<int>(isUserNamespace(facts.uidMap));
}

bool isSeparated(const ContainerFacts& facts) {
  return separations(facts) > 0 || cgroupRule(facts) != nullptr;
}

Verdict byKernel(const ContainerFacts& facts) {
  if (facts.hasVz && !facts.hasBc) return ContainerVerdict{"openvz", "file:/proc/vz"};
  for (const char* part : {"Microsoft", "WSL", "microsoft-standard"}) {
    if (contains(facts.osRelease, part))
      return ContainerVerdict{"wsl", "kernel:" + facts.osRelease};
  }
  if (facts.tracer.starts_with("proot")) return ContainerVerdict{"proot", "process:proot"};
  // A kernel of its own that says what no real one says.
  if (facts.kernelVersion.starts_with("Linux version 4.4.0 ") &&
      contains(facts.kernelVersion, "Sun Jan 10 15:06:54 PST 2016") && !facts.hasModules) {
    return ContainerVerdict{"gvisor", "file:/proc/version"};
  }
  return std::nullopt;
}

std::string containerOf(const std::string& manager) {
  for (const NamedManager& named : MANAGERS) {
    if (manager == named.manager) return named.container;
  }
  return "other";
}

// Several runtimes say "oci"; the marks behind tell which, if any does.
Verdict byManager(const ContainerFacts& facts, const std::string& manager, const char* evidence) {
  if (manager.empty() || manager == "oci") return std::nullopt;
  std::string container = containerOf(manager);
  if (container == "lxc" && facts.hasLxdSocket) container = "lxd";
  if (container == "lxc" && facts.hasIncusSocket) container = "incus";
  return ContainerVerdict{container, evidence};
}

Verdict byMarks(const ContainerFacts& facts) {
  if (facts.hasContainerenv) return ContainerVerdict{"podman", "file:/run/.containerenv"};
  if (facts.hasDockerenv) return ContainerVerdict{"docker", "file:/.dockerenv"};
  if (facts.hasLxdSocket) return ContainerVerdict{"lxd", "file:/dev/lxd/sock"};
  if (facts.hasIncusSocket) return ContainerVerdict{"incus", "file:/dev/incus/sock"};
  if (facts.hasKubernetesService) {
    return ContainerVerdict{"kubernetes", "env:KUBERNETES_SERVICE_HOST"};
  }
  if (facts.hasKubernetesSecrets) {
    return ContainerVerdict{"kubernetes", "file:/var/run/secrets/kubernetes.io"};
  }
  return std::nullopt;
}

ContainerVerdict byNamespaces(const ContainerFacts& facts) {
  if (const CgroupRule* rule = cgroupRule(facts)) {
    return {rule->container, std::string("cgroup:") + rule->part};
  }
  const std::string& manager =
      facts.initEnvironment.empty() ? facts.systemdManager : facts.initEnvironment;
  if (manager == "oci") return {"other", "env:container"};
  if (separations(facts) > 1) return {"other", "namespaces"};
  return {};
}

}  // namespace

ContainerVerdict judgeContainer(const ContainerFacts& facts) {
  if (const Verdict verdict = byKernel(facts)) return *verdict;
  const Verdict named[] = {
      byManager(facts, facts.hostManager, "file:/run/host/container-manager"),
      byManager(facts, facts.systemdManager, "file:/run/systemd/container"),
      byManager(facts, facts.initEnvironment, "env:container"),
  };
  for (const Verdict& verdict : named) {
    if (verdict) return *verdict;
  }
  if (isSeparated(facts)) {
    if (const Verdict verdict = byMarks(facts)) return *verdict;
  }
  return byNamespaces(facts);
}

}  // namespace quenlor
