#include "readers/guest/GuestFacts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

constexpr uint32_t kIsGuest = 1u << 31;

TEST(GuestFacts, aRealProcessorIsNotAskedForAHypervisor) {
  FakeHost host;
  host.cpuidLeaves[{1, 0}] = {0, 0, 0, 0};
  host.cpuidLeaves[{0x40000000, 0}] = {0x40000001, 0x4B4D564B, 0x564B4D56, 0x4D};
  const GuestFacts facts = readGuestFacts();
  EXPECT_FALSE(facts.cpuid.isGuest);
  EXPECT_TRUE(facts.cpuid.signatures.empty());
}

TEST(GuestFacts, signaturesOfAllInterfacesAreRead) {
  FakeHost host;
  host.cpuidLeaves[{1, 0}] = {0, 0, kIsGuest, 0};
  host.cpuidLeaves[{0x40000000, 0}] = {0x40000005, 0x7263694D, 0x666F736F, 0x76482074};
  host.cpuidLeaves[{0x40000003, 0}] = {0, 0x1234, 0, 0};
  host.cpuidLeaves[{0x4000000C, 0}] = {0, 2, 0, 0};
  host.cpuidLeaves[{0x40000100, 0}] = {0x40000101, 0x4B4D564B, 0x564B4D56, 0x4D};
  const GuestFacts facts = readGuestFacts();
  ASSERT_EQ(facts.cpuid.signatures.size(), 2u);
  EXPECT_EQ(facts.cpuid.signatures[0], "Microsoft Hv");
  EXPECT_EQ(facts.cpuid.signatures[1], std::string("KVMKVMKVM\0\0\0", 12));
  EXPECT_EQ(facts.cpuid.hyperVPrivileges, 0x1234u);
  EXPECT_EQ(facts.cpuid.hyperVIsolation, 2u);
}

TEST(GuestFacts, theTracerIsNamed) {
  FakeHost host;
  host.files["/proc/self/status"] = "Name:\tq\nTracerPid:\t42\n";
  host.files["/proc/42/comm"] = "proot\n";
  EXPECT_EQ(readGuestFacts().container.tracer, "proot");
  host.files["/proc/self/status"] = "TracerPid:\t0\n";
  EXPECT_EQ(readGuestFacts().container.tracer, "");
  host.files["/proc/self/status"] = "TracerPid:\t../42\n";
  EXPECT_EQ(readGuestFacts().container.tracer, "");
}

TEST(GuestFacts, everyFileIsReadOnceAndNoDeviceIsOpened) {
  FakeHost host;
  host.files["/proc/self/cgroup"] = "0::/docker/1\n";
  host.files["/sys/fs/cgroup/cpu.max"] = "50000 100000\n";
  host.devices["/dev/tdx_guest"].type = S_IFCHR;
  const GuestFacts facts = readGuestFacts();
  EXPECT_TRUE(facts.hasTdxGuestDevice);
  EXPECT_EQ(facts.limits.cpus, 0.5);
  std::vector<std::string> opened = host.opened;
  std::sort(opened.begin(), opened.end());
  EXPECT_EQ(std::adjacent_find(opened.begin(), opened.end()), opened.end());
  for (const std::string& path : opened) EXPECT_FALSE(path.starts_with("/dev/")) << path;
}

TEST(GuestFacts, limitsOutsideAContainerAreTheScannersOwn) {
  FakeHost host;
  host.files["/proc/self/cgroup"] = "0::/system.slice/agent.service\n";
  host.files["/sys/fs/cgroup/system.slice/agent.service/cpu.max"] = "5000 100000\n";
  EXPECT_FALSE(readGuestFacts().limits.cpus);
}

TEST(GuestFacts, aContainerOfUnknownKindSaysWhatWasRefused) {
  FakeHost host;
  host.files["/proc/1/environ"] = std::string("container=lxc", 14);
  host.openErrors["/proc/1/environ"] = EACCES;
  EXPECT_EQ(readGuestFacts().outcome.status(), OutcomeStatus::kComplete);
  host.links["/proc/self/ns/pid"] = "pid:[4026532585]";
  host.links["/proc/self/ns/cgroup"] = "cgroup:[4026532587]";
  EXPECT_EQ(readGuestFacts().outcome.reason(), "kind of container: first process refused");
  host.openErrors.clear();
  EXPECT_EQ(readGuestFacts().container.initEnvironment, "lxc");
  EXPECT_EQ(readGuestFacts().outcome.status(), OutcomeStatus::kComplete);
}

TEST(StatusField, isTheLineOfTheKey) {
  EXPECT_EQ(statusField("Name:\tTracerPid:\nTracerPid:\t7\n", "TracerPid"), "7");
  EXPECT_EQ(statusField("xTracerPid:\t7\n", "TracerPid"), "");
  EXPECT_EQ(statusField("", "TracerPid"), "");
}

TEST(EnvironmentValue, isTheWholeVariables) {
  const std::string environment("mycontainer=a\0container=lxc\0X", 29);
  EXPECT_EQ(environmentValue(environment, "container"), "lxc");
  EXPECT_EQ(environmentValue(environment, "X"), "");
  EXPECT_EQ(environmentValue("", "container"), "");
}

TEST(AcpiMaker, isInTheTablesHeader) {
  const std::string table("DSDT\x53\x0f\0\0\x02wFIRECKFCVMDSDT", 24);
  EXPECT_EQ(acpiMakerOf(table), "FIRECK");
  EXPECT_EQ(acpiMakerOf("DSDT"), "");
}

}  // namespace
}  // namespace quenlor::test
