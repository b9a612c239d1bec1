// Facts derived from the shared SMBIOS table. Without a table every function gives its empty
// result.
#pragma once

namespace quenlor {

// Speed (MHz), external clock (MHz, 0 above 2000) and upgrade code (0 above 17) of the first
// processor record; edx (CPUID leaf 1) only when not null and a record exists. 1 when it exists.
int SM_Processor(unsigned short* currentSpeed, unsigned short* externalClock,
                 unsigned short* upgrade, unsigned int* edx);
unsigned int SM_ProcessorFamily();          // family byte of the first processor record; 0: none
unsigned int SM_ProcessorCount();           // processor records kept, at most 80
unsigned int SM_PopulatedProcessorCount();  // those that are populated central processors
// Largest module (MB) a slot takes and the number of slots, both 0 when unknown. 1 when either is
// known.
int getMemorySpecs(unsigned int* maxModuleSizeMB, unsigned int* slots);
unsigned int SM_getBiggestMemoryModule_17();  // KB, 0: none
unsigned int SM_getBiggestMemoryModule_6();   // MB, 0: none
bool isPowerOf2(unsigned int n);              // exactly one bit set

}  // namespace quenlor
