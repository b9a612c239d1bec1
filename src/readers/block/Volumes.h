// What is built on drives: md arrays, device-mapper devices, btrfs over several devices, bcache,
// drbd and ZFS pools.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/block/BlockTree.h"

namespace quenlor {

// Texts are empty where unknown.
struct Volume {
  std::string name;        // "md0", "vg-lv", a pool's name
  std::string deviceName;  // "/dev/md0"; empty for btrfs and ZFS
  std::string kind;        // "raid", "lvm", "crypt", "verity", "linear", "zfs", "btrfs", ...
  std::string level;       // "raid1", "thin"
  std::string state;       // the kernel's word
  std::string uuid;
  std::string volumeGroup;
  std::vector<std::string> members;  // "/dev/sda1", in natural order
  std::optional<uint64_t> sizeBytes;
  std::optional<uint32_t> degraded;  // members that are missing
};

// A mounted btrfs, be it on one device or on several.
struct BtrfsFileSystem {
  std::string uuid;
  std::string label;
  std::vector<std::string> devices;  // "/dev/sda1", in natural order
};

struct VolumeList {
  std::vector<Volume> volumes;  // in natural order of names
  std::vector<BtrfsFileSystem> btrfs;
  Outcome outcome;
};

// Multipath heads and the layers that LVM and others hide are no volumes.
VolumeList readVolumes(const BlockTree& tree);

}  // namespace quenlor
