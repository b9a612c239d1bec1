// The modern source of every group, each beside the group's classic one.
#pragma once

#include "groups/modern/ModernGroup.h"

namespace quenlor {

void collectBatteries(ModernScan& scan, ModernTable& table);
void collectCache(ModernScan& scan, ModernTable& table);
void collectComponentId(ModernScan& scan, ModernTable& table);
void collectCpuMeter(ModernScan& scan, ModernTable& table);
void collectDisplays(ModernScan& scan, ModernTable& table);
void collectHostComponentId(ModernScan& scan, ModernTable& table);
void collectIpAddresses(ModernScan& scan, ModernTable& table);
void collectLpar(ModernScan& scan, ModernTable& table);
void collectMachine(ModernScan& scan, ModernTable& table);
void collectMemory(ModernScan& scan, ModernTable& table);
void collectMemoryModules(ModernScan& scan, ModernTable& table);
void collectNetworkAdapters(ModernScan& scan, ModernTable& table);
void collectOperatingSystem(ModernScan& scan, ModernTable& table);
void collectPartition(ModernScan& scan, ModernTable& table);
void collectPciDevices(ModernScan& scan, ModernTable& table);
void collectPhysicalProcessor(ModernScan& scan, ModernTable& table);
void collectPowerSupply(ModernScan& scan, ModernTable& table);
void collectProcessor(ModernScan& scan, ModernTable& table);
void collectRegional(ModernScan& scan, ModernTable& table);
void collectScanInfo(ModernScan& scan, ModernTable& table);
void collectScanResult(ModernScan& scan, ModernTable& table);
void collectSlot(ModernScan& scan, ModernTable& table);
void collectSmbios(ModernScan& scan, ModernTable& table);
void collectStorage(ModernScan& scan, ModernTable& table);
void collectUnixCpuMeter(ModernScan& scan, ModernTable& table);
void collectUnixSystemParams(ModernScan& scan, ModernTable& table);
void collectUsbDevices(ModernScan& scan, ModernTable& table);
void collectVolume(ModernScan& scan, ModernTable& table);

}  // namespace quenlor
