// What hypervisors and containers leave to be seen: CPUID, and files of /proc, /sys and /run. Facts
// alone; what they mean is judged in HypervisorRules.h, ContainerRules.h and CloudRules.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/guest/CgroupLimits.h"

namespace quenlor {

// Texts of the firmware, as its table or /sys/class/dmi/id has them; empty where unknown.
struct MachineTexts {
  std::string sysVendor{}, productName{}, productVersion{};
  std::string productSerial{}, productUuid{};
  std::string chassisVendor{}, chassisAssetTag{}, boardAssetTag{};
  std::string biosVendor{}, biosVersion{};
  bool isVirtualByBios = false;  // SMBIOS type 0, extension byte 2, bit 4; unset proves nothing
};

// CPUID of the processor that the calling thread runs on.
struct CpuidFacts {
  bool isGuest = false;                 // leaf 1 ECX 31
  std::vector<std::string> signatures;  // of leaf 40000000, 40000100, ...: twelve bytes each
  uint32_t hyperVPrivileges = 0;        // leaf 40000003 EBX, where Hyper-V's interface answers
  uint32_t hyperVIsolation = 0;         // leaf 4000000C EBX, likewise
  bool isTdx = false;                   // leaf 21 answers as inside a trust domain
};

struct XenFacts {
  bool hasProcXen = false;
  std::string type{};          // /sys/hypervisor/type
  std::string features{};      // hexadecimal, without 0x
  std::string capabilities{};  // /proc/xen/capabilities
};

struct ContainerFacts {
  bool hasVz = false, hasBc = false;        // /proc/vz, /proc/bc
  std::string osRelease;                    // uname
  std::string tracer;                       // name of the process that traces this one
  std::string hostManager, systemdManager;  // what /run says
  bool isInitRefused = false;               // the kernel does not show the environment of process 1
  std::string initEnvironment;              // "container" of process 1
  bool hasContainerenv = false, hasDockerenv = false;  // marks of podman and docker
  bool hasLxdSocket = false, hasIncusSocket = false;   // in virtual machines too
  bool hasKubernetesService = false, hasKubernetesSecrets = false;
  std::string cgroups;         // /proc/self/cgroup
  std::string initCgroups;     // /proc/1/cgroup
  bool hasCgroupType = false;  // the root of the hierarchy that is seen is none
  std::string uidMap;
  std::string kernelVersion;                  // /proc/version
  bool hasModules = false;                    // /proc/modules
  std::string pidNamespace, cgroupNamespace;  // "pid:[4026531836]"
};

struct GuestFacts {
  CpuidFacts cpuid;
  XenFacts xen;
  ContainerFacts container;
  bool hasSevGuestDevice = false, hasTdxGuestDevice = false;
  std::string acpiMaker;        // OEM id of the DSDT, six characters; root only
  std::string cloudInstanceId;  // of cloud-init
  CgroupLimits limits;          // only in a container
  Outcome outcome;
};

// Reads each file once, opens no device and asks no network.
GuestFacts readGuestFacts();

// Field of /proc/self/status; empty when there is none.
std::string statusField(const std::string& status, const std::string& key);
// Value of a variable among the NUL-separated ones of /proc/PID/environ; empty when there is none.
std::string environmentValue(const std::string& environment, const std::string& name);
// OEM id of an ACPI table (ACPI 6.5, 5.2.6); empty for what is too short to be one.
std::string acpiMakerOf(const std::string& table);

}  // namespace quenlor
