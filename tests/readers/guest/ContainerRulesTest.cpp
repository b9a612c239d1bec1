#include "readers/guest/ContainerRules.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

ContainerFacts realMachine() {
  ContainerFacts facts;
  facts.osRelease = "6.1.0-18-amd64";
  facts.kernelVersion = "Linux version 6.1.0-18-amd64 (debian-kernel@lists.debian.org)";
  facts.hasModules = true;
  facts.cgroups = "0::/system.slice/agent.service";
  facts.initCgroups = "0::/init.scope";
  facts.uidMap = "0          0 4294967295";
  facts.pidNamespace = "pid:[4026531836]";
  facts.cgroupNamespace = "cgroup:[4026531835]";
  return facts;
}

ContainerFacts separated() {
  ContainerFacts facts = realMachine();
  facts.cgroups = facts.initCgroups = "0::/";
  facts.pidNamespace = "pid:[4026532585]";
  facts.cgroupNamespace = "cgroup:[4026532587]";
  return facts;
}

void expectVerdict(const ContainerFacts& facts, const std::string& container,
                   const std::string& evidence) {
  const ContainerVerdict verdict = judgeContainer(facts);
  EXPECT_EQ(verdict.container, container) << evidence;
  EXPECT_EQ(verdict.evidence, evidence);
}

template <class Change>
ContainerFacts with(ContainerFacts facts, Change change) {
  change(facts);
  return facts;
}

TEST(ContainerRules, aRealMachineIsNoContainer) {
  expectVerdict(realMachine(), "", "");
  expectVerdict({}, "", "");
}

TEST(ContainerRules, kernelsThatAreContainersThemselves) {
  expectVerdict(with(realMachine(), [](auto& f) { f.hasVz = true; }), "openvz", "file:/proc/vz");
  expectVerdict(with(realMachine(), [](auto& f) { f.hasVz = f.hasBc = true; }), "", "");
  for (const char* release : {"4.4.0-19041-Microsoft", "5.15.90.1-microsoft-standard-WSL2",
                              "4.19.128-microsoft-standard"}) {
    expectVerdict(with(realMachine(), [&](auto& f) { f.osRelease = release; }), "wsl",
                  std::string("kernel:") + release);
  }
  expectVerdict(with(realMachine(), [](auto& f) { f.tracer = "proot-x86_64"; }), "proot",
                "process:proot");
  expectVerdict(with(realMachine(), [](auto& f) { f.tracer = "gdb"; }), "", "");
}

TEST(ContainerRules, gvisorSaysWhatNoRealKernelSays) {
  ContainerFacts facts = separated();
  facts.kernelVersion = "Linux version 4.4.0 #1 SMP Sun Jan 10 15:06:54 PST 2016";
  facts.hasModules = false;
  expectVerdict(facts, "gvisor", "file:/proc/version");
  facts.hasModules = true;
  EXPECT_NE(judgeContainer(facts).container, "gvisor");
}

TEST(ContainerRules, everyManagerNamesItsContainer) {
  const std::pair<const char*, const char*> ROWS[] = {
      {"lxc", "lxc"},       {"lxc-libvirt", "lxc"}, {"systemd-nspawn", "nspawn"},
      {"docker", "docker"}, {"podman", "podman"},   {"wsl", "wsl"},
      {"openvz", "openvz"}, {"rkt", "other"},       {"pouch", "other"}};
  for (const auto& [manager, container] : ROWS) {
    expectVerdict(with(separated(), [&manager = manager](auto& f) { f.hostManager = manager; }),
                  container, "file:/run/host/container-manager");
    expectVerdict(with(separated(), [&manager = manager](auto& f) { f.systemdManager = manager; }),
                  container, "file:/run/systemd/container");
    expectVerdict(with(separated(), [&manager = manager](auto& f) { f.initEnvironment = manager; }),
                  container, "env:container");
  }
}

TEST(ContainerRules, lxcWithASocketOfItsManagerIsTheManagers) {
  ContainerFacts facts = with(separated(), [](auto& f) { f.initEnvironment = "lxc"; });
  expectVerdict(with(facts, [](auto& f) { f.hasLxdSocket = true; }), "lxd", "env:container");
  expectVerdict(with(facts, [](auto& f) { f.hasIncusSocket = true; }), "incus", "env:container");
}

TEST(ContainerRules, ociSaysNothingItself) {
  ContainerFacts facts = with(separated(), [](auto& f) { f.initEnvironment = "oci"; });
  expectVerdict(facts, "other", "env:container");
  expectVerdict(with(facts, [](auto& f) { f.hasContainerenv = true; }), "podman",
                "file:/run/.containerenv");
}

