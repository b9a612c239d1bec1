#include "groups/createGroup.h"

#include "groups/capacity/HostComponentIDGroup.h"
#include "groups/capacity/LParGroup.h"
#include "groups/devices/PCIDeviceGroup.h"
#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
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

struct GroupClass {
  uint32_t id;
  VelGroup* (*create)();
};

constexpr GroupClass kGroupClasses[] = {
    {group::kComponentId, create<ComponentIDGroup>},
    {group::kProcessor, create<ProcessorGroup>},
    {group::kMemory, create<MemoryGroup>},
    {group::kMemoryModules, create<MemoryModulesGroup>},
    {group::kOperatingSystem, create<OperatingSystemGroup>},
    {group::kStorage, create<StorageGroup>},
    {group::kIpAddress, create<IpAddressGroup>},
    {group::kNetworkAdapter, create<NetworkAdapterGroup>},
    {group::kRegional, create<RegionalGroup>},
    {group::kUnixSystemParams, create<UnixSystemParamsGroup>},
    {group::kScanInfo, create<ScanInfoGroup>},
    {group::kPartition, create<PartitionGroup>},
    {group::kSmbios, create<SMBIOSGroup>},
    {group::kPciDevice, create<PCIDeviceGroup>},
    {group::kLpar, create<LParGroup>},
    {group::kPhysicalProcessor, create<PhysicalProcessorGroup>},
    {group::kHostComponentId, create<HostComponentIDGroup>},
    {group::kCpuMeter, create<CpuMeterGroup>},
    {group::kUnixCpuMeter, create<UnixCpuMeterGroup>},
};

}  // namespace

VelGroup* createGroup(unsigned long groupId) {
  for (const GroupClass& groupClass : kGroupClasses) {
    if (groupClass.id == groupId) return groupClass.create();
  }
  return nullptr;
}

}  // namespace quenlor
