#include "groups/createGroup.h"

#include "groups/capacity/HostComponentIDGroup.h"
#include "groups/capacity/LParGroup.h"
#include "groups/devices/PCIDeviceGroup.h"
#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "groups/modern/Collectors.h"
#include "groups/network/IpAddressGroup.h"
#include "groups/network/NetworkAdapterGroup.h"
#include "groups/processor/CpuMeterGroup.h"
#include "groups/processor/PhysicalProcessorGroup.h"
#include "groups/processor/ProcessorGroup.h"
#include "groups/processor/UnixCpuMeterGroup.h"
#include "groups/storage/PartitionGroup.h"
#include "groups/storage/StorageGroup.h"
#include "groups/system/MemoryGroup.h"
#include "groups/system/OperatingSystemGroup.h"
#include "groups/system/RegionalGroup.h"
#include "groups/system/ScanInfoGroup.h"
#include "groups/system/UnixSystemParamsGroup.h"

namespace quenlor {
namespace {

template <class Group>
VelGroup* create() {
  return new Group;
}

// How a group is made: its classic source, null where only modern documents have the group, and its
// modern one.
struct GroupClass {
  uint32_t id;
  VelGroup* (*create)();
  ModernCollector collect;
};

constexpr GroupClass kGroupClasses[] = {
    {group::kComponentId, create<ComponentIDGroup>, collectComponentId},
    {group::kProcessor, create<ProcessorGroup>, collectProcessor},
    {group::kMemory, create<MemoryGroup>, collectMemory},
    {group::kMemoryModules, create<MemoryModulesGroup>, collectMemoryModules},
    {group::kOperatingSystem, create<OperatingSystemGroup>, collectOperatingSystem},
    {group::kStorage, create<StorageGroup>, collectStorage},
    {group::kIpAddress, create<IpAddressGroup>, collectIpAddresses},
    {group::kNetworkAdapter, create<NetworkAdapterGroup>, collectNetworkAdapters},
    {group::kRegional, create<RegionalGroup>, collectRegional},
    {group::kUnixSystemParams, create<UnixSystemParamsGroup>, collectUnixSystemParams},
    {group::kScanInfo, create<ScanInfoGroup>, collectScanInfo},
    {group::kPartition, create<PartitionGroup>, collectPartition},
    {group::kSmbios, create<SMBIOSGroup>, collectSmbios},
    {group::kPciDevice, create<PCIDeviceGroup>, collectPciDevices},
    {group::kLpar, create<LParGroup>, collectLpar},
    {group::kPhysicalProcessor, create<PhysicalProcessorGroup>, collectPhysicalProcessor},
    {group::kHostComponentId, create<HostComponentIDGroup>, collectHostComponentId},
    {group::kCpuMeter, create<CpuMeterGroup>, collectCpuMeter},
    {group::kUnixCpuMeter, create<UnixCpuMeterGroup>, collectUnixCpuMeter},
    {group::kMachine, nullptr, collectMachine},
    {group::kVolume, nullptr, collectVolume},
    {group::kUsbDevice, nullptr, collectUsbDevices},
    {group::kDisplay, nullptr, collectDisplays},
    {group::kBattery, nullptr, collectBatteries},
    {group::kCache, nullptr, collectCache},
    {group::kSlot, nullptr, collectSlot},
    {group::kPowerSupply, nullptr, collectPowerSupply},
    {group::kScanResult, nullptr, collectScanResult},
};

const GroupClass* findClass(unsigned long groupId) {
  for (const GroupClass& groupClass : kGroupClasses) {
    if (groupClass.id == groupId) return &groupClass;
  }
  return nullptr;
}

VelGroup* createModernGroup(unsigned long groupId, const std::shared_ptr<ModernScan>& scan) {
  const GroupClass* groupClass = findClass(groupId);
  if (groupClass == nullptr) return nullptr;
  const velGroupDef& group = *findGroup(MODERN_GROUPS_DEF, groupClass->id);
  return new ModernGroup(group, scan, groupClass->collect);
}

}  // namespace

VelGroup* createGroup(unsigned long groupId) {
  const GroupClass* groupClass = findClass(groupId);
  return groupClass == nullptr || groupClass->create == nullptr ? nullptr : groupClass->create();
}

GroupFactory::Creator modernGroups(const ScanSettings& settings) {
  return [scan = std::make_shared<ModernScan>(settings)](unsigned long groupId) {
    return createModernGroup(groupId, scan);
  };
}

}  // namespace quenlor
