// Recorded machines through the modern groups that tell of processors and of what a system runs in.
#include <gtest/gtest.h>

#include <filesystem>

#include "groups/modern/Collectors.h"
#include "tests/support/RecordedHost.h"
#include "tests/support/Rows.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

using Rows = std::vector<RowValues>;

// One scan of a recorded machine.
class Recording {
 public:
  explicit Recording(const std::string& name)
      : m_host(std::string(QUENLOR_SOURCE_DIR "/tests/recorded/") + name) {}

  Rows rows(uint32_t group, ModernCollector collect) {
    ModernTable table(*findGroup(MODERN_GROUPS_DEF, group));
    collect(m_scan, table);
    m_outcome = table.outcome();
    return rowsOf(table.build().get());
  }
  Rows packages() { return rows(group::kPhysicalProcessor, collectPhysicalProcessor); }
  Rows processors() { return rows(group::kProcessor, collectProcessor); }
  Rows caches() { return rows(group::kCache, collectCache); }
  RowValues lpar() { return rows(group::kLpar, collectLpar).at(0); }
  RowValues machine() { return rows(group::kMachine, collectMachine).at(0); }
  Rows host() { return rows(group::kHostComponentId, collectHostComponentId); }
  const Outcome& outcome() const { return m_outcome; }

  const RecordedHost& recorded() const { return m_host; }

 private:
  RecordedHost m_host;
  ModernScan m_scan{ScanSettings{}};
  Outcome m_outcome;
};

// Attributes of a row, joined by a bar.
std::string values(const RowValues& row, std::initializer_list<uint32_t> ids) {
  std::string text;
  for (const uint32_t id : ids) text += "|" + valueOf(row, id);
  return text.substr(1);
}

struct GuestRow {
  const char* machine;
  const char* virtualization;
  const char* hypervisor;
  const char* container;
  const char* evidence;
  const char* cloud;
  const char* instance;
};

constexpr const char* kNo = "(absent)";

constexpr GuestRow GUESTS[] = {
    {"hybrid-laptop", "none", kNo, kNo, kNo, kNo, kNo},
    {"server-smt-off", "none", kNo, kNo, kNo, kNo, kNo},
    {"kvm-guest", "vm", "kvm", kNo, "cpuid:KVMKVMKVM", kNo, kNo},
    {"kvm-imitating-hyper-v", "vm", "kvm", kNo, "cpuid:KVMKVMKVM", kNo, kNo},
    {"azure-guest", "vm", "hyper-v", kNo, "cpuid:Microsoft Hv", "azure",
     "2c1b2aec-3412-7856-9abc-def012345678"},
    {"hyper-v-host", "none", kNo, kNo, kNo, kNo, kNo},
    {"xen-pv-guest", "vm", "xen", kNo, "file:/sys/hypervisor/type", kNo, kNo},
    {"xen-hvm-guest", "vm", "xen", kNo, "dmi:HVM domU", kNo, kNo},
    {"xen-control-domain", "none", kNo, kNo, kNo, kNo, kNo},
    {"vmware-guest", "vm", "vmware", kNo, "cpuid:VMwareVMware", kNo, kNo},
    {"vmware-agent", "vm", "vmware", kNo, "cpuid:VMwareVMware", kNo, kNo},
    {"ec2-guest", "vm", "kvm", kNo, "cpuid:KVMKVMKVM", "ec2", "i-0123456789abcdef0"},
    {"ec2-metal", "none", kNo, kNo, kNo, "ec2", "i-0fedcba9876543210"},
    {"firecracker-guest", "vm", "firecracker", kNo, "acpi:FIRECK", kNo, kNo},
    {"wsl2", "container in vm", "hyper-v", "wsl",
     "cpuid:Microsoft Hv,kernel:5.15.90.1-microsoft-standard-WSL2", kNo, kNo},
    {"gvisor", "container in vm", "kvm", "gvisor", "cpuid:KVMKVMKVM,file:/proc/version", kNo, kNo},
    {"lxc-container", "container", kNo, "lxc", "file:/run/systemd/container", kNo, kNo},
    {"docker-container", "container", kNo, "docker", "file:/.dockerenv", kNo, kNo},
    {"podman-container", "container", kNo, "podman", "file:/run/.containerenv", kNo, kNo},
    {"nspawn-container", "container", kNo, "nspawn", "file:/run/host/container-manager", kNo, kNo},
    {"docker-in-kvm", "container in vm", "kvm", "docker", "cpuid:KVMKVMKVM,file:/.dockerenv", kNo,
     kNo},
};

TEST(RecordedMachines, whatTheyRunInIsTold) {
  for (const GuestRow& guest : GUESTS) {
    SCOPED_TRACE(guest.machine);
    Recording recording(guest.machine);
    const RowValues row = recording.machine();
    EXPECT_EQ(valueOf(row, 8), guest.virtualization);
    EXPECT_EQ(valueOf(row, 9), guest.hypervisor);
    EXPECT_EQ(valueOf(row, 10), guest.container);
    EXPECT_EQ(valueOf(row, 11), guest.evidence);
    EXPECT_EQ(valueOf(row, 12), guest.cloud);
    EXPECT_EQ(valueOf(row, 13), guest.instance);
    EXPECT_EQ(valueOf(row, 15), kNo);
  }
}

