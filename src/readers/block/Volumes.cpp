#include "readers/block/Volumes.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "base/NaturalOrder.h"
#include "identity/UuidText.h"
#include "readers/block/DeviceMapper.h"
#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

constexpr const char* kBtrfs = "/sys/fs/btrfs";
constexpr const char* kZfs = "/proc/spl/kstat/zfs";

constexpr std::array<const char*, 8> MAPPER_KINDS = {"lvm",  "crypt",     "verity", "linear",
                                                     "raid", "multipath", "",       "other"};
static_assert(static_cast<size_t>(MapperKind::kOther) + 1 == MAPPER_KINDS.size());

std::optional<uint32_t> narrowed(std::optional<uint64_t> value) {
  if (!value || *value > UINT32_MAX) return {};
  return static_cast<uint32_t>(*value);
}

bool isPrivateLayer(const BlockReference& reference) {
  return reference && reference.device->kind == BlockKind::kDeviceMapper &&
         mapperKindOf(reference.device->mapperName, reference.device->mapperUuid) ==
             MapperKind::kPrivate;
}

// What lies below, through the layers that their owner hides, each once.
std::vector<std::string> membersOf(const BlockTree& tree, std::vector<std::string> pending) {
  std::set<std::string> seen;
  std::vector<std::string> members;
  while (!pending.empty()) {
    const std::string name = std::move(pending.back());
    pending.pop_back();
    if (!seen.insert(name).second) continue;
    const BlockReference member = tree.byName(name);
    if (isPrivateLayer(member)) {
      const std::vector<std::string>& below = member.device->slaves;
      pending.insert(pending.end(), below.begin(), below.end());
    } else {
      members.push_back(member ? member.deviceName() : "/dev/" + name);
    }
  }
  std::sort(members.begin(), members.end(), naturalLess);
  return members;
}

Volume volumeOf(const BlockTree& tree, const BlockDevice& device) {
  Volume volume;
  volume.name = device.name;
  volume.deviceName = device.deviceName();
  volume.sizeBytes = device.sizeBytes;
  volume.members = membersOf(tree, device.slaves);
  return volume;
}

// "a1b2c3d4:…" as mdadm writes it, into the form that all others have.
std::string arrayUuid(std::string text) {
  std::erase(text, ':');
  return text.size() == 32 ? uuidOfDigits(std::move(text)) : text;
}

Volume readArray(const BlockTree& tree, const BlockDevice& device) {
  const SysfsAttributes array(device.directory + "/md");
  Volume volume = volumeOf(tree, device);
  volume.kind = "raid";
  volume.level = array.text("level");
  volume.state = array.text("array_state");
  volume.degraded = narrowed(array.number("degraded"));
  volume.uuid = array.text("uuid");
  if (volume.uuid.empty()) volume.uuid = arrayUuid(device.udev.text("MD_UUID"));
  return volume;
}

// The mapping itself is told only to who opens the device mapper's control node; the devices below
// show the simple cases.
std::string lvmLevel(const BlockTree& tree, const BlockDevice& device) {
  if (device.slaves.size() != 1) return {};
  const BlockReference below = tree.byName(device.slaves.front());
  if (!below) return {};
  if (isThinPool(below.device->mapperUuid)) return "thin";
  return isPrivateLayer(below) ? "" : "linear";
}

std::optional<Volume> readMapped(const BlockTree& tree, const BlockDevice& device) {
  const MapperKind kind = mapperKindOf(device.mapperName, device.mapperUuid);
  if (kind == MapperKind::kPrivate || kind == MapperKind::kMultipath) return {};
  Volume volume = volumeOf(tree, device);
  if (!device.mapperName.empty()) volume.name = device.mapperName;
  volume.kind = MAPPER_KINDS.at(static_cast<size_t>(kind));
  volume.uuid = mapperVolumeUuid(device.mapperUuid);
  if (kind == MapperKind::kLvm) {
    volume.volumeGroup = volumeGroupOf(device.mapperName);
    volume.level = lvmLevel(tree, device);
  }
  const auto isSuspended = SysfsAttributes(device.directory).flag("dm/suspended");
  if (isSuspended) volume.state = *isSuspended ? "suspended" : "active";
  return volume;
}

// "writethrough [writeback] none": the chosen one.
std::string chosenWord(const std::string& text) {
  const size_t begin = text.find('[');
  const size_t end = text.find(']');
  return begin < end && end != std::string::npos ? text.substr(begin + 1, end - begin - 1) : "";
}

