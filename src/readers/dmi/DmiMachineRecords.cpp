// Firmware, system, board, enclosure, and what watches over them (types 0 to 3, 38, 39, 43).
#include <algorithm>

#include "readers/dmi/DmiDecode.h"

namespace quenlor {
namespace {

constexpr uint8_t kSizeElsewhere = 0xFF;
constexpr uint32_t kLargestOldRomKiB = 16 * 1024;
constexpr uint8_t kNoRevision = 0xFF;

// "(n + 1) * 64 KiB", or from 3.1 on a count of MiB or GiB in a field of its own.
std::optional<uint32_t> romKiB(const DmiStructure& structure) {
  const auto size = structure.byte(0x09);
  if (!size) return {};
  if (*size != kSizeElsewhere) return (*size + 1u) * 64;
  const auto extended = structure.word(0x18);
  if (!extended) return kLargestOldRomKiB;
  const uint32_t amount = *extended & 0x3FFFu;
  switch (*extended >> 14) {
    case 0:
      return amount * 1024;
    case 1:
      return amount * 1024 * 1024;
    default:
      return {};
  }
}

DmiText revisionAt(const DmiStructure& structure, size_t offset) {
  const auto major = structure.byte(offset);
  const auto minor = structure.byte(offset + 1);
  if (!major || !minor || *major == kNoRevision || *minor == kNoRevision) return {};
  return std::to_string(*major) + "." + std::to_string(*minor);
}

std::optional<bool> bitOf(std::optional<uint64_t> bits, unsigned bit) {
  if (!bits) return {};
  return (*bits >> bit & 1) != 0;
}

std::optional<DmiUuid> uuidAt(const DmiStructure& structure, size_t offset) {
  DmiUuid uuid{};
  const auto bytes = structure.bytes(offset, uuid.size());
  if (!bytes) return {};
  std::copy(bytes->begin(), bytes->end(), uuid.begin());
  const auto isAll = [&uuid](uint8_t value) {
    return std::all_of(uuid.begin(), uuid.end(), [value](uint8_t byte) { return byte == value; });
  };
  return isAll(0x00) || isAll(0xFF) ? std::nullopt : std::optional(uuid);
}

// The stock-keeping unit stands behind the list of contained elements.
size_t behindElements(const DmiStructure& structure) {
  return 0x15u + size_t{structure.byte(0x13).value_or(0)} * structure.byte(0x14).value_or(0);
}

std::optional<DmiBmcInterface> interfaceOf(uint8_t code) {
  if (code < static_cast<uint8_t>(DmiBmcInterface::kKcs)) return {};
  if (code > static_cast<uint8_t>(DmiBmcInterface::kSsif)) return {};
  return static_cast<DmiBmcInterface>(code);
}

// Four characters, filled up with blanks or NUL bytes.
DmiText vendorAt(const DmiStructure& structure, size_t offset) {
  const auto bytes = structure.bytes(offset, 4);
  if (!bytes) return {};
  const std::string_view text = bytes->substr(0, bytes->find('\0'));
  const size_t end = text.find_last_not_of(' ');
  if (end == text.npos) return {};
  return std::string(text.substr(0, end + 1));
}

}  // namespace

DmiBios dmiBiosOf(const DmiStructure& structure) {
  return {.vendor = structure.text(0x04),
          .version = structure.text(0x05),
          .date = structure.text(0x08),
          .romKiB = romKiB(structure),
          .revision = revisionAt(structure, 0x14),
          .controllerRevision = revisionAt(structure, 0x16),
          .isVirtualMachine = bitOf(structure.byte(0x13), 4)};
}

DmiSystem dmiSystemOf(const DmiStructure& structure, DmiVersion version) {
  DmiSystem system{.manufacturer = structure.text(0x04),
                   .product = structure.text(0x05),
                   .version = structure.text(0x06),
                   .serial = structure.text(0x07),
                   .sku = structure.text(0x19),
                   .family = structure.text(0x1A),
                   .uuid = uuidAt(structure, 0x08),
                   .uuidText = {}};
  if (system.uuid) system.uuidText = dmiUuidText(*system.uuid, version);
  return system;
}

DmiBoard dmiBoardOf(const DmiStructure& structure) {
  return {.manufacturer = structure.text(0x04),
          .product = structure.text(0x05),
          .version = structure.text(0x06),
          .serial = structure.text(0x07),
          .assetTag = structure.text(0x08),
          .location = structure.text(0x0A),
          .isHosting = bitOf(structure.byte(0x09), 0).value_or(false),
          .kind = structure.byte(0x0D)};
}

DmiEnclosure dmiEnclosureOf(const DmiStructure& structure) {
  constexpr uint8_t kLock = 0x80;
  std::optional<uint8_t> kind = structure.byte(0x05);
  if (kind) kind = static_cast<uint8_t>(*kind & ~kLock);
  return {.manufacturer = structure.text(0x04),
          .version = structure.text(0x06),
          .serial = structure.text(0x07),
          .assetTag = structure.text(0x08),
          .sku = structure.text(behindElements(structure)),
          .kind = dmiUnless<uint8_t>(kind, 0),
          .heightUnits = dmiUnless<uint8_t>(dmiUnless<uint8_t>(structure.byte(0x11), 0), 0xFF)};
}

DmiManagement dmiManagementOf(const DmiStructure& structure) {
  const uint8_t revision = structure.byte(0x05).value_or(0);
  return {.interface = interfaceOf(structure.byte(0x04).value_or(0)),
          .specMajor = static_cast<uint8_t>(revision >> 4),
          .specMinor = static_cast<uint8_t>(revision & 0x0F)};
}

DmiPowerSupply dmiPowerSupplyOf(const DmiStructure& structure) {
  constexpr uint16_t kUnknownWatts = 0x8000;
  const auto bits = structure.word(0x0E);
  std::optional<uint8_t> status;
  if (bits) status = static_cast<uint8_t>(*bits >> 7 & 0x7);
  return {
      .location = structure.text(0x05),
      .name = structure.text(0x06),
      .manufacturer = structure.text(0x07),
      .serial = structure.text(0x08),
      .assetTag = structure.text(0x09),
      .partNumber = structure.text(0x0A),
      .revision = structure.text(0x0B),
      .maxWatts = dmiUnless<uint16_t>(dmiUnless<uint16_t>(structure.word(0x0C), kUnknownWatts), 0),
      .isPresent = bitOf(bits, 1),
      .isUnplugged = bitOf(bits, 2),
      .status = status};
}

DmiTpm dmiTpmOf(const DmiStructure& structure) {
  const auto isMissing = bitOf(structure.qword(0x13), 2);
  return {.vendor = vendorAt(structure, 0x04),
          .specMajor = structure.byte(0x08).value_or(0),
          .specMinor = structure.byte(0x09).value_or(0),
          .isSupported = isMissing ? std::optional(!*isMissing) : std::nullopt};
}

}  // namespace quenlor
