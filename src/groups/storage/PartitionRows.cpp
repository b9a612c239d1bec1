#include "groups/storage/PartitionRows.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/NaturalOrder.h"
#include "readers/block/DeviceMapper.h"
#include "readers/mounts/MountTypes.h"

namespace quenlor {
namespace {

constexpr const char* kRemoteDevice = "remote";
constexpr const char* kSwapMountPoint = "swap";
constexpr const char* kSwapType = "swap";
constexpr uint32_t kLocalDisk = 3;
constexpr uint32_t kRemoteDrive = 4;
constexpr uint32_t kRemovableDisk = 2;
constexpr uint32_t kCdRom = 5;
constexpr uint32_t kRamDisk = 6;

class Rows {
 public:
  explicit Rows(const BlockInventory& inventory) : m_inventory(inventory) {}

  void addMounted(const MountedFileSystem& system, const FileSystemSpace& space);
  void addSwap(const ActiveSwapArea& swap);
  void addOthers();
  std::vector<PartitionRow> take();

 private:
  BlockReference deviceOf(const Mount& mount) const;
  void addDevice(PartitionRow& row, const BlockReference& reference);
  void addDisk(PartitionRow& row, const BlockReference& reference) const;
  void addBtrfs(PartitionRow& row) const;
  void addOther(const BlockReference& reference);