TEST(ContainerRules, marksCountWhereNamespacesConfirmThem) {
  struct Row {
    bool ContainerFacts::*mark;
    const char* container;
    const char* evidence;
  };
  constexpr Row ROWS[] = {
      {&ContainerFacts::hasContainerenv, "podman", "file:/run/.containerenv"},
      {&ContainerFacts::hasDockerenv, "docker", "file:/.dockerenv"},
      {&ContainerFacts::hasLxdSocket, "lxd", "file:/dev/lxd/sock"},
      {&ContainerFacts::hasIncusSocket, "incus", "file:/dev/incus/sock"},
      {&ContainerFacts::hasKubernetesService, "kubernetes", "env:KUBERNETES_SERVICE_HOST"},
      {&ContainerFacts::hasKubernetesSecrets, "kubernetes", "file:/var/run/secrets/kubernetes.io"},
  };
  for (const Row& row : ROWS) {
    const auto mark = [&](ContainerFacts& facts) { facts.*row.mark = true; };
    expectVerdict(with(separated(), mark), row.container, row.evidence);
    // A virtual machine whose disk was built from an image, a guest of LXD, a leaked variable.
    expectVerdict(with(realMachine(), mark), "", "");
  }
}

TEST(ContainerRules, oneKindOfSeparationConfirmsAMark) {
  const auto docker = [](ContainerFacts& facts) { facts.hasDockerenv = true; };
  const ContainerFacts marked = with(realMachine(), docker);
  expectVerdict(with(marked, [](auto& f) { f.pidNamespace = "pid:[4026532585]"; }), "docker",
                "file:/.dockerenv");
  expectVerdict(with(marked, [](auto& f) { f.hasCgroupType = true; }), "docker",
                "file:/.dockerenv");
  expectVerdict(with(marked, [](auto& f) { f.uidMap = "0 100000 65536"; }), "docker",
                "file:/.dockerenv");
  expectVerdict(with(marked, [](auto& f) { f.cgroups = "4:cpu:/docker/0123abcd"; }), "docker",
                "file:/.dockerenv");
}

TEST(ContainerRules, controlGroupsNameTheRuntime) {
  const std::pair<const char*, const char*> ROWS[] = {
      {"0::/machine.slice/libpod-0123.scope", "podman"},
      {"11:cpu:/kubepods/besteffort/pod1/0123", "kubernetes"},
      {"0::/kubepods.slice/kubepods-pod1.slice", "kubernetes"},
      {"4:cpu,cpuacct:/docker/0123", "docker"},
      {"0::/system.slice/docker-0123.scope", "docker"},
      {"4:cpu:/ecs/task/0123", "docker"},
      {"4:cpu:/lxc/web", "lxc"},
      {"0::/lxc.payload.web/init.scope", "lxc"},
      {"0::/machine.slice/machine-web.scope", "nspawn"},
  };
  for (const auto& [cgroups, container] : ROWS) {
    EXPECT_EQ(
        judgeContainer(with(realMachine(), [&cgroups = cgroups](auto& f) { f.cgroups = cgroups; }))
            .container,
        container);
    EXPECT_EQ(judgeContainer(
                  with(realMachine(), [&cgroups = cgroups](auto& f) { f.initCgroups = cgroups; }))
                  .container,
              container);
  }
  // The runtime's own service on its host.
  expectVerdict(with(realMachine(), [](auto& f) { f.cgroups = "0::/system.slice/docker.service"; }),
                "", "");
}

TEST(ContainerRules, severalNamespacesAreAContainerOfUnknownKind) {
  expectVerdict(separated(), "other", "namespaces");
  expectVerdict(with(realMachine(),
                     [](auto& f) {
                       f.uidMap = "0 100000 65536";
                       f.hasCgroupType = true;
                     }),
                "other", "namespaces");
}

TEST(ContainerRules, oneNamespaceIsAServicesOwnSandbox) {
  expectVerdict(with(realMachine(), [](auto& f) { f.uidMap = "0 1000 1"; }), "", "");
  expectVerdict(with(realMachine(), [](auto& f) { f.pidNamespace = "pid:[4026532585]"; }), "", "");
  expectVerdict(with(realMachine(), [](auto& f) { f.uidMap = "rubbish"; }), "", "");
}

}  // namespace
}  // namespace quenlor::test
