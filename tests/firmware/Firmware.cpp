#include "tests/firmware/Firmware.h"

#include <algorithm>

namespace quenlor::test {
namespace {

constexpr size_t kEntryPointSize = 0x1F;
constexpr size_t kIntermediateOffset = 0x10;
constexpr uint32_t kDumpTableAddress = 0x20;

void put(std::string& bytes, size_t at, const std::string& content) {
  if (bytes.size() < at + content.size()) bytes.resize(at + content.size(), '\0');
  bytes.replace(at, content.size(), content);
}

std::string little(uint32_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

// Sets the byte at `at` so that the range sums to 0, or just not to 0.
void putChecksum(std::string& bytes, size_t from, size_t count, size_t at, Checksum kind) {
  bytes[at] = 0;
  unsigned sum = kind == Checksum::kRight ? 0 : 1;
  for (size_t i = from; i < from + count; ++i) sum += static_cast<unsigned char>(bytes[i]);
  bytes[at] = static_cast<char>(-sum & 0xFF);
}

}  // namespace

std::string Firmware::entryPoint(uint32_t announcedTableAddress) const {
  const Version version = table.version();
  const auto length = announcedLength.value_or(static_cast<uint16_t>(table.bytes().size()));
  std::string bytes(kEntryPointSize + 1, '\0');
  put(bytes, 0, "_SM_");
  bytes[5] = static_cast<char>(entryPointLength.value_or(kEntryPointSize));
  bytes[6] = static_cast<char>(version.major);
  bytes[7] = static_cast<char>(version.minor);
  put(bytes, 8, little(256, 2));
  put(bytes, kIntermediateOffset, "_DMI_");
  put(bytes, 22, little(length, 2));
  put(bytes, 24, little(announcedTableAddress, 4));
  put(bytes, 28, little(announcedCount.value_or(table.count()), 2));
  if (hasBcdRevision) bytes[30] = static_cast<char>(version.major << 4 | version.minor);
  putChecksum(bytes, kIntermediateOffset, 15, 21, intermediateChecksum);
  putChecksum(bytes, 0, kEntryPointSize, 4, entryPointChecksum);
  return bytes;
}

std::string Firmware::memory() const {
  std::string bytes(kFirstMegabyte, '\0');
  for (const auto& [address, content] : otherMemory) put(bytes, address, content);
  put(bytes, tableAddress, table.bytes());
  put(bytes, entryPointAddress, entryPoint(tableAddress));
  return bytes;
}

std::string Firmware::dump() const { return entryPoint(kDumpTableAddress) + table.bytes(); }

}  // namespace quenlor::test
