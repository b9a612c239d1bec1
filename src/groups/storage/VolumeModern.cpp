// Volume: md arrays, device-mapper devices, ZFS pools, btrfs over several devices, bcache and drbd.
#include <algorithm>
#include <map>

#include "base/Utf8.h"
#include "groups/modern/Collectors.h"
#include "readers/mounts/FileSystems.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kName = 2;
constexpr uint32_t kDeviceName = 3;
constexpr uint32_t kKind = 4;
constexpr uint32_t kLevel = 5;
constexpr uint32_t kState = 6;
constexpr uint32_t kSizeBytes = 7;
constexpr uint32_t kUuid = 8;
constexpr uint32_t kVolumeGroup = 9;
constexpr uint32_t kMembers = 10;
constexpr uint32_t kDegraded = 11;
constexpr uint32_t kMountPoint = 12;

// Where each device, data set or pool is mounted first.
class MountPoints {
 public:
  MountPoints(const BlockTree& tree, const std::vector<Mount>& mounts) {
    for (const MountedFileSystem& system : fileSystemsOf(mounts)) {
      if (system.mount->isHidden) continue;
      m_points.emplace(system.mount->source, system.mount->point);
      const BlockReference device = tree.byNumber({system.mount->major, system.mount->minor});
      if (device) m_points.emplace(device.deviceName(), system.mount->point);
    }
  }

  std::string of(const Volume& volume) const {
    if (volume.kind == "zfs") return ofPool(volume.name);
    if (!volume.deviceName.empty()) return ofSource(volume.deviceName);
    for (const std::string& member : volume.members) {
      if (std::string point = ofSource(member); !point.empty()) return point;
    }
    return {};
  }

 private:
  std::string ofSource(const std::string& source) const {
    const auto found = m_points.find(source);
    return found == m_points.end() ? std::string() : found->second;
  }

  // The pool's own data set may not be mounted while those below it are.
  std::string ofPool(const std::string& pool) const {
    if (std::string point = ofSource(pool); !point.empty()) return point;
    const auto found = m_points.lower_bound(pool + "/");
    const bool isBelow = found != m_points.end() && found->first.starts_with(pool + "/");
    return isBelow ? found->second : std::string();
  }

  std::map<std::string, std::string> m_points;
};

void addRow(ModernTable& table, const Volume& volume, const std::string& mountPoint) {
  table.addNumberedRow()
      .textAlways(kName, volume.name)
      .text(kDeviceName, volume.deviceName)
      .text(kKind, volume.kind)
      .text(kLevel, volume.level)
      .text(kState, volume.state)
      .longlong(kSizeBytes, volume.sizeBytes)
      .text(kUuid, volume.uuid)
      .text(kVolumeGroup, volume.volumeGroup)
      .text(kMembers, joinParts(volume.members))
      .ulong(kDegraded, volume.degraded)
      .text(kMountPoint, mountPoint);
}

}  // namespace

void collectVolume(ModernScan& scan, ModernTable& table) {
  const BlockInventory* inventory = scan.blockDevices(table.outcome());
  if (inventory == nullptr) return;
  table.outcome().merge(inventory->volumes.outcome);
  const VolumeList& list = inventory->volumes;
  const MountFacts* facts = list.volumes.empty() ? nullptr : scan.mounts(table.outcome());
  const MountPoints points(inventory->tree,
                           facts == nullptr ? std::vector<Mount>() : facts->table.mounts);
  for (const Volume& volume : list.volumes) addRow(table, volume, points.of(volume));
}

}  // namespace quenlor
