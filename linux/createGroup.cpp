#include "linux/createGroup.h"

#include "SMBIOS/groups/ComponentIDGroup.h"
#include "SMBIOS/groups/MemoryModulesGroup.h"
#include "SMBIOS/groups/SMBIOSGroup.h"
#include "linux/CpuMeterGroup.h"
#include "linux/HostComponentIDGroup.h"
#include "linux/IpAddressGroup.h"
#include "linux/LParGroup.h"
#include "linux/MemoryGroup.h"
#include "linux/NetworkAdapterGroup.h"
#include "linux/OperatingSystemGroup.h"
#include "linux/PCIDeviceGroup.h"
#include "linux/PartitionGroup.h"
#include "linux/PhysicalProcessorGroup.h"
#include "linux/ProcessorGroup.h"
#include "linux/RegionalGroup.h"
#include "linux/ScanInfoGroup.h"
#include "linux/StorageGroup.h"
#include "linux/UnixCpuMeterGroup.h"
#include "linux/UnixSystemParamsGroup.h"

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
