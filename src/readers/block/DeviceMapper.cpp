#include "readers/block/DeviceMapper.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace quenlor {
namespace {

constexpr std::string_view kLvm = "LVM-";
constexpr size_t kLvmIdentifiers = 64;  // 32 characters of the group, 32 of the volume
constexpr std::string_view kLuks[] = {"CRYPT-LUKS1-", "CRYPT-LUKS2-"};
constexpr size_t kLuksDigits = 32;
constexpr std::string_view kPartition = "part";

constexpr std::string_view ENCRYPTIONS[] = {"CRYPT-LUKS1-",   "CRYPT-LUKS2-", "CRYPT-PLAIN-",
                                            "CRYPT-TCRYPT-",  "CRYPT-BITLK-", "CRYPT-FVAULT2-",
                                            "CRYPT-LOOPAES-", "CRYPT-TEMP-"};

// LVM keeps these words for the parts of which it makes a volume: no volume's own name has them.
constexpr std::string_view LVM_PARTS[] = {"_cdata", "_cmeta",  "_corig", "_cvol",    "_imeta",
                                          "_iorig", "_mimage", "_mlog",  "_pmspare", "_rimage",
                                          "_rmeta", "_tdata",  "_tmeta", "_vdata",   "_vorigin"};

bool beginsWithOneOf(std::string_view text, const auto& prefixes) {
  return std::any_of(std::begin(prefixes), std::end(prefixes),
                     [text](std::string_view prefix) { return text.starts_with(prefix); });
}

bool hasLvmPart(std::string_view name) {
  return std::any_of(std::begin(LVM_PARTS), std::end(LVM_PARTS), [name](std::string_view part) {
    return name.find(part) != std::string_view::npos;
  });
}

MapperKind lvmKindOf(std::string_view name, std::string_view uuid) {
  const bool hasLayer = uuid.size() > kLvm.size() + kLvmIdentifiers;
  return hasLayer || hasLvmPart(name) ? MapperKind::kPrivate : MapperKind::kLvm;
}

// The digits in groups of the given lengths, with hyphens between.
std::string grouped(std::string_view digits, std::initializer_list<size_t> lengths) {
  std::string text;
  for (const size_t length : lengths) {
    if (!text.empty()) text += '-';
    text += digits.substr(0, length);
    digits.remove_prefix(std::min(length, digits.size()));
  }
  return text;
}

}  // namespace

MapperKind mapperKindOf(std::string_view name, std::string_view uuid) {
  if (uuid.starts_with(kLvm)) return lvmKindOf(name, uuid);
  if (uuid.starts_with("mpath-")) return MapperKind::kMultipath;
  if (isEncryption(uuid)) return MapperKind::kCrypt;
  if (uuid.starts_with("CRYPT-VERITY-")) return MapperKind::kVerity;
  if (mapperPartitionIndex(uuid)) return MapperKind::kLinear;
  if (uuid.starts_with("DMRAID-")) return MapperKind::kRaid;
  return uuid.starts_with("stratis-1-private") ? MapperKind::kPrivate : MapperKind::kOther;
}

bool isEncryption(std::string_view uuid) { return beginsWithOneOf(uuid, ENCRYPTIONS); }

bool isThinPool(std::string_view uuid) {
  return uuid.starts_with(kLvm) && uuid.ends_with("-tpool");
}

std::string mapperVolumeUuid(std::string_view uuid) {
  if (uuid.starts_with(kLvm) && uuid.size() >= kLvm.size() + kLvmIdentifiers) {
    const std::string_view volume = uuid.substr(kLvm.size() + kLvmIdentifiers / 2);
    return grouped(volume, {6, 4, 4, 4, 4, 4, 6});
  }
  for (const std::string_view prefix : kLuks) {
    if (!uuid.starts_with(prefix) || uuid.size() < prefix.size() + kLuksDigits) continue;
    return grouped(uuid.substr(prefix.size()), {8, 4, 4, 4, 12});
  }
  return {};
}

std::string volumeGroupOf(std::string_view name) {
  std::string group;
  for (size_t index = 0; index < name.size(); ++index) {
    if (name[index] == '-') {
      const bool isDoubled = index + 1 < name.size() && name[index + 1] == '-';
      if (!isDoubled) return group;
      ++index;
    }
    group += name[index];
  }
  return {};
}

std::optional<uint32_t> mapperPartitionIndex(std::string_view uuid) {
  if (!uuid.starts_with(kPartition)) return {};
  uint32_t index = 0;
  const char* end = uuid.data() + uuid.size();
  const auto result = std::from_chars(uuid.data() + kPartition.size(), end, index);
  const bool isWhole = result.ec == std::errc() && result.ptr != end && *result.ptr == '-';
  return isWhole ? std::optional(index) : std::nullopt;
}

}  // namespace quenlor
