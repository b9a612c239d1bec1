// Entry points of all three kinds, and tables behind them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "readers/dmi/DmiTable.h"
#include "tests/firmware/Structures.h"

namespace quenlor::test {

// The 24 bytes of a 64-bit entry point, with a right checksum.
std::string entryPoint64(Version version, uint32_t maximumSize, uint64_t address = 0);
// The 31 bytes of a 32-bit one.
std::string entryPoint32(Version version, uint16_t size, uint16_t count, uint32_t address = 0);
// The 15 bytes of a bare "_DMI_".
std::string entryPointOld(uint8_t bcdVersion, uint16_t size, uint16_t count, uint32_t address = 0);

// Puts the byte at `at` so that all bytes sum to 0.
void mendChecksum(std::string& bytes, size_t at);

// The bytes of structures one after the other, handles counted from 0.
std::string tableOf(const std::vector<Structure>& structures);

// Decoded behind a 64-bit entry point.
DmiTable decoded(const std::string& table, Version version = {3, 7});
DmiTable decoded(const std::vector<Structure>& structures, Version version = {3, 7});

}  // namespace quenlor::test
