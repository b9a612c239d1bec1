#include "readers/guest/HypervisorRules.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

using namespace std::string_literals;

GuestFacts guestWith(std::vector<std::string> signatures) {
  GuestFacts facts;
  facts.cpuid.isGuest = true;
  facts.cpuid.signatures = std::move(signatures);
  return facts;
}

HypervisorVerdict judged(const GuestFacts& facts, const MachineTexts& texts = {}) {
  return judgeHypervisor(facts, texts, "GenuineIntel");
}

void expectVerdict(const HypervisorVerdict& verdict, const std::string& hypervisor,
                   const std::string& evidence) {
  EXPECT_EQ(verdict.isGuest, !hypervisor.empty()) << evidence;
  EXPECT_EQ(verdict.hypervisor, hypervisor) << evidence;
  EXPECT_EQ(verdict.evidence, evidence);
}

TEST(HypervisorRules, everySignatureNamesItsHypervisor) {
  const std::pair<std::string, const char*> ROWS[] = {
      {"KVMKVMKVM\0\0\0"s, "kvm"},   {"Linux KVM Hv", "kvm"},        {"TCGTCGTCGTCG", "qemu"},
      {"VMwareVMware", "vmware"},    {"XenVMMXenVMM", "xen"},        {"VBoxVBoxVBox", "virtualbox"},
      {"prl hyperv  ", "parallels"}, {" lrpepyh  vr", "parallels"},  {"bhyve bhyve ", "bhyve"},
      {"ACRNACRNACRN", "acrn"},      {"Apple VZ\0\0\0\0"s, "apple"}, {"QNXQVMBSQG\0\0"s, "other"},
      {"SRESRESRESRE", "other"},     {"Jailhouse\0\0\0"s, "other"},  {"UnisysSpar64", "other"},
      {"EVMMEVMMEVMM", "other"},     {"___ NVMM ___", "other"},      {"OpenBSDVMM58", "other"},
      {"HAXMHAXMHAXM", "other"},     {"Microsoft Hv", "hyper-v"},    {"Never5een123", "other"}};
  for (const auto& [signature, hypervisor] : ROWS) {
    std::string shown = signature.substr(0, signature.find('\0'));
    shown = shown.substr(shown.find_first_not_of(' '));
    shown.erase(shown.find_last_not_of(' ') + 1);
    expectVerdict(judged(guestWith({signature})), hypervisor, "cpuid:" + shown);
  }
}

TEST(HypervisorRules, firmwareTextsNameTheHypervisorWithoutCpuid) {
  struct Row {
    MachineTexts texts;
    const char* hypervisor;
    const char* evidence;
  };
  const Row ROWS[] = {
      {{.productName = "VirtualBox"}, "virtualbox", "dmi:VirtualBox"},
      {{.biosVendor = "innotek GmbH"}, "virtualbox", "dmi:innotek GmbH"},
      {{.sysVendor = "Xen", .productName = "HVM domU"}, "xen", "dmi:HVM domU"},
      {{.productName = "Parallels Virtual Platform"},
       "parallels",
       "dmi:Parallels Virtual Platform"},
      {{.sysVendor = "Parallels International GmbH."},
       "parallels",
       "dmi:Parallels International GmbH."},
      {{.sysVendor = "VMware, Inc."}, "vmware", "dmi:VMware, Inc."},
      {{.productName = "VMware20,1"}, "vmware", "dmi:VMware20,1"},
      {{.sysVendor = "Microsoft Corporation", .productName = "Virtual Machine"},
       "hyper-v",
       "dmi:Microsoft Corporation"},
      {{.productName = "BHYVE"}, "bhyve", "dmi:BHYVE"},
      {{.biosVendor = "BHYVE"}, "bhyve", "dmi:BHYVE"},
      {{.productName = "Apple Virtualization Generic Platform"},
       "apple",
       "dmi:Apple Virtualization Generic Platform"},
      {{.productName = "KVM"}, "kvm", "dmi:KVM"},
      {{.sysVendor = "oVirt"}, "kvm", "dmi:oVirt"},
      {{.productName = "RHEV Hypervisor"}, "kvm", "dmi:RHEV Hypervisor"},
      {{.sysVendor = "KubeVirt"}, "kvm", "dmi:KubeVirt"},
      {{.sysVendor = "Nutanix", .productName = "AHV"}, "kvm", "dmi:AHV"},
      {{.sysVendor = "Cloud Hypervisor"}, "kvm", "dmi:Cloud Hypervisor"},
      {{.sysVendor = "QEMU"}, "qemu", "dmi:QEMU"},
      {{.productName = "Standard PC (Q35 + ICH9, 2009)"},
       "qemu",
       "dmi:Standard PC (Q35 + ICH9, 2009)"},
      {{.chassisVendor = "QEMU"}, "qemu", "dmi:QEMU"},
      {{.chassisVendor = "Bochs"}, "qemu", "dmi:Bochs"},
      {{.biosVendor = "Proxmox distribution of EDK II"},
       "qemu",
       "dmi:Proxmox distribution of EDK II"},
  };
  for (const Row& row : ROWS) expectVerdict(judged({}, row.texts), row.hypervisor, row.evidence);
}

