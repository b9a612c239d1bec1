#include "tests/readers/dmi/DmiImages.h"

namespace quenlor::test {
namespace {

std::string little(uint64_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string byteText(unsigned value) { return std::string(1, static_cast<char>(value)); }

}  // namespace

void mendChecksum(std::string& bytes, size_t at) {
  bytes[at] = 0;
  unsigned sum = 0;
  for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
  bytes[at] = static_cast<char>(-sum & 0xFF);
}

std::string entryPoint64(Version version, uint32_t maximumSize, uint64_t address) {
  std::string bytes = "_SM3_" + byteText(0) + byteText(0x18) + byteText(version.major);
  bytes += byteText(version.minor) + byteText(0) + byteText(1) + byteText(0);
  bytes += little(maximumSize, 4) + little(address, 8);
  mendChecksum(bytes, 5);
  return bytes;
}

std::string entryPointOld(uint8_t bcdVersion, uint16_t size, uint16_t count, uint32_t address) {
  std::string bytes = "_DMI_" + byteText(0) + little(size, 2) + little(address, 4);
  bytes += little(count, 2) + byteText(bcdVersion);
  mendChecksum(bytes, 5);
  return bytes;
}

std::string entryPoint32(Version version, uint16_t size, uint16_t count, uint32_t address) {
  std::string bytes = "_SM_" + byteText(0) + byteText(0x1F) + byteText(version.major);
  bytes += byteText(version.minor) + little(256, 2) + std::string(6, '\0');
  bytes += entryPointOld(static_cast<uint8_t>(version.major << 4 | (version.minor & 15)), size,
                         count, address);
  mendChecksum(bytes, 4);
  return bytes;
}

std::string tableOf(const std::vector<Structure>& structures) {
  std::string bytes;
  uint16_t handle = 0;
  for (const Structure& structure : structures) bytes += structure.encode(handle++);
  return bytes;
}

DmiTable decoded(const std::string& table, Version version) {
  return decodeDmi(entryPoint64(version, static_cast<uint32_t>(table.size())), table);
}

DmiTable decoded(const std::vector<Structure>& structures, Version version) {
  return decoded(tableOf(structures), version);
}

}  // namespace quenlor::test
