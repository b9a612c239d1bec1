// Every block device of the kernel as /sys/block has it: disks, their partitions and what is built
// on them. What they are called on disk comes from udev's database or, without one, from the links
// below /dev/disk. No device node is opened.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/Outcome.h"
#include "readers/block/BlockPath.h"
#include "readers/block/UdevRecord.h"

namespace quenlor {

// The number by which the kernel knows a block device, as in "8:1".
struct DeviceNumber {
  uint32_t major = 0;
  uint32_t minor = 0;

  auto operator<=>(const DeviceNumber&) const = default;
};

// Nothing unless the whole text is "major:minor".
std::optional<DeviceNumber> parseDeviceNumber(std::string_view text);

// What lies on a device and what its partition table calls it. Texts are empty where unknown.
struct OnDiskNames {
  std::string fileSystem;
  std::string label;
  std::string uuid;
  std::string partitionUuid;
  std::string partitionLabel;
};

struct Partition {
  std::string name;  // "sda1"
  std::optional<DeviceNumber> number;
  std::optional<uint32_t> index;        // number in the partition table
  std::optional<uint64_t> startSector;  // units of 512 bytes
  std::optional<uint64_t> sizeBytes;
  std::optional<bool> isReadOnly;
  OnDiskNames names;
};

enum class BlockKind : uint8_t {
  kDrive,       // has a device of a bus, or stands for one across a network
  kHiddenPath,  // one way of several to an NVMe namespace
  kDeviceMapper,
  kMd,
  kBcache,
  kDrbd,
  kLoop,
  kMemory,  // ram, zram
  kOther,
};

struct BlockDevice {
  std::string name;       // "sda", with '/' where sysfs writes '!'
  std::string directory;  // "/sys/block/sda"
  BlockPath path{std::string()};
  BlockKind kind = BlockKind::kOther;
  std::optional<DeviceNumber> number;  // hidden paths have none
  std::optional<uint64_t> sizeBytes;   // 0 without a medium
  std::optional<bool> isReadOnly;
  std::vector<std::string> slaves;    // names of what it is built on, in natural order
  std::vector<Partition> partitions;  // in natural order
  OnDiskNames names;
  UdevRecord udev;
  std::string mapperName;  // device mapper only: "vg-lv"
  std::string mapperUuid;  // device mapper only: "LVM-…"

  // "/dev/sda", "/dev/mapper/vg-lv"
  std::string deviceName() const;
  bool isMultipath() const { return mapperUuid.starts_with("mpath-"); }
};

// A device or a partition of one; partition is null for the whole device.
struct BlockReference {
  const BlockDevice* device = nullptr;
  const Partition* partition = nullptr;

  explicit operator bool() const { return device != nullptr; }
  std::string deviceName() const;
  const OnDiskNames& names() const;
  std::optional<uint64_t> sizeBytes() const;
};

// Devices in natural order of their names. References into it live as long as it does and move with
// it; it cannot be copied.
class BlockTree {
 public:
  BlockTree() = default;
  explicit BlockTree(std::vector<BlockDevice> devices);
  BlockTree(const BlockTree&) = delete;
  BlockTree& operator=(const BlockTree&) = delete;
  BlockTree(BlockTree&&) = default;
  BlockTree& operator=(BlockTree&&) = default;

  const std::vector<BlockDevice>& devices() const { return m_devices; }
  // By kernel name, by number, by path of the node ("/dev/sda1", "/dev/mapper/x"); empty when there
  // is none.
  BlockReference byName(std::string_view name) const;
  BlockReference byNumber(DeviceNumber number) const;
  BlockReference byDeviceName(std::string_view path) const;

  // True when any layer from the device down is encrypted by device mapper.
  bool isEncrypted(const BlockReference& reference) const;

  Outcome outcome;

 private:
  void add(const BlockReference& reference, const std::string& name,
           const std::optional<DeviceNumber>& number);

  std::vector<BlockDevice> m_devices;
  std::unordered_map<std::string, BlockReference> m_byName;
  std::unordered_map<std::string, BlockReference> m_byDeviceName;  // only what is not /dev/NAME
  std::map<DeviceNumber, BlockReference> m_byNumber;
};

// Each file is opened at most once.
BlockTree readBlockTree();

}  // namespace quenlor