TEST(HypervisorRules, aRealMachineIsNoGuest) {
  expectVerdict(judged({}), "", "");
  const MachineTexts REAL[] = {
      {.sysVendor = "Dell Inc.", .productName = "PowerEdge R750"},
      {.sysVendor = "Microsoft Corporation", .productName = "Surface Laptop 5"},
      {.sysVendor = "Nutanix", .productName = "NX-3060-G7"},
      {.sysVendor = "Oracle Corporation", .productName = "SUN SERVER X4-2"},
      {.sysVendor = "Red Hat", .biosVendor = "SeaBIOS"},
      {.sysVendor = "Apple Inc.", .productName = "MacPro7,1"},
      // Clouds' real machines: their texts, no hypervisor.
      {.sysVendor = "Amazon EC2", .productName = "m5.metal"},
      {.sysVendor = "Google", .productName = "Google Compute Engine"},
      {.sysVendor = "OpenStack Foundation", .productName = "OpenStack Nova"},
      {.sysVendor = "Xen Systems Ltd", .productName = "Server"},
  };
  for (const MachineTexts& texts : REAL) expectVerdict(judged({}, texts), "", "");
}

TEST(HypervisorRules, cloakedHypervisorsAreKnownByTheirTexts) {
  const GuestFacts kvm = guestWith({"KVMKVMKVM\0\0\0"s});
  expectVerdict(judged(kvm, {.productName = "VirtualBox"}), "virtualbox", "dmi:VirtualBox");
  expectVerdict(
      judged(guestWith({"Microsoft Hv"}), {.sysVendor = "Parallels Software International Inc."}),
      "parallels", "dmi:Parallels Software International Inc.");
}

TEST(HypervisorRules, cloudGuestsAreKnownByTheirSignatureElseByTheirTexts) {
  const MachineTexts ec2{.sysVendor = "Amazon EC2", .productName = "m5.large"};
  expectVerdict(judged(guestWith({"KVMKVMKVM\0\0\0"s}), ec2), "kvm", "cpuid:KVMKVMKVM");
  expectVerdict(judged(guestWith({}), ec2), "kvm", "dmi:Amazon EC2");
  expectVerdict(judged(guestWith({}), {.productName = "Google Compute Engine"}), "kvm",
                "dmi:Google Compute Engine");
}

TEST(HypervisorRules, theSignatureWinsOverTextsThatWerePassedThrough) {
  expectVerdict(judged(guestWith({"KVMKVMKVM\0\0\0"s}), {.sysVendor = "Dell Inc."}), "kvm",
                "cpuid:KVMKVMKVM");
  expectVerdict(judged(guestWith({"KVMKVMKVM\0\0\0"s}), {.sysVendor = "VMware, Inc."}), "kvm",
                "cpuid:KVMKVMKVM");
}

TEST(HypervisorRules, hyperVIsBelievedOnlyWhenNothingElseFits) {
  expectVerdict(judged(guestWith({"Microsoft Hv", "KVMKVMKVM\0\0\0"s})), "kvm", "cpuid:KVMKVMKVM");
  expectVerdict(judged(guestWith({"Microsoft Hv", "XenVMMXenVMM"})), "xen", "cpuid:XenVMMXenVMM");
  expectVerdict(judged(guestWith({"Microsoft Hv"}), {.sysVendor = "QEMU"}), "qemu", "dmi:QEMU");
  expectVerdict(judged(guestWith({"Microsoft Hv"}), {.sysVendor = "VMware, Inc."}), "vmware",
                "dmi:VMware, Inc.");
  const MachineTexts azure{.sysVendor = "Microsoft Corporation", .productName = "Virtual Machine"};
  expectVerdict(judged(guestWith({"Microsoft Hv"}), azure), "hyper-v", "cpuid:Microsoft Hv");
}

