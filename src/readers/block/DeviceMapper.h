// What the name and the uuid of a device-mapper device (dm/name and dm/uuid in sysfs) tell about
// it: its owner writes its own prefix into the uuid.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quenlor {

enum class MapperKind : uint8_t {
  kLvm,
  kCrypt,
  kVerity,
  kLinear,  // a partition of a device-mapper device, made by kpartx
  kRaid,    // of the firmware
  kMultipath,
  kPrivate,  // a layer that its owner hides
  kOther,
};

MapperKind mapperKindOf(std::string_view name, std::string_view uuid);

// True for the uuids of cryptsetup's devices that encrypt.
bool isEncryption(std::string_view uuid);

// True for the pool below thin volumes.
bool isThinPool(std::string_view uuid);

// The volume's own identifier in its owner's form: LVM's six groups, eight-four-four-four-twelve
// for LUKS. Empty where the uuid has none.
std::string mapperVolumeUuid(std::string_view uuid);

// Volume group of an LVM name: "vg-lv", in which a hyphen of a name is written twice. Empty without
// a single hyphen.
std::string volumeGroupOf(std::string_view name);

// Number of the partition in "part2-mpath-…".
std::optional<uint32_t> mapperPartitionIndex(std::string_view uuid);

}  // namespace quenlor
