// Memory, as controllers and modules (types 5 and 6) or as arrays and devices (16 and 17).
#include "readers/dmi/DmiDecode.h"

namespace quenlor {
namespace {

constexpr uint64_t kKiBPerMiB = 1024;

// From these on a module's size byte says why there is no size.
constexpr unsigned kFirstReasonExponent = 125;
constexpr unsigned kLargestExponent = 31;  // 2^31 MiB: what any table of that age can mean

constexpr uint32_t kCapacityElsewhere = 0x80000000;  // KiB; the quadruple word holds bytes

constexpr uint16_t kSizeUnknown = 0xFFFF;
constexpr uint16_t kSizeElsewhere = 0x7FFF;
constexpr uint16_t kSizeInKiB = 0x8000;
constexpr uint16_t kSpeedElsewhere = 0xFFFF;
constexpr uint32_t kValueBits = 0x7FFFFFFF;  // the highest bit of extended fields is reserved

std::optional<uint64_t> moduleMiB(std::optional<uint8_t> size) {
  const unsigned exponent = size.value_or(kFirstReasonExponent) & 0x7Fu;  // bit 7: two banks
  if (exponent >= kFirstReasonExponent || exponent > kLargestExponent) return {};
  return uint64_t{1} << exponent;
}

std::optional<uint64_t> capacityKiB(const DmiStructure& structure) {
  const auto capacity = structure.dword(0x07);
  if (capacity != kCapacityElsewhere) return dmiUnless<uint32_t>(capacity, 0);
  const auto bytes = dmiUnless<uint64_t>(structure.qword(0x0F), 0);
  return bytes ? std::optional(*bytes / 1024) : std::nullopt;
}

// Virtual machines split their memory into modules of 32767 MiB, which is the very value that sends
// readers of later tables to the extended field: without that field it is a size as any other.
std::optional<uint64_t> deviceKiB(const DmiStructure& structure) {
  const auto size = structure.word(0x0C);
  if (!size || *size == kSizeUnknown || *size == 0) return {};
  const auto extended = structure.dword(0x1C);
  if (*size == kSizeElsewhere && extended) {
    const uint64_t amount = *extended & kValueBits;
    return amount == 0 ? std::nullopt : std::optional(amount * kKiBPerMiB);
  }
  const uint64_t amount = *size & ~kSizeInKiB;
  return (*size & kSizeInKiB) != 0 ? amount : amount * kKiBPerMiB;
}

std::optional<uint32_t> speedAt(const DmiStructure& structure, size_t offset,
                                size_t extendedOffset) {
  const auto speed = dmiUnless<uint16_t>(structure.word(offset), 0);
  if (speed != kSpeedElsewhere) return speed;
  const auto extended = structure.dword(extendedOffset);
  return extended ? dmiUnless<uint32_t>(*extended & kValueBits, 0) : std::nullopt;
}

std::optional<uint16_t> bitsAt(const DmiStructure& structure, size_t offset) {
  return dmiUnless<uint16_t>(dmiUnless<uint16_t>(structure.word(offset), 0xFFFF), 0);
}

std::optional<uint8_t> rankOf(const DmiStructure& structure) {
  const auto attributes = structure.byte(0x1B);
  if (!attributes) return {};
  return dmiUnless<uint8_t>(static_cast<uint8_t>(*attributes & 0x0F), 0);
}

}  // namespace

DmiMemoryController dmiMemoryControllerOf(const DmiStructure& structure) {
  return {.moduleLimitExponent = structure.byte(0x08), .slots = structure.byte(0x0E)};
}

DmiMemoryModule dmiMemoryModuleOf(const DmiStructure& structure) {
  return {.socket = structure.text(0x04),
          .kinds = structure.word(0x07),
          .installedMiB = moduleMiB(structure.byte(0x09))};
}

DmiMemoryArray dmiMemoryArrayOf(const DmiStructure& structure) {
  return {.location = structure.byte(0x04),
          .use = structure.byte(0x05),
          .errorCorrection = structure.byte(0x06),
          .maxKiB = capacityKiB(structure),
          .slots = structure.word(0x0D)};
}

DmiMemoryDevice dmiMemoryDeviceOf(const DmiStructure& structure) {
  return {.array = {},
          .isEmpty = structure.word(0x0C) == uint16_t{0},
          .sizeKiB = deviceKiB(structure),
          .locator = structure.text(0x10),
          .bankLocator = structure.text(0x11),
          .manufacturer = structure.text(0x17),
          .serial = structure.text(0x18),
          .assetTag = structure.text(0x19),
          .partNumber = structure.text(0x1A),
          .formFactor = structure.byte(0x0E),
          .kind = structure.byte(0x12),
          .technology = structure.byte(0x28),
          .details = structure.word(0x13),
          .totalBits = bitsAt(structure, 0x08),
          .dataBits = bitsAt(structure, 0x0A),
          .speedMts = speedAt(structure, 0x15, 0x54),
          .configuredMts = speedAt(structure, 0x20, 0x58),
          .configuredMillivolts = dmiUnless<uint16_t>(structure.word(0x26), 0),
          .rank = rankOf(structure)};
}

}  // namespace quenlor