TEST(RecordedMachines, nothingIsTouchedAndNothingReadTwice) {
  for (const GuestRow& guest : GUESTS) {
    SCOPED_TRACE(guest.machine);
    Recording recording(guest.machine);
    recording.machine();
    recording.packages();
    recording.processors();
    recording.caches();
    recording.lpar();
    recording.host();
    EXPECT_EQ(recording.recorded().forbidden(), std::vector<std::string>{});
    EXPECT_EQ(recording.recorded().readTwice(), std::vector<std::string>{});
    EXPECT_EQ(recording.recorded().openDescriptors(), 0);
  }
}

TEST(RecordedMachines, aHybridLaptopTellsItsKindsOfCores) {
  Recording recording("hybrid-laptop");
  const Rows packages = recording.packages();
  ASSERT_EQ(packages.size(), 1u);
  // Cores and threads; fast and efficient ones; base, highest and rated speed.
  EXPECT_EQ(values(packages[0], {2, 3, 101, 102, 113}), "12|2|12|16|16");
  EXPECT_EQ(values(packages[0], {103, 104}), "4|8");
  EXPECT_EQ(values(packages[0], {105, 106, 7}), "2100|4700|2100");
  EXPECT_EQ(values(packages[0], {8, 9, 108, 109}), "1280|18432|448|640");
  EXPECT_EQ(values(packages[0], {4, 5, 10}), "Intel|Core|12th Gen Intel(R) Core(TM) i7-1260P");
  EXPECT_EQ(values(packages[0], {11, 12, 107}), "000906A3|Y|0x430");
  EXPECT_EQ(values(packages[0], {114, 116, 111}), "x86-64-v3|vmx|1");
}

TEST(RecordedMachines, cachesOfEachKindHaveARow) {
  Recording recording("hybrid-laptop");
  std::string text;
  for (const RowValues& row : recording.caches()) {
    text += values(row, {1, 2, 3, 4, 5, 6, 7, 8}) + "\n";
  }
  EXPECT_EQ(text,
            "1|1|data|32|8|8|64|1\n"
            "2|1|data|48|4|12|64|2\n"
            "3|1|instruction|32|4|8|64|2\n"
            "4|1|instruction|64|8|8|64|1\n"
            "5|2|unified|1280|4|10|64|2\n"
            "6|2|unified|2048|2|16|64|4\n"
            "7|3|unified|18432|1|12|64|16\n");
  EXPECT_EQ(recording.outcome().status(), OutcomeStatus::kComplete);
}

TEST(RecordedMachines, switchedOffThreadsOfTwoSocketsBelongToNobody) {
  Recording recording("server-smt-off");
  const Rows packages = recording.packages();
  ASSERT_EQ(packages.size(), 2u);
  for (const RowValues& row : packages) {
    EXPECT_EQ(values(row, {2, 3, 101, 102, 113}), "4|1|4|(absent)|4");
    EXPECT_EQ(values(row, {7, 111, 103}), "2200|1|(absent)");
  }
  const Rows processors = recording.processors();
  ASSERT_EQ(processors.size(), 2u);
  EXPECT_EQ(values(processors[1], {1, 4, 43, 44, 45}), "2|2200|2|4|1");
  EXPECT_NE(valueOf(processors[0], 2), valueOf(processors[1], 2));
}

TEST(RecordedMachines, diesOfOnePackageAreOnePackage) {
  Recording recording("amd-four-dies");
  const Rows packages = recording.packages();
  ASSERT_EQ(packages.size(), 1u);
  EXPECT_EQ(values(packages[0], {101, 102, 3, 111}), "8|16|2|4");
  EXPECT_EQ(values(packages[0], {7, 105, 106, 9}), "3000|3000|3300|16384");
  EXPECT_EQ(values(packages[0], {4, 5, 116}), "AMD|EPYC|svm");
  EXPECT_EQ(values(recording.caches()[3], {2, 4, 5, 8}), "3|16384|4|4");
  EXPECT_EQ(valueOf(recording.processors()[0], 3), "AMD EPYC 7262 8-Core Processor");
}

TEST(RecordedMachines, aSwitchedOffCoreOfASinglePackageCountsItsThreads) {
  Recording recording("offline-cores");
  const Rows packages = recording.packages();
  ASSERT_EQ(packages.size(), 1u);
  EXPECT_EQ(values(packages[0], {101, 102, 113}), "3|8|6");
  EXPECT_EQ(valueOf(packages[0], 7), "3400");
}

