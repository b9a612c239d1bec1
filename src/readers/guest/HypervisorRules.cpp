#include "readers/guest/HypervisorRules.h"

#include <cstdlib>
#include <string_view>

#include "base/Text.h"

namespace quenlor {
namespace {

using namespace std::string_view_literals;

// Twelve bytes of leaf 40000000.
struct Signature {
  std::string_view text;
  const char* hypervisor;
};
constexpr Signature SIGNATURES[] = {
    {"KVMKVMKVM\0\0\0"sv, "kvm"},    {"Linux KVM Hv"sv, "kvm"},
    {"TCGTCGTCGTCG"sv, "qemu"},      {"VMwareVMware"sv, "vmware"},
    {"XenVMMXenVMM"sv, "xen"},       {"VBoxVBoxVBox"sv, "virtualbox"},
    {"prl hyperv  "sv, "parallels"}, {" lrpepyh  vr"sv, "parallels"},
    {"bhyve bhyve "sv, "bhyve"},     {"ACRNACRNACRN"sv, "acrn"},
    {"Apple VZ\0\0\0\0"sv, "apple"}, {"QNXQVMBSQG\0\0"sv, "other"},
    {"SRESRESRESRE"sv, "other"},     {"Jailhouse\0\0\0"sv, "other"},
    {"UnisysSpar64"sv, "other"},     {"EVMMEVMMEVMM"sv, "other"},
    {"___ NVMM ___"sv, "other"},     {"OpenBSDVMM58"sv, "other"},
    {"HAXMHAXMHAXM"sv, "other"},
};
constexpr std::string_view kHyperVSignature = "Microsoft Hv";

// Texts that the firmware of a guest has, by their beginning.
struct TextRule {
  std::string MachineTexts::*field;
  std::string_view prefix;
  const char* hypervisor;
  std::string MachineTexts::*secondField = nullptr;  // has to fit as well
  std::string_view secondPrefix = {};
};

// Those that show another hypervisor's signature, or none.
constexpr TextRule CLOAKED_RULES[] = {
    {&MachineTexts::productName, "VirtualBox", "virtualbox"},
    {&MachineTexts::biosVendor, "innotek GmbH", "virtualbox"},
    {&MachineTexts::productName, "HVM domU", "xen", &MachineTexts::sysVendor, "Xen"},
    {&MachineTexts::productName, "Parallels Virtual Platform", "parallels"},
    {&MachineTexts::sysVendor, "Parallels ", "parallels"},
};

// Clouds whose texts stand on their real machines too.
constexpr TextRule CLOUD_RULES[] = {
    {&MachineTexts::sysVendor, "Amazon EC2", "kvm"},
    {&MachineTexts::productName, "Google Compute Engine", "kvm"},
};

constexpr TextRule OTHER_RULES[] = {
    {&MachineTexts::sysVendor, "VMware", "vmware"},
    {&MachineTexts::productName, "VMware", "vmware"},
    {&MachineTexts::sysVendor, "Microsoft Corporation", "hyper-v", &MachineTexts::productName,
     "Virtual Machine"},
    {&MachineTexts::productName, "BHYVE", "bhyve"},
    {&MachineTexts::biosVendor, "BHYVE", "bhyve"},
    {&MachineTexts::productName, "Apple Virtualization", "apple"},
    {&MachineTexts::productName, "KVM", "kvm"},
    {&MachineTexts::sysVendor, "oVirt", "kvm"},
    {&MachineTexts::productName, "RHEV Hypervisor", "kvm"},
    {&MachineTexts::sysVendor, "KubeVirt", "kvm"},
    {&MachineTexts::productName, "AHV", "kvm", &MachineTexts::sysVendor, "Nutanix"},
    {&MachineTexts::sysVendor, "Cloud Hypervisor", "kvm"},
    {&MachineTexts::sysVendor, "QEMU", "qemu"},
    {&MachineTexts::productName, "Standard PC (", "qemu"},
    {&MachineTexts::chassisVendor, "QEMU", "qemu"},
    {&MachineTexts::chassisVendor, "Bochs", "qemu"},
    {&MachineTexts::biosVendor, "Proxmox distribution of EDK II", "qemu"},
};

bool fits(const TextRule& rule, const MachineTexts& texts) {
  if (!(texts.*rule.field).starts_with(rule.prefix)) return false;
  return rule.secondField == nullptr || (texts.*rule.secondField).starts_with(rule.secondPrefix);
}

std::string readable(std::string_view signature) {
  return std::string(trimmed(signature.substr(0, signature.find('\0'))));
}

template <size_t count>
std::optional<HypervisorVerdict> byTexts(const TextRule (&rules)[count],
                                         const MachineTexts& texts) {
  for (const TextRule& rule : rules) {
    if (fits(rule, texts))
      return HypervisorVerdict{true, rule.hypervisor, "dmi:" + texts.*rule.field};
  }
  return std::nullopt;
}

const Signature* known(const std::string& text) {
  for (const Signature& signature : SIGNATURES) {
    if (signature.text == text) return &signature;
  }
  return nullptr;
}

// The first interface that is not Hyper-V's: others imitate that one in front of their own.
std::optional<HypervisorVerdict> bySignature(const CpuidFacts& cpuid) {
  for (const std::string& text : cpuid.signatures) {
    const Signature* signature = known(text);
    if (signature != nullptr) {
      return HypervisorVerdict{true, signature->hypervisor, "cpuid:" + readable(text)};
    }
  }
  return std::nullopt;
}

bool isHyperV(const CpuidFacts& cpuid) {
  return !cpuid.signatures.empty() && cpuid.signatures[0] == kHyperVSignature;
}

// Windows with its own hypervisor switched on, or a Linux that owns the machine under it.
bool isRootPartition(const CpuidFacts& cpuid) {
  constexpr uint32_t kCreatePartitions = 1u << 0;
  constexpr uint32_t kCpuManagement = 1u << 12;
  return isHyperV(cpuid) && (cpuid.hyperVPrivileges & (kCreatePartitions | kCpuManagement)) != 0;
}

bool isXen(const XenFacts& xen) { return xen.hasProcXen || xen.type == "xen"; }

bool isXenControlDomain(const XenFacts& xen) {
  constexpr unsigned long kControlDomain = 1ul << 11;
  const unsigned long features = std::strtoul(xen.features.c_str(), nullptr, 16);
  return (features & kControlDomain) != 0 ||
         xen.capabilities.find("control_d") != std::string::npos;
}

std::optional<HypervisorVerdict> byXenFiles(const XenFacts& xen) {
  if (!isXen(xen)) return std::nullopt;
  if (isXenControlDomain(xen)) return HypervisorVerdict{};
  return HypervisorVerdict{true, "xen",
                           xen.type == "xen" ? "file:/sys/hypervisor/type" : "file:/proc/xen"};
}

// Its guests have no firmware but the tables that it writes itself.
std::optional<HypervisorVerdict> byFirecracker(const GuestFacts& facts) {
  if (facts.acpiMaker != "FIRECK") return std::nullopt;
  return HypervisorVerdict{true, "firecracker", "acpi:FIRECK"};
}

// What the hypervisor bit is worth when no signature that is known stands beside it.
HypervisorVerdict byWhatIsLeft(const GuestFacts& facts, const MachineTexts& texts) {
  const bool isHyperVGuest = facts.cpuid.isGuest && isHyperV(facts.cpuid);
  if (auto verdict = byTexts(OTHER_RULES, texts)) {
    if (!isHyperVGuest || verdict->hypervisor != "hyper-v") return *verdict;
  }
  if (isHyperVGuest) return {true, "hyper-v", "cpuid:" + std::string(kHyperVSignature)};
  if (facts.cpuid.isGuest) {
    const std::string name =
        facts.cpuid.signatures.empty() ? "" : readable(facts.cpuid.signatures[0]);
    return {true, "other", "cpuid:" + (name.empty() ? "hypervisor" : name)};
  }
  if (texts.isVirtualByBios) return {true, "other", "smbios:virtual machine"};
  return {};
}

}  // namespace

HypervisorVerdict judgeHypervisor(const GuestFacts& facts, const MachineTexts& texts,
                                  const std::string& cpuVendor) {
  if (const auto verdict = byTexts(CLOAKED_RULES, texts)) return *verdict;
  if (cpuVendor == "User Mode Linux") return {true, "other", "file:/proc/cpuinfo"};
  if (const auto verdict = byXenFiles(facts.xen)) return *verdict;
  if (!facts.cpuid.isGuest) return byWhatIsLeft(facts, texts);
  if (isRootPartition(facts.cpuid)) return {};
  if (const auto verdict = byFirecracker(facts)) return *verdict;
  if (const auto verdict = bySignature(facts.cpuid)) return *verdict;
  if (!isHyperV(facts.cpuid)) {
    if (const auto verdict = byTexts(CLOUD_RULES, texts)) return *verdict;
  }
  return byWhatIsLeft(facts, texts);
}

bool isVmwareByCpuid(const GuestFacts& facts) {
  return facts.cpuid.isGuest && !facts.cpuid.signatures.empty() &&
         facts.cpuid.signatures[0] == "VMwareVMware";
}

std::string confidentialKind(const GuestFacts& facts) {
  constexpr uint32_t kIsolation = 1u << 22;
  constexpr uint32_t kCpuManagement = 1u << 12;
  const CpuidFacts& cpuid = facts.cpuid;
  if (cpuid.isTdx || facts.hasTdxGuestDevice) return "tdx";
  if (facts.hasSevGuestDevice) return "sev-snp";
  if ((cpuid.hyperVPrivileges & kIsolation) == 0) return "";
  if ((cpuid.hyperVPrivileges & kCpuManagement) != 0) return "";
  const uint32_t kind = cpuid.hyperVIsolation & 0xF;
  return kind == 2 ? "sev-snp" : kind == 3 ? "tdx" : "";
}

}  // namespace quenlor
