#include "readers/firmware/smbios/SMMemory.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/SMBIOSTable.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/SMMemory.cpp";

constexpr unsigned short kFastestExternalClock = 2000;  // MHz
constexpr unsigned short kLastUpgrade = 17;             // of the processor-upgrade list kept to
constexpr uint32_t kIgnoredSize = 0xFFFFFFFF;

const SMBIOSTable* availableTable() {
  const SMBIOSTable* table = globalSMBIOSTable;
  return table != nullptr && table->isAvailable() ? table : nullptr;
}

const SMBIOSTable4Data* firstProcessor() {
  const SMBIOSTable* table = availableTable();
  return table == nullptr ? nullptr : table->getTable4(0);
}

// 2 to the power of a controller's size byte; 0 for none and for more than 32 bits hold.
unsigned moduleLimitMB(uint8_t exponent) {
  return exponent == 0 || exponent > 31 ? 0 : 1u << exponent;
}

// An array's size that is a power of two is shared among the slots only where the share is one as
// well and no module is larger than it; else a single slot may take all of it.
unsigned arrayModuleLimitMB(unsigned rawMB, unsigned perSlotMB) {
  const TraceFunction at{kSourcePath, "getMemorySpecs()"};
  if (!isPowerOf2(rawMB)) return perSlotMB;
  if (!isPowerOf2(perSlotMB)) return rawMB;
  const unsigned biggestMB = SM_getBiggestMemoryModule_17() >> 10;
  getCcLogHw()->traceMAX(at(), "hardware %s %u", "biggestModule found (SMB):", biggestMB);
  return perSlotMB >= biggestMB ? perSlotMB : rawMB;
}

void addController(const SMBIOSTable5Data& controller, unsigned* maxModuleSizeMB, unsigned* slots) {
  const TraceFunction at{kSourcePath, "getMemorySpecs()"};
  *slots = controller.getNumAssocMemorySlots();
  *maxModuleSizeMB = moduleLimitMB(controller.getMaximumMemoryModuleSize());
  const unsigned biggestMB = SM_getBiggestMemoryModule_6();
  getCcLogHw()->traceMAX(at(), "hardware %s %u %s %u %s %u",
                         "Table 5: Max Module Size:", *maxModuleSizeMB, "Slots:", *slots,
                         "Table 6 MaxModuleSize (calc) found:", biggestMB);
  *maxModuleSizeMB = std::max(*maxModuleSizeMB, biggestMB);
}

void addArray(const SMBIOSTable16Data& array, unsigned* maxModuleSizeMB, unsigned* slots) {
  const TraceFunction at{kSourcePath, "getMemorySpecs()"};
  CcLogWrapper* log = getCcLogHw();
  if (*slots == 0) *slots = array.getNumMemDevices();
  const unsigned rawMB = array.getMaxCapacity() >> 10;
  if (*slots != 0) {
    const unsigned perSlotMB = rawMB / *slots;
    log->traceMAX(at(), "hardware %s %u %s %u", "raw maxModuleSizeMB =", rawMB,
                  "MB, divided by slots:", perSlotMB);
    *maxModuleSizeMB = std::max(*maxModuleSizeMB, arrayModuleLimitMB(rawMB, perSlotMB));
  }
  log->traceMAX(at(), "hardware %s %u %s %u", "Table 16: Max Module Size:", *maxModuleSizeMB,
                "Slots:", *slots);
}

}  // namespace

int SM_Processor(unsigned short* currentSpeed, unsigned short* externalClock,
                 unsigned short* upgrade, unsigned int* edx) {
  *currentSpeed = *externalClock = *upgrade = 0;
  const SMBIOSTable4Data* processor = firstProcessor();
  if (processor == nullptr) return 0;
  *currentSpeed = processor->getCurrentSpeed();
  *externalClock = processor->getExternalClock();
  *upgrade = processor->getUpgrade();
  if (edx != nullptr) *edx = processor->getEDX();
  if (*externalClock > kFastestExternalClock) *externalClock = 0;
  if (*upgrade > kLastUpgrade) *upgrade = 0;
  return 1;
}

unsigned int SM_ProcessorFamily() {
  const SMBIOSTable4Data* processor = firstProcessor();
  return processor == nullptr ? 0 : processor->getFamily();
}

unsigned int SM_ProcessorCount() {
  const SMBIOSTable* table = availableTable();
  return table == nullptr ? 0 : static_cast<unsigned>(table->getTable4Total());
}

unsigned int SM_PopulatedProcessorCount() {
  const SMBIOSTable* table = availableTable();
  return table == nullptr ? 0 : static_cast<unsigned>(table->getTable4PopulatedTotal());
}

bool isPowerOf2(unsigned int n) { return std::has_single_bit(n); }

unsigned int SM_getBiggestMemoryModule_17() {
  const SMBIOSTable* table = availableTable();
  if (table == nullptr || table->getTable17Total() == 0) return 0;
  const TraceFunction at{kSourcePath, "SM_getBiggestMemoryModule_17()"};
  getCcLogHw()->traceMAX(at(), "hardware %s", "SMBIOS Table 17 is available");
  uint32_t biggest = 0;
  for (int i = 0; i < table->getTable17Total(); ++i) {
    const uint32_t size = table->getTable17(i)->getSizeKB();
    if (size != kIgnoredSize) biggest = std::max(biggest, size);
  }
  return biggest;
}

unsigned int SM_getBiggestMemoryModule_6() {
  const SMBIOSTable* table = availableTable();
  if (table == nullptr || table->getTable6Total() == 0) return 0;
  const TraceFunction at{kSourcePath, "SM_getBiggestMemoryModule_6()"};
  getCcLogHw()->traceMAX(at(), "hardware %s", "SMBIOS Table 6 is available");
  int64_t biggest = 0;  // above the -1 of a module without size
  for (int i = 0; i < table->getTable6Total(); ++i) {
    biggest = std::max(biggest, table->getTable6(i)->getInstalledSizeMB());
  }
  return static_cast<unsigned>(biggest);
}

int getMemorySpecs(unsigned int* maxModuleSizeMB, unsigned int* slots) {
  const TraceFunction at{kSourcePath, "getMemorySpecs()"};
  *maxModuleSizeMB = *slots = 0;
  const SMBIOSTable* table = availableTable();
  if (table == nullptr) return 0;
  const SMBIOSTable5Data* controller = table->getTable5();
  const SMBIOSTable16Data* array = table->getTable16();
  CcLogWrapper* log = getCcLogHw();
  if (controller != nullptr) log->traceMAX(at(), "hardware %s", "SMBIOS Table 5 is available");
  if (array != nullptr) log->traceMAX(at(), "hardware %s", "SMBIOS Table 16 is available");
  if (controller != nullptr) addController(*controller, maxModuleSizeMB, slots);
  if (array != nullptr) addArray(*array, maxModuleSizeMB, slots);
  return *slots + *maxModuleSizeMB != 0 ? 1 : 0;
}

}  // namespace quenlor
