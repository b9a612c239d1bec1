// The groups, in the order of a full scan, and their key attributes.
#include <cstddef>

#include "catalogue/Tables.h"

namespace quenlor {
namespace {

constexpr uint32_t PROCESSOR_KEYS_DEF[] = {1, 2};
constexpr uint32_t MEMORY_MODULES_KEYS_DEF[] = {1};
constexpr uint32_t STORAGE_KEYS_DEF[] = {1, 2};
constexpr uint32_t IP_ADDR_KEYS_DEF[] = {2};
constexpr uint32_t NET_ADPTR_KEYS_DEF[] = {2};
constexpr uint32_t PART_KEYS_DEF[] = {1, 7, 8};
constexpr uint32_t PCI_DEVICE_KEYS_DEF[] = {1, 2};
constexpr uint32_t PHYS_PROC_KEYS_DEF[] = {1};

// A group of which a machine has one.
constexpr velGroupDef single(uint32_t id, const char* name, const velAttribDef* attribs) {
  return {id, name, attribs, nullptr, 0, 1, 0};
}

// A group with a row for each thing that the keys tell apart.
template <size_t keyCount>
constexpr velGroupDef keyed(uint32_t id, const char* name, const velAttribDef* attribs,
                            const uint32_t (&keys)[keyCount]) {
  return {id, name, attribs, keys, keyCount, 1, 0};
}

}  // namespace

constexpr velGroupDef GROUPS_DEF[] = {
    single(group::kComponentId, "ComponentID", COMPONENTID_ATTRS_DEF),
    keyed(group::kProcessor, "Processor", PROCESSOR_ATTRS_DEF, PROCESSOR_KEYS_DEF),
    single(group::kMemory, "Memory", MEMORY_ATTRS_DEF),
    keyed(group::kMemoryModules, "Memory Modules", MEMORY_MODULES_ATTRS_DEF,
          MEMORY_MODULES_KEYS_DEF),
    single(group::kOperatingSystem, "Operating System", OPER_SYS_ATTRS_DEF),
    keyed(group::kStorage, "Storage", STORAGE_ATTRS_DEF, STORAGE_KEYS_DEF),
    keyed(group::kIpAddress, "IP Address", IP_ADDR_ATTRS_DEF, IP_ADDR_KEYS_DEF),
    keyed(group::kNetworkAdapter, "Network Adapter", NET_ADPTR_ATTRS_DEF, NET_ADPTR_KEYS_DEF),
    single(group::kRegional, "Regional", REGIONAL_ATTRS_DEF),
    single(group::kUnixSystemParams, "UNIX System Params", UNIX_PAR_ATTRS_DEF),
    single(group::kScanInfo, "Scan Info", SCAN_INFO_ATTRS_DEF),
    keyed(group::kPartition, "Partition", PART_ATTRS_DEF, PART_KEYS_DEF),
    single(group::kSmbios, "SMBIOS", SMBIOS_ATTRS_DEF),
    keyed(group::kPciDevice, "PCI Device", PCI_DEVICE_ATTRS_DEF, PCI_DEVICE_KEYS_DEF),
    single(group::kLpar, "Lpar", LPAR_ATTRS_DEF),
    keyed(group::kPhysicalProcessor, "PhysicalProcessor", PHYS_PROC_ATTRS_DEF, PHYS_PROC_KEYS_DEF),
    single(group::kHostComponentId, "HostComponentID", COMPONENTID_ATTRS_DEF),
    single(group::kCpuMeter, "CpuMeter", CPU_METER_ATTRS_DEF),
    single(group::kUnixCpuMeter, "UnixCpuMeter", CPU_UNIX_METER_ATTRS_DEF),
    {kCatalogueEnd, nullptr, nullptr, nullptr, 0, 0, 0},
};

}  // namespace quenlor
