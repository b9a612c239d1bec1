// The reading half of BlockTree: /sys/block, then /run/udev/data or /dev/disk.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "base/NaturalOrder.h"
#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/block/BlockTree.h"
#include "readers/block/OnDiskNames.h"
#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

constexpr const char* kBlockDirectory = "/sys/block";
constexpr uint64_t kSector = 512;  // of every size in sysfs, whatever the device's own sectors are

std::optional<uint64_t> bytesOf(std::optional<uint64_t> sectors) {
  if (!sectors || *sectors > UINT64_MAX / kSector) return {};
  return *sectors * kSector;
}

// Drives without a device of a bus: what they stand for is on another machine, or in a program.
constexpr std::string_view NETWORK_DRIVES[] = {"nbd", "rbd", "ublkb"};

struct NamedKind {
  std::string_view prefix;
  BlockKind kind;
};
constexpr NamedKind VIRTUAL_KINDS[] = {
    {"dm-", BlockKind::kDeviceMapper}, {"md", BlockKind::kMd},     {"bcache", BlockKind::kBcache},
    {"drbd", BlockKind::kDrbd},        {"loop", BlockKind::kLoop}, {"ram", BlockKind::kMemory},
    {"zram", BlockKind::kMemory},
};

BlockKind virtualKindOf(std::string_view name) {
  for (const NamedKind& named : VIRTUAL_KINDS) {
    if (name.starts_with(named.prefix)) return named.kind;
  }
  const bool isNetworkDrive =
      std::any_of(std::begin(NETWORK_DRIVES), std::end(NETWORK_DRIVES),
                  [name](std::string_view prefix) { return name.starts_with(prefix); });
  return isNetworkDrive ? BlockKind::kDrive : BlockKind::kOther;
}

// The areas of an eMMC beside its main one: "mmcblk0boot0", "mmcblk0gp1", "mmcblk0rpmb".
bool isAreaOfCard(std::string_view name) {
  if (!name.starts_with("mmcblk")) return false;
  const size_t end = name.find_first_not_of("0123456789", 6);
  return end != std::string_view::npos;
}

// "nvme0c1n1": subsystem, controller, namespace. Older kernels have no file "hidden".
bool isNvmePath(std::string_view name) {
  return name.starts_with("nvme") && name.find('c') != std::string_view::npos;
}

BlockKind kindOf(std::string_view name, const BlockPath& path) {
  if (isNvmePath(name)) return BlockKind::kHiddenPath;
  // The heads of NVMe with several paths are no less real for having no place on a bus.
  const bool isNvmeHead = path.hasPrefix("nvme-subsys");
  if (path.isVirtual() && !isNvmeHead) return virtualKindOf(name);
  return isAreaOfCard(name) || name.starts_with("mtdblock") ? BlockKind::kOther : BlockKind::kDrive;
}

// Values of a uevent file, lines of KEY=value.
std::string ueventValue(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.size() <= key.size() || !line.starts_with(key) || line[key.size()] != '=') continue;
    return std::string(trimmed(line.substr(key.size() + 1)));
  }
  return {};
}

std::string withSlashes(std::string name) {
  std::replace(name.begin(), name.end(), '!', '/');
  return name;
}

// Kernels that still have directories here, not links, have the link to the drive's bus in them.
BlockPath pathOf(const std::string& entry) {
  const std::string directory = std::string(kBlockDirectory) + "/" + entry;
  std::string target;
  if (host().readLink(directory.c_str(), target)) {
    return BlockPath(resolveLink(kBlockDirectory, target));
  }
  const std::string device = host().readLink((directory + "/device").c_str(), target)
                                 ? resolveLink(directory, target)
                                 : "/sys/devices/virtual";
  return BlockPath(device + "/block/" + entry);
}

std::vector<std::string> slavesOf(const std::string& directory) {
  std::vector<std::string> names = namesIn(directory + "/slaves");
  std::transform(names.begin(), names.end(), names.begin(), withSlashes);
  return names;
}

class Reader {
 public:
  BlockTree read();

 private:
  std::optional<BlockDevice> readDevice(const std::string& entry);
  void readKindOf(BlockDevice& device);
  void readPartitions(BlockDevice& device, const std::string& entry);
  std::optional<Partition> readPartition(const BlockDevice& device, const std::string& entry);