TEST(RecordedMachines, aProcessorsIdDoesNotChangeWithItsSpeed) {
  const auto idOf = [](const char* mhz) {
    TemporaryDirectory copy;
    std::filesystem::copy(QUENLOR_SOURCE_DIR "/tests/recorded/hybrid-laptop", copy.path(),
                          std::filesystem::copy_options::recursive);
    std::string text = copy.read("root/proc/cpuinfo");
    for (size_t at = text.find("800.0"); at != std::string::npos; at = text.find("800.0")) {
      text.replace(at, 5, mhz);
    }
    copy.write("root/proc/cpuinfo", text);
    const RecordedHost host(copy.path());
    ModernScan scan{ScanSettings{}};
    ModernTable table(*findGroup(MODERN_GROUPS_DEF, group::kProcessor));
    collectProcessor(scan, table);
    return valueOf(rowsOf(table.build().get()).at(0), 2);
  };
  EXPECT_EQ(idOf("800.1"), idOf("4682."));
  EXPECT_EQ(idOf("800.1").size(), 32u);
}

TEST(RecordedMachines, theProcessorOfAGuestHasASpeedWhereTheHypervisorTellsIt) {
  EXPECT_EQ(valueOf(Recording("vmware-guest").processors()[0], 4), "2300");
  EXPECT_EQ(valueOf(Recording("kvm-guest").processors()[0], 4), "0");
}

TEST(RecordedMachines, flagsOfTheProcessorAreThoseOfTheKernel) {
  const RowValues row = Recording("kvm-guest").processors()[0];
  EXPECT_EQ(values(row, {7, 10, 11, 12}), "GenuineIntel|6|143|8");
  EXPECT_EQ(values(row, {14, 31, 32, 34, 35, 42}), "Y|N|Y|Y|N|H");
  EXPECT_EQ(valueOf(row, 3), "Intel Xeon Processor");
}

TEST(RecordedMachines, aGuestMayUseItsOwnProcessors) {
  const RowValues guest = Recording("kvm-guest").lpar();
  EXPECT_EQ(values(guest, {4, 8, 5, 9}), "1.000000|2.000000|-1.000000|2.000000");
  const RowValues real = Recording("server-smt-off").lpar();
  EXPECT_EQ(values(real, {4, 8, 5, 9}), "2.000000|8.000000|-1.000000|-1.000000");
  EXPECT_EQ(values(real, {2, 3, 6, 10, 103}), "||-1.000000|-1.000000|(absent)");
}

TEST(RecordedMachines, aContainersLimitsAreTold) {
  const RowValues row = Recording("docker-container").lpar();
  EXPECT_EQ(values(row, {103, 104}), "1.500000|512");
  EXPECT_EQ(values(Recording("kvm-guest").lpar(), {103, 104}), "(absent)|(absent)");
}

TEST(RecordedMachines, theHostOfAVmwareGuestIsNotGuessed) {
  Recording recording("vmware-guest");
  EXPECT_EQ(values(recording.lpar(), {4, 8, 9}), "-1.000000|-1.000000|-1.000000");
  EXPECT_EQ(recording.outcome().status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(recording.outcome().reason(), "capacity of the host: no tools agent");
  EXPECT_EQ(recording.host().size(), 1u);
  EXPECT_EQ(recording.outcome().status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(recording.recorded().started(), std::vector<std::string>{});
  Recording other("kvm-guest");
  EXPECT_TRUE(other.host().empty());
  EXPECT_EQ(other.outcome().status(), OutcomeStatus::kComplete);
}

TEST(RecordedMachines, theHostOfAVmwareGuestIsWhatItsAgentTells) {
  Recording recording("vmware-agent");
  const RowValues lpar = recording.lpar();
  EXPECT_EQ(values(lpar, {2, 4, 8}), "guest-7|2.000000|8.000000");
  EXPECT_EQ(values(lpar, {5, 9, 7}), "1.500000|6.000000|KQXYZ12");
  EXPECT_EQ(recording.outcome().status(), OutcomeStatus::kComplete);
  EXPECT_EQ(recording.outcome().reason(), "tools agent: asked");
  const Rows host = recording.host();
  ASSERT_EQ(host.size(), 1u);
  EXPECT_EQ(values(host[0], {1, 2, 3, 4, 7}), "ZUM|Server x3650 -[7979AC1]-||KQXYZ12|7979");
  EXPECT_EQ(recording.outcome().reason(), "tools agent: asked");
  // Nine keys; the host's id is in both groups.
  EXPECT_EQ(recording.recorded().started().size(), 9u);
  EXPECT_EQ(recording.recorded().forbidden(), std::vector<std::string>{});
}

TEST(RecordedMachines, theChassisOfAGuestIsNone) {
  EXPECT_EQ(valueOf(Recording("kvm-guest").machine(), 3), "vm");
  EXPECT_EQ(valueOf(Recording("docker-in-kvm").machine(), 3), "container");
  EXPECT_EQ(valueOf(Recording("hybrid-laptop").machine(), 3), "laptop");
}

}  // namespace
}  // namespace quenlor::test