TEST(HypervisorRules, aRootPartitionIsTheRealMachine) {
  for (const uint32_t privilege : {1u << 0, 1u << 12}) {
    GuestFacts facts = guestWith({"Microsoft Hv"});
    facts.cpuid.hyperVPrivileges = privilege;
    expectVerdict(judged(facts, {.sysVendor = "LENOVO"}), "", "");
  }
}

TEST(HypervisorRules, xenIsKnownByItsFilesWhereCpuidIsTheHosts) {
  GuestFacts facts;
  facts.xen.type = "xen";
  expectVerdict(judged(facts), "xen", "file:/sys/hypervisor/type");
  facts.xen = {.hasProcXen = true};
  expectVerdict(judged(facts), "xen", "file:/proc/xen");
}

TEST(HypervisorRules, xensControlDomainIsTheRealMachine) {
  GuestFacts facts = guestWith({"XenVMMXenVMM"});
  facts.xen = {.hasProcXen = true, .type = "xen", .features = "00002705"};
  EXPECT_TRUE(judged(facts).isGuest);
  facts.xen.features = "00002f05";
  expectVerdict(judged(facts), "", "");
  facts.xen = {.hasProcXen = true, .capabilities = "control_d\n"};
  expectVerdict(judged(facts), "", "");
}

TEST(HypervisorRules, userModeLinuxRunsInsideAnything) {
  expectVerdict(judgeHypervisor({}, {}, "User Mode Linux"), "other", "file:/proc/cpuinfo");
  expectVerdict(judgeHypervisor(guestWith({"VMwareVMware"}), {}, "User Mode Linux"), "other",
                "file:/proc/cpuinfo");
}

TEST(HypervisorRules, firecrackerIsToldByItsTables) {
  GuestFacts facts = guestWith({"KVMKVMKVM\0\0\0"s});
  facts.acpiMaker = "FIRECK";
  expectVerdict(judged(facts), "firecracker", "acpi:FIRECK");
  facts.acpiMaker = "BOCHS ";
  expectVerdict(judged(facts), "kvm", "cpuid:KVMKVMKVM");
}

TEST(HypervisorRules, aHiddenHypervisorIsStillOne) {
  expectVerdict(judged(guestWith({})), "other", "cpuid:hypervisor");
  expectVerdict(judged(guestWith({std::string(12, '\0')})), "other", "cpuid:hypervisor");
  expectVerdict(judged(guestWith({std::string(12, '\0')}), {.sysVendor = "QEMU"}), "qemu",
                "dmi:QEMU");
}

TEST(HypervisorRules, theBiosMayAtLeastSayThatItIsVirtual) {
  expectVerdict(judged({}, {.isVirtualByBios = true}), "other", "smbios:virtual machine");
}

TEST(HypervisorRules, theVmwareAgentIsAskedByCpuidsWordAlone) {
  EXPECT_TRUE(isVmwareByCpuid(guestWith({"VMwareVMware"})));
  EXPECT_FALSE(isVmwareByCpuid(guestWith({"KVMKVMKVM\0\0\0"s, "VMwareVMware"})));
  EXPECT_FALSE(isVmwareByCpuid({}));
}

TEST(ConfidentialGuest, isToldOnlyWhereItIsActive) {
  GuestFacts facts = guestWith({"Microsoft Hv"});
  EXPECT_EQ(confidentialKind(facts), "");
  facts.cpuid.hyperVIsolation = 2;
  EXPECT_EQ(confidentialKind(facts), "");
  facts.cpuid.hyperVPrivileges = 1u << 22;
  EXPECT_EQ(confidentialKind(facts), "sev-snp");
  facts.cpuid.hyperVIsolation = 0x13;
  EXPECT_EQ(confidentialKind(facts), "tdx");
  facts.cpuid.hyperVIsolation = 1;
  EXPECT_EQ(confidentialKind(facts), "");
  facts.cpuid.hyperVIsolation = 3;
  facts.cpuid.hyperVPrivileges |= 1u << 12;  // the host of such guests
  EXPECT_EQ(confidentialKind(facts), "");
  facts = {};
  facts.cpuid.isTdx = true;
  EXPECT_EQ(confidentialKind(facts), "tdx");
  facts = {};
  facts.hasTdxGuestDevice = true;
  EXPECT_EQ(confidentialKind(facts), "tdx");
  facts = {};
  facts.hasSevGuestDevice = true;
  EXPECT_EQ(confidentialKind(facts), "sev-snp");
}

}  // namespace
}  // namespace quenlor::test