  OnDiskNameSource m_names;
};

BlockTree Reader::read() {
  std::vector<DirectoryEntry> entries;
  Outcome outcome;
  if (!host().listEntries(kBlockDirectory, entries)) {
    const bool isRefused = fileStatusOf(errno) == FileStatus::kRefused;
    outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                 isRefused ? "block devices: refused" : "block devices: no sysfs");
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto& left, const auto& right) { return naturalLess(left.name, right.name); });
  std::vector<BlockDevice> devices;
  for (const DirectoryEntry& entry : entries) {
    if (auto device = readDevice(entry.name)) devices.push_back(*std::move(device));
  }
  BlockTree tree(std::move(devices));
  tree.outcome = outcome;
  return tree;
}

// Nothing for a device that has gone since the directory was listed.
std::optional<BlockDevice> Reader::readDevice(const std::string& entry) {
  BlockDevice device;
  device.name = withSlashes(entry);
  device.directory = std::string(kBlockDirectory) + "/" + entry;
  device.path = pathOf(entry);
  device.kind = kindOf(device.name, device.path);
  const SysfsAttributes attributes(device.directory);
  device.sizeBytes = bytesOf(attributes.number("size"));
  if (!device.sizeBytes) return {};
  readKindOf(device);
  return device;
}

void Reader::readKindOf(BlockDevice& device) {
  const SysfsAttributes attributes(device.directory);
  const bool isUnused = *device.sizeBytes == 0 &&
                        (device.kind == BlockKind::kLoop || device.kind == BlockKind::kMemory);
  if (isUnused || device.kind == BlockKind::kHiddenPath) return;
  device.number = parseDeviceNumber(attributes.text("dev"));
  device.isReadOnly = attributes.flag("ro");
  if (device.kind != BlockKind::kDrive && device.path.isVirtual()) {
    device.slaves = slavesOf(device.directory);
  }
  if (device.kind == BlockKind::kDeviceMapper) {
    device.mapperName = attributes.text("dm/name");
    device.mapperUuid = attributes.text("dm/uuid");
  }
  device.udev = m_names.recordOf(device.number);
  device.names = m_names.namesOf(device.name, device.udev);
  readPartitions(device, device.directory.substr(device.directory.rfind('/') + 1));
}

void Reader::readPartitions(BlockDevice& device, const std::string& entry) {
  std::vector<DirectoryEntry> entries;
  host().listEntries(device.directory.c_str(), entries);
  for (const DirectoryEntry& child : entries) {
    if (!child.name.starts_with(entry) || child.type == EntryType::kRegular) continue;
    if (auto partition = readPartition(device, child.name)) {
      device.partitions.push_back(*std::move(partition));
    }
  }
  std::sort(device.partitions.begin(), device.partitions.end(),
            [](const auto& left, const auto& right) { return naturalLess(left.name, right.name); });
}

// Nothing for what is no partition: the boot areas of an eMMC lie in its directory too.
std::optional<Partition> Reader::readPartition(const BlockDevice& device,
                                               const std::string& entry) {
  const SysfsAttributes attributes(device.directory + "/" + entry);
  const std::optional<uint64_t> index = attributes.number("partition");
  if (!index || *index > UINT32_MAX) return {};
  const std::string uevent = attributes.text("uevent");
  Partition partition;
  partition.name = withSlashes(entry);
  partition.index = static_cast<uint32_t>(*index);
  partition.number =
      parseDeviceNumber(ueventValue(uevent, "MAJOR") + ":" + ueventValue(uevent, "MINOR"));
  partition.startSector = attributes.number("start");
  partition.sizeBytes = bytesOf(attributes.number("size"));
  partition.isReadOnly = attributes.flag("ro");
  partition.names = m_names.namesOf(partition.name, m_names.recordOf(partition.number));
  if (partition.names.partitionUuid.empty()) {
    partition.names.partitionUuid = ueventValue(uevent, "PARTUUID");
  }
  if (partition.names.partitionLabel.empty()) {
    partition.names.partitionLabel = ueventValue(uevent, "PARTNAME");
  }
  return partition;
}

}  // namespace

BlockTree readBlockTree() { return Reader().read(); }

}  // namespace quenlor
