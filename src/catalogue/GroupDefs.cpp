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

// What an address, an adapter and a card are told apart by once they have names of their own.
constexpr uint32_t MODERN_IP_ADDR_KEYS_DEF[] = {2, 101};
constexpr uint32_t MODERN_NET_ADPTR_KEYS_DEF[] = {2, 101};
constexpr uint32_t MODERN_PCI_DEVICE_KEYS_DEF[] = {1, 2, 101};
constexpr uint32_t INDEX_KEYS_DEF[] = {1};
constexpr uint32_t INDEX_AND_NAME_KEYS_DEF[] = {1, 2};

// Classic attributes, then those that modern sources add.
constexpr auto MODERN_MEMORY_ATTRS_DEF = joinAttributes(MEMORY_ATTRS_DEF, modern::MEMORY_ATTRS_DEF);
constexpr auto MODERN_MEMORY_MODULES_ATTRS_DEF =
    joinAttributes(MEMORY_MODULES_ATTRS_DEF, modern::MEMORY_MODULES_ATTRS_DEF);
constexpr auto MODERN_OPER_SYS_ATTRS_DEF =
    joinAttributes(OPER_SYS_ATTRS_DEF, modern::OPER_SYS_ATTRS_DEF);
constexpr auto MODERN_STORAGE_ATTRS_DEF =
    joinAttributes(STORAGE_ATTRS_DEF, modern::STORAGE_ATTRS_DEF);
constexpr auto MODERN_IP_ADDR_ATTRS_DEF =
    joinAttributes(IP_ADDR_ATTRS_DEF, modern::IP_ADDR_ATTRS_DEF);
constexpr auto MODERN_NET_ADPTR_ATTRS_DEF =
    joinAttributes(NET_ADPTR_ATTRS_DEF, modern::NET_ADPTR_ATTRS_DEF);
constexpr auto MODERN_REGIONAL_ATTRS_DEF =
    joinAttributes(REGIONAL_ATTRS_DEF, modern::REGIONAL_ATTRS_DEF);
constexpr auto MODERN_UNIX_PAR_ATTRS_DEF =
    joinAttributes(UNIX_PAR_ATTRS_DEF, modern::UNIX_PAR_ATTRS_DEF);
constexpr auto MODERN_SCAN_INFO_ATTRS_DEF =
    joinAttributes(SCAN_INFO_ATTRS_DEF, modern::SCAN_INFO_ATTRS_DEF);
constexpr auto MODERN_PART_ATTRS_DEF = joinAttributes(PART_ATTRS_DEF, modern::PART_ATTRS_DEF);
constexpr uint32_t kEnclosureType = 15;
constexpr auto MODERN_SMBIOS_ATTRS_DEF =
    withEnumeration(joinAttributes(SMBIOS_ATTRS_DEF, modern::SMBIOS_ATTRS_DEF), kEnclosureType,
                    MODERN_ENCLOSURE_TYPE_ENUM_DEF);
constexpr auto MODERN_PCI_DEVICE_ATTRS_DEF =
    joinAttributes(PCI_DEVICE_ATTRS_DEF, modern::PCI_DEVICE_ATTRS_DEF);
constexpr auto MODERN_LPAR_ATTRS_DEF = joinAttributes(LPAR_ATTRS_DEF, modern::LPAR_ATTRS_DEF);
constexpr auto MODERN_PHYS_PROC_ATTRS_DEF =
    joinAttributes(PHYS_PROC_ATTRS_DEF, modern::PHYS_PROC_ATTRS_DEF);
constexpr auto MODERN_CPU_METER_ATTRS_DEF =
    joinAttributes(CPU_METER_ATTRS_DEF, modern::CPU_METER_ATTRS_DEF);

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

constexpr velGroupDef MODERN_GROUPS_DEF[] = {
    single(group::kComponentId, "ComponentID", COMPONENTID_ATTRS_DEF),
    keyed(group::kProcessor, "Processor", PROCESSOR_ATTRS_DEF, PROCESSOR_KEYS_DEF),
    single(group::kMemory, "Memory", MODERN_MEMORY_ATTRS_DEF.data()),
    keyed(group::kMemoryModules, "Memory Modules", MODERN_MEMORY_MODULES_ATTRS_DEF.data(),
          MEMORY_MODULES_KEYS_DEF),
    single(group::kOperatingSystem, "Operating System", MODERN_OPER_SYS_ATTRS_DEF.data()),
    keyed(group::kStorage, "Storage", MODERN_STORAGE_ATTRS_DEF.data(), STORAGE_KEYS_DEF),
    keyed(group::kIpAddress, "IP Address", MODERN_IP_ADDR_ATTRS_DEF.data(),
          MODERN_IP_ADDR_KEYS_DEF),
    keyed(group::kNetworkAdapter, "Network Adapter", MODERN_NET_ADPTR_ATTRS_DEF.data(),
          MODERN_NET_ADPTR_KEYS_DEF),
    single(group::kRegional, "Regional", MODERN_REGIONAL_ATTRS_DEF.data()),
    single(group::kUnixSystemParams, "UNIX System Params", MODERN_UNIX_PAR_ATTRS_DEF.data()),
    single(group::kScanInfo, "Scan Info", MODERN_SCAN_INFO_ATTRS_DEF.data()),
    keyed(group::kPartition, "Partition", MODERN_PART_ATTRS_DEF.data(), PART_KEYS_DEF),
    single(group::kSmbios, "SMBIOS", MODERN_SMBIOS_ATTRS_DEF.data()),
    keyed(group::kPciDevice, "PCI Device", MODERN_PCI_DEVICE_ATTRS_DEF.data(),
          MODERN_PCI_DEVICE_KEYS_DEF),
    single(group::kLpar, "Lpar", MODERN_LPAR_ATTRS_DEF.data()),
    keyed(group::kPhysicalProcessor, "PhysicalProcessor", MODERN_PHYS_PROC_ATTRS_DEF.data(),
          PHYS_PROC_KEYS_DEF),
    single(group::kHostComponentId, "HostComponentID", COMPONENTID_ATTRS_DEF),
    single(group::kCpuMeter, "CpuMeter", MODERN_CPU_METER_ATTRS_DEF.data()),
    single(group::kUnixCpuMeter, "UnixCpuMeter", CPU_UNIX_METER_ATTRS_DEF),
    single(group::kMachine, "Machine", modern::MACHINE_ATTRS_DEF),
    keyed(group::kVolume, "Volume", modern::VOLUME_ATTRS_DEF, INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kUsbDevice, "USB Device", modern::USB_DEVICE_ATTRS_DEF, INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kDisplay, "Display", modern::DISPLAY_ATTRS_DEF, INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kBattery, "Battery", modern::BATTERY_ATTRS_DEF, INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kCache, "Cache", modern::CACHE_ATTRS_DEF, INDEX_KEYS_DEF),
    keyed(group::kSlot, "Slot", modern::SLOT_ATTRS_DEF, INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kPowerSupply, "Power Supply", modern::POWER_SUPPLY_ATTRS_DEF,
          INDEX_AND_NAME_KEYS_DEF),
    keyed(group::kScanResult, "Scan Result", modern::SCAN_RESULT_ATTRS_DEF, INDEX_KEYS_DEF),
    {kCatalogueEnd, nullptr, nullptr, nullptr, 0, 0, 0},
};

}  // namespace quenlor
