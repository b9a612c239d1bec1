// Processors and their caches (types 4 and 7).
#include "readers/dmi/DmiDecode.h"

namespace quenlor {
namespace {

constexpr uint8_t kElsewhere = 0xFF;  // in a byte: the word behind it tells
constexpr uint8_t kFamilyElsewhere = 0xFE;
constexpr uint16_t kReserved = 0xFFFF;

std::optional<uint16_t> speedAt(const DmiStructure& structure, size_t offset) {
  return dmiUnless<uint16_t>(structure.word(offset), 0);
}

// A byte of which FF means that the word has the number; 0 and FFFF are no numbers. Boards of the
// 3.0 era say FF without having the word: they mean 255.
std::optional<uint16_t> countAt(const DmiStructure& structure, size_t byteOffset,
                                size_t wordOffset) {
  const auto count = dmiUnless<uint8_t>(structure.byte(byteOffset), 0);
  const auto extended = structure.word(wordOffset);
  if (count != kElsewhere || !extended) return count;
  return dmiUnless<uint16_t>(dmiUnless<uint16_t>(extended, 0), kReserved);
}

// Families from 256 on exist in the word only; the word is filled for all others, too.
std::optional<uint16_t> familyOf(const DmiStructure& structure) {
  const auto family = structure.byte(0x06);
  if (!family || *family == kElsewhere) return {};
  if (*family != kFamilyElsewhere) return dmiUnless<uint16_t>(uint16_t{*family}, 0);
  return dmiUnless<uint16_t>(structure.word(0x28), 0);
}

std::array<uint16_t, 3> cacheHandlesOf(const DmiStructure& structure) {
  return {structure.word(0x1A).value_or(kNoDmiHandle), structure.word(0x1C).value_or(kNoDmiHandle),
          structure.word(0x1E).value_or(kNoDmiHandle)};
}

// Bit 15 of the word, 31 of the double word: the unit is 64 KiB, not 1 KiB.
std::optional<uint64_t> cacheKiB(const DmiStructure& structure, size_t wordOffset,
                                 size_t doubleOffset) {
  const auto size = structure.word(wordOffset);
  if (!size) return {};
  const auto extended = structure.dword(doubleOffset);
  if (*size == kReserved && extended) {
    return uint64_t{*extended & 0x7FFFFFFFu} << (*extended >> 31) * 6;
  }
  return uint64_t{*size & 0x7FFFu} << (*size >> 15) * 6;
}

}  // namespace

DmiProcessor dmiProcessorOf(const DmiStructure& structure) {
  const auto status = structure.byte(0x18);
  return {.socket = structure.text(0x04),
          .manufacturer = structure.text(0x07),
          .version = structure.text(0x10),
          .serial = structure.text(0x20),
          .assetTag = structure.text(0x21),
          .partNumber = structure.text(0x22),
          .kind = structure.byte(0x05),
          .family = familyOf(structure),
          .idEax = structure.dword(0x08),
          .idEdx = structure.dword(0x0C),
          .externalClockMhz = speedAt(structure, 0x12),
          .maxMhz = speedAt(structure, 0x14),
          .currentMhz = speedAt(structure, 0x16),
          .isPopulated = (status.value_or(0) >> 6 & 1) != 0,
          .status = status,
          .upgrade = dmiUnless<uint8_t>(structure.byte(0x19), 0),
          .socketType = structure.text(0x32),
          .cores = countAt(structure, 0x23, 0x2A),
          .enabledCores = countAt(structure, 0x24, 0x2C),
          .threads = countAt(structure, 0x25, 0x2E),
          .enabledThreads =
              dmiUnless<uint16_t>(dmiUnless<uint16_t>(structure.word(0x30), 0), kReserved),
          .characteristics = structure.word(0x26),
          .cacheHandles = cacheHandlesOf(structure)};
}

DmiCache dmiCacheOf(const DmiStructure& structure) {
  DmiCache cache{.handle = structure.handle(),
                 .designation = structure.text(0x04),
                 .level = {},
                 .isEnabled = {},
                 .maxKiB = dmiUnless<uint64_t>(cacheKiB(structure, 0x07, 0x13), 0),
                 .installedKiB = dmiUnless<uint64_t>(cacheKiB(structure, 0x09, 0x17), 0),
                 .speedNs = dmiUnless<uint8_t>(structure.byte(0x0F), 0),
                 .errorCorrection = structure.byte(0x10),
                 .kind = structure.byte(0x11),
                 .associativity = structure.byte(0x12)};
  if (const auto configuration = structure.word(0x05)) {
    cache.level = static_cast<uint8_t>((*configuration & 0x7) + 1);
    cache.isEnabled = (*configuration >> 7 & 1) != 0;
  }
  return cache;
}

}  // namespace quenlor