Volume readCache(const BlockTree& tree, const BlockDevice& device) {
  const SysfsAttributes cache(device.directory + "/bcache");
  Volume volume = volumeOf(tree, device);
  volume.kind = "bcache";
  volume.level = chosenWord(cache.text("cache_mode"));
  volume.state = cache.text("state");
  volume.uuid = cache.text("backing_dev_uuid");
  return volume;
}

std::optional<Volume> readVolume(const BlockTree& tree, const BlockDevice& device) {
  // Arrays and connections that are not started are numbers without anything behind them.
  if (device.sizeBytes.value_or(0) == 0 && device.slaves.empty()) return {};
  switch (device.kind) {
    case BlockKind::kMd:
      return readArray(tree, device);
    case BlockKind::kDeviceMapper:
      return readMapped(tree, device);
    case BlockKind::kBcache:
      return readCache(tree, device);
    case BlockKind::kDrbd: {
      Volume volume = volumeOf(tree, device);
      volume.kind = "drbd";
      return volume;
    }
    default:
      return {};
  }
}

// The sum of the devices' sizes; nothing when one is not known.
std::optional<uint64_t> sizeOf(const BlockTree& tree, const std::vector<std::string>& devices) {
  uint64_t sum = 0;
  for (const std::string& name : devices) {
    const BlockReference device = tree.byDeviceName(name);
    if (!device || !device.sizeBytes()) return {};
    sum += *device.sizeBytes();
  }
  return sum;
}

// Every device of a file system has a number in "devinfo", those that are missing too.
std::optional<uint32_t> missingDevices(const std::string& directory) {
  const std::string devices = directory + "/devinfo";
  const std::vector<std::string> numbers = namesIn(devices);
  if (numbers.empty()) return {};
  uint32_t missing = 0;
  for (const std::string& number : numbers) {
    std::string device = devices;
    device += '/';
    device += number;
    const SysfsAttributes info(device);
    if (info.flag("missing").value_or(false)) ++missing;
  }
  return missing;
}

// Nothing for what is no file system: "features" and the like.
std::optional<BtrfsFileSystem> readBtrfs(const BlockTree& tree, const std::string& uuid) {
  const std::string directory = std::string(kBtrfs) + "/" + uuid;
  const std::vector<std::string> devices = namesIn(directory + "/devices");
  if (devices.empty()) return {};
  return BtrfsFileSystem{uuid, SysfsAttributes(directory).text("label"), membersOf(tree, devices)};
}

// Nothing for one that lies on a single device, as most do.
std::optional<Volume> volumeOf(const BlockTree& tree, const BtrfsFileSystem& system) {
  Volume volume;
  volume.degraded = missingDevices(std::string(kBtrfs) + "/" + system.uuid);
  if (system.devices.size() + volume.degraded.value_or(0) < 2) return {};
  volume.kind = "btrfs";
  volume.uuid = system.uuid;
  volume.name = system.label.empty() ? system.uuid : system.label;
  volume.members = system.devices;
  volume.sizeBytes = sizeOf(tree, system.devices);
  return volume;
}

void addBtrfs(const BlockTree& tree, VolumeList& list) {
  for (const std::string& uuid : namesIn(kBtrfs)) {
    auto system = readBtrfs(tree, uuid);
    if (!system) continue;
    if (auto volume = volumeOf(tree, *system)) list.volumes.push_back(*std::move(volume));
    list.btrfs.push_back(*std::move(system));
  }
}

void addPools(std::vector<Volume>& volumes) {
  for (const std::string& name : namesIn(kZfs)) {
    const std::string state = SysfsAttributes(std::string(kZfs) + "/" + name).text("state");
    if (state.empty()) continue;  // statistics of the module
    Volume volume;
    volume.name = name;
    volume.kind = "zfs";
    volume.state = state;
    volumes.push_back(std::move(volume));
  }
}

}  // namespace

VolumeList readVolumes(const BlockTree& tree) {
  VolumeList list;
  list.outcome.merge(tree.outcome);
  for (const BlockDevice& device : tree.devices()) {
    if (auto volume = readVolume(tree, device)) list.volumes.push_back(*std::move(volume));
  }
  addBtrfs(tree, list);
  addPools(list.volumes);
  std::stable_sort(
      list.volumes.begin(), list.volumes.end(),
      [](const Volume& left, const Volume& right) { return naturalLess(left.name, right.name); });
  return list;
}

}  // namespace quenlor
