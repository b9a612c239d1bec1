// Names of the codes in firmware structures (DMTF SMBIOS 2.0 to 3.9). Empty for codes that stand
// for "unknown", that nobody has defined, and, where a list has no word for it, for "other".
#pragma once

#include <cstdint>
#include <string_view>

namespace quenlor {

// The extended list of type 4. The manufacturer decides where two makers use one code.
std::string_view dmiProcessorFamily(uint16_t code, std::string_view manufacturer);
std::string_view dmiProcessorUpgrade(uint8_t code);  // the socket: "LGA4677"

std::string_view dmiMemoryFormFactor(uint8_t code);  // "DIMM"
std::string_view dmiMemoryType(uint8_t code);        // "DDR4"
std::string_view dmiErrorCorrection(uint8_t code);   // of type 16: none, parity, single-bit, ...
// dram, nvdimm-n, nvdimm-f, nvdimm-p, optane, hbm, other. High-bandwidth memory has no technology
// code of its own; its memory type tells.
std::string_view dmiMemoryTechnology(uint8_t technology, uint8_t memoryType);

std::string_view dmiSlotType(uint8_t code);    // "pci express gen 4 x16"
std::string_view dmiSlotWidth(uint8_t code);   // "x16"
std::string_view dmiSlotUsage(uint8_t code);   // available, in use, unavailable, other
std::string_view dmiSlotLength(uint8_t code);  // "short"

// Status of a power supply that is there: ok, non-critical, critical, other.
std::string_view dmiPowerStatus(uint8_t code);

// desktop, laptop, convertible, tablet, handset, server, blade or embedded, of an enclosure type
// without its lock bit.
std::string_view dmiChassis(uint8_t enclosureType);

// kcs, smic, bt or ssif.
std::string_view dmiBmcInterface(uint8_t code);

}  // namespace quenlor
