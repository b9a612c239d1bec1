#include "readers/dmi/DmiEntryPoint.h"

#include <cstddef>
#include <numeric>

#include "readers/dmi/LittleEndian.h"

namespace quenlor {
namespace {

constexpr size_t kParagraph = 16;

constexpr std::string_view kAnchor64 = "_SM3_";
constexpr size_t kShortest64 = 0x18;
constexpr size_t kLongestEntryPoint = 0x1F;  // the kernel refuses longer ones too

// Firmware of 2.1 says 1E for a structure of 1F bytes, and the kernel then shows only 1E of them.
constexpr std::string_view kAnchor32 = "_SM_";
constexpr size_t kShortest32 = 0x1E;

constexpr std::string_view kAnchorOld = "_DMI_";
constexpr size_t kOldOffset = 0x10;  // of the "_DMI_" part within a 32-bit entry point
constexpr size_t kOldLength = 0x0F;

struct VersionQuirk {
  DmiVersion stated;
  DmiVersion meant;
};

// Revisions of the standard's text that some firmware took for its version.
constexpr VersionQuirk QUIRKS[] = {{{2, 31}, {2, 3}}, {{2, 33}, {2, 3}}, {{2, 51}, {2, 6}}};

DmiVersion meantVersion(DmiVersion stated) {
  for (const VersionQuirk& quirk : QUIRKS) {
    if (quirk.stated == stated) return quirk.meant;
  }
  return stated;
}

uint8_t byteAt(std::string_view bytes, size_t offset) {
  return littleEndian<uint8_t>(bytes, offset).value_or(0);
}

bool sumsToZero(std::string_view bytes) {
  const auto add = [](uint8_t sum, char byte) {
    return static_cast<uint8_t>(sum + static_cast<unsigned char>(byte));
  };
  return std::accumulate(bytes.begin(), bytes.end(), uint8_t{0}, add) == 0;
}

// The entry point's own bytes, by its length byte; nothing when length or checksum is wrong.
std::optional<std::string_view> ownBytes(std::string_view bytes, size_t lengthOffset,
                                         size_t shortest) {
  const size_t length = byteAt(bytes, lengthOffset);
  if (length < shortest || length > kLongestEntryPoint || length > bytes.size()) return {};
  if (!sumsToZero(bytes.substr(0, length))) return {};
  return bytes.substr(0, length);
}

std::optional<DmiEntryPoint> parse64(std::string_view bytes) {
  const auto own = ownBytes(bytes, 0x06, kShortest64);
  if (!own) return {};
  return DmiEntryPoint{.version = {byteAt(*own, 0x07), byteAt(*own, 0x08)},
                       .tableAddress = littleEndian<uint64_t>(*own, 0x10).value_or(0),
                       .tableLength = littleEndian<uint32_t>(*own, 0x0C).value_or(0),
                       .structureCount = {},
                       .endsAtEndStructure = true};
}

// Table length, address and count stand in the "_DMI_" part of both old forms.
DmiEntryPoint oldPart(std::string_view part, DmiVersion version) {
  const uint16_t count = littleEndian<uint16_t>(part, 0x0C).value_or(0);
  return {.version = meantVersion(version),
          .tableAddress = littleEndian<uint32_t>(part, 0x08).value_or(0),
          .tableLength = littleEndian<uint16_t>(part, 0x06).value_or(0),
          .structureCount = count == 0 ? std::nullopt : std::optional<uint32_t>(count)};
}

std::optional<DmiEntryPoint> parse32(std::string_view bytes) {
  if (!ownBytes(bytes, 0x05, kShortest32)) return {};
  const std::string_view part = bytes.substr(kOldOffset, kOldLength);
  if (!part.starts_with(kAnchorOld)) return {};
  if (part.size() == kOldLength && !sumsToZero(part)) return {};
  return oldPart(part, {byteAt(bytes, 0x06), byteAt(bytes, 0x07)});
}

std::optional<DmiEntryPoint> parseOld(std::string_view bytes) {
  const std::string_view part = bytes.substr(0, kOldLength);
  if (part.size() < kOldLength || !sumsToZero(part)) return {};
  const uint8_t bcd = byteAt(part, 0x0E);
  return oldPart(part, {static_cast<uint8_t>(bcd >> 4), static_cast<uint8_t>(bcd & 0x0F)});
}

}  // namespace

std::optional<DmiEntryPoint> parseDmiEntryPoint(std::string_view bytes) {
  if (bytes.starts_with(kAnchor64)) return parse64(bytes);
  if (bytes.starts_with(kAnchor32)) return parse32(bytes);
  return bytes.starts_with(kAnchorOld) ? parseOld(bytes) : std::nullopt;
}

std::optional<DmiEntryPoint> findDmiEntryPoint(std::string_view memory) {
  std::optional<DmiEntryPoint> old;
  for (size_t at = 0; at < memory.size(); at += kParagraph) {
    if (memory[at] != '_') continue;
    const auto found = parseDmiEntryPoint(memory.substr(at));
    if (found && found->endsAtEndStructure) return found;
    if (!old) old = found;
  }
  return old;
}

}  // namespace quenlor