  const BlockInventory& m_inventory;
  std::set<std::string> m_used;  // kernel names
  std::vector<PartitionRow> m_rows;
};

std::string kernelNameOf(const BlockReference& reference) {
  return reference.partition == nullptr ? reference.device->name : reference.partition->name;
}

// The number that the mount has, else (btrfs has one of its own) the device that it names.
BlockReference Rows::deviceOf(const Mount& mount) const {
  const BlockReference device = m_inventory.tree.byNumber({mount.major, mount.minor});
  return device ? device : m_inventory.tree.byDeviceName(mount.source);
}

void Rows::addDevice(PartitionRow& row, const BlockReference& reference) {
  if (!reference) return;
  row.kernelName = kernelNameOf(reference);
  m_used.insert(row.kernelName);
  row.sizeBytes = reference.sizeBytes();
  row.names = reference.names();
  row.isEncrypted = m_inventory.tree.isEncrypted(reference);
  addDisk(row, reference);
}

// A partition of a multipath drive is a device of its own.
void Rows::addDisk(PartitionRow& row, const BlockReference& reference) const {
  const BlockDevice& device = *reference.device;
  if (reference.partition != nullptr) {
    row.disk = device.deviceName();
    row.partitionNumber = reference.partition->index;
    row.startSector = reference.partition->startSector;
    return;
  }
  const auto index = mapperPartitionIndex(device.mapperUuid);
  if (!index || device.slaves.empty()) return;
  const BlockReference disk = m_inventory.tree.byName(device.slaves.front());
  if (disk) row.disk = disk.deviceName();
  row.partitionNumber = index;
}

// What the kernel knows of a mounted btrfs, where udev's records cannot be seen; and any of its
// devices may be encrypted.
void Rows::addBtrfs(PartitionRow& row) const {
  const std::string& name = row.accessPoint;
  for (const BtrfsFileSystem& system : m_inventory.volumes.btrfs) {
    if (std::find(system.devices.begin(), system.devices.end(), name) == system.devices.end()) {
      continue;
    }
    row.names.uuid = system.uuid;
    if (row.names.label.empty()) row.names.label = system.label;
    row.isEncrypted = std::any_of(
        system.devices.begin(), system.devices.end(), [this](const std::string& device) {
          return m_inventory.tree.isEncrypted(m_inventory.tree.byDeviceName(device));
        });
  }
}

// Types that the classic table does not know are what their kind is.
uint32_t mediaTypeOf(const PartitionRow& row, FileSystemKind kind) {
  if (row.isRemote) return kRemoteDrive;
  if (row.kernelName.starts_with("sr")) return kCdRom;
  if (row.kernelName.starts_with("fd")) return kRemovableDisk;
  const uint32_t known = getMediaType(row.fileSystem.c_str(), row.deviceName.c_str());
  if (known != 0) return known;
  if (kind == FileSystemKind::kMemory) return kRamDisk;
  return kind == FileSystemKind::kLocal || !row.kernelName.empty() ? kLocalDisk : known;
}

bool isNode(const std::string& source) {
  return source.starts_with("/dev/") && source != "/dev/root";
}

void Rows::addMounted(const MountedFileSystem& system, const FileSystemSpace& space) {
  const Mount& mount = *system.mount;
  PartitionRow row;
  const BlockReference device = deviceOf(mount);
  addDevice(row, device);
  row.isRemote = system.kind == FileSystemKind::kRemote;
  row.accessPoint = device && !isNode(mount.source) ? device.deviceName() : mount.source;
  row.deviceName = row.isRemote ? kRemoteDevice : row.accessPoint;
  row.mountPoint = mount.point;
  row.fileSystem = mount.type;
  row.mediaType = mediaTypeOf(row, system.kind);
  row.space = space;
  if (!row.sizeBytes) row.sizeBytes = space.totalBytes;
  row.mountOptions = mount.options;
  row.isReadOnly = hasOption(mount.options, "ro") || hasOption(mount.superOptions, "ro");
  row.furtherMounts = system.furtherMounts;
  if (mount.type == "btrfs") addBtrfs(row);
  m_rows.push_back(std::move(row));
}

void Rows::addSwap(const ActiveSwapArea& swap) {
  PartitionRow row;
  row.isSwap = true;
  if (swap.isDevice) addDevice(row, m_inventory.tree.byDeviceName(swap.area.name));
  row.deviceName = swap.area.name;
  row.accessPoint = swap.area.name;
  row.mountPoint = kSwapMountPoint;
  row.fileSystem = kSwapType;
  row.mediaType = kLocalDisk;
  row.space.totalKilobytes = swap.area.size;
  row.space.freeKilobytes = swap.area.free();
  if (!row.sizeBytes && swap.area.size <= UINT64_MAX / 1024) row.sizeBytes = swap.area.size * 1024;
  m_rows.push_back(std::move(row));
}

// Images in loop devices and the single paths of a multipath drive have no partitions of their own.
std::set<std::string> withoutPartitions(const BlockTree& tree) {
  std::set<std::string> names;
  for (const BlockDevice& device : tree.devices()) {
    if (device.kind == BlockKind::kLoop || device.kind == BlockKind::kMemory) {
      names.insert(device.name);
    }
    if (device.isMultipath()) names.insert(device.slaves.begin(), device.slaves.end());
  }
  return names;
}

void Rows::addOthers() {
  const std::set<std::string> skipped = withoutPartitions(m_inventory.tree);
  for (const BlockDevice& device : m_inventory.tree.devices()) {
    if (skipped.contains(device.name)) continue;
    if (mapperPartitionIndex(device.mapperUuid)) addOther({&device, nullptr});
    for (const Partition& partition : device.partitions) addOther({&device, &partition});
  }
}

void Rows::addOther(const BlockReference& reference) {
  if (m_used.contains(kernelNameOf(reference))) return;
  PartitionRow row;
  addDevice(row, reference);
  row.deviceName = reference.deviceName();
  row.accessPoint = row.deviceName;
  row.fileSystem = row.names.fileSystem;
  row.mediaType = kLocalDisk;
  row.isReadOnly = reference.partition == nullptr ? reference.device->isReadOnly
                                                  : reference.partition->isReadOnly;
  m_rows.push_back(std::move(row));
}

bool isBefore(const PartitionRow& left, const PartitionRow& right) {
  if (left.kernelName.empty() != right.kernelName.empty()) return right.kernelName.empty();
  if (left.kernelName != right.kernelName) return naturalLess(left.kernelName, right.kernelName);
  if (left.accessPoint != right.accessPoint)
    return naturalLess(left.accessPoint, right.accessPoint);
  return naturalLess(left.mountPoint, right.mountPoint);
}

std::vector<PartitionRow> Rows::take() {
  std::stable_sort(m_rows.begin(), m_rows.end(), isBefore);
  return std::move(m_rows);
}

}  // namespace

std::vector<PartitionRow> partitionRows(const BlockInventory& inventory, const SwapList& swaps,
                                        const std::vector<MountedFileSystem>& fileSystems,
                                        const std::vector<FileSystemSpace>& spaces) {
  Rows rows(inventory);
  for (size_t index = 0; index < fileSystems.size(); ++index) {
    rows.addMounted(fileSystems[index], index < spaces.size() ? spaces[index] : FileSystemSpace());
  }
  for (const ActiveSwapArea& swap : swaps.areas) rows.addSwap(swap);
  rows.addOthers();
  return rows.take();
}

}  // namespace quenlor
