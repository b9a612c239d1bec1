// Structures to records, a function per type. For DmiTable.cpp and its tests.
#pragma once

#include "readers/dmi/DmiStructure.h"
#include "readers/dmi/DmiTable.h"

namespace quenlor {

DmiBios dmiBiosOf(const DmiStructure& structure);
DmiSystem dmiSystemOf(const DmiStructure& structure, DmiVersion version);
DmiBoard dmiBoardOf(const DmiStructure& structure);
DmiEnclosure dmiEnclosureOf(const DmiStructure& structure);
DmiProcessor dmiProcessorOf(const DmiStructure& structure);
DmiMemoryController dmiMemoryControllerOf(const DmiStructure& structure);
DmiMemoryModule dmiMemoryModuleOf(const DmiStructure& structure);
DmiCache dmiCacheOf(const DmiStructure& structure);
DmiSlot dmiSlotOf(const DmiStructure& structure);
DmiMemoryArray dmiMemoryArrayOf(const DmiStructure& structure);
DmiMemoryDevice dmiMemoryDeviceOf(const DmiStructure& structure);  // without its array
DmiManagement dmiManagementOf(const DmiStructure& structure);
DmiPowerSupply dmiPowerSupplyOf(const DmiStructure& structure);
DmiTpm dmiTpmOf(const DmiStructure& structure);

// The value unless it is the one that stands for "not known".
template <class Number>
std::optional<Number> dmiUnless(std::optional<Number> value, Number unknown) {
  return value == unknown ? std::nullopt : value;
}

}  // namespace quenlor
