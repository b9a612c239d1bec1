#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "base/NaturalOrder.h"
#include "host/Host.h"
#include "readers/block/BlockTree.h"
#include "readers/block/Drive.h"
#include "readers/block/NvmeDrive.h"
#include "readers/block/PlainDrive.h"
#include "readers/block/ScsiDrive.h"

namespace quenlor {
namespace {

constexpr const char* kScsiDevices = "/sys/bus/scsi/devices";
// What the CD driver says as long as no disc is in: 2^21 - 1 sectors of 512 bytes.
constexpr uint64_t kNoDiscBytes = 0x1FFFFFull * 512;

// Buses on which the flag for turning disks is the default of a driver and no word of the drive's.
constexpr std::string_view FLAG_IS_DEFAULT[] = {"virtio", "xen", "nbd", "rbd", "ublk", "floppy"};
// Buses on which the flag is set where the drive has not denied it.
constexpr std::string_view FLAG_MEANS_DISK[] = {"sata", "ata", "sas"};

bool isOneOf(std::string_view word, const auto& words) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

std::optional<uint32_t> narrowed(std::optional<uint64_t> value) {
  if (!value || *value > UINT32_MAX) return {};
  return static_cast<uint32_t>(*value);
}

class Reader {
 public:
  Reader(const BlockTree& tree, bool isGuest) : m_tree(tree), m_isGuest(isGuest), m_nvme(tree) {}

  DriveList read();

 private:
  void addBlockDrives();
  std::optional<Drive> readDrive(const BlockDevice& device);
  void addBlockFacts(Drive& drive, const BlockDevice& device) const;
  void addRotation(Drive& drive, const SysfsAttributes& attributes) const;
  void joinMultipaths();
  void addOtherUnits();
  std::map<std::string, std::string> namesOfClass(const char* directory, std::string_view prefix);
  void addOtherUnit(const std::string& address, const std::map<std::string, std::string>& names);

  const BlockTree& m_tree;
  const bool m_isGuest;
  NvmeDrives m_nvme;
  ScsiHosts m_hosts;
  std::set<std::string> m_units;  // directories of logical units that have a block device
  DriveList m_list;
};

DriveList Reader::read() {
  m_list.outcome.merge(m_tree.outcome);
  addBlockDrives();
  joinMultipaths();
  addOtherUnits();
  std::stable_sort(m_list.drives.begin(), m_list.drives.end(),
                   [](const auto& left, const auto& right) {
                     if (left.kernelName.empty() != right.kernelName.empty())
                       return right.kernelName.empty();
                     if (left.kernelName != right.kernelName)
                       return naturalLess(left.kernelName, right.kernelName);
                     return naturalLess(left.place, right.place);
                   });
  return std::move(m_list);
}

void Reader::addBlockDrives() {
  for (const BlockDevice& device : m_tree.devices()) {
    if (device.kind != BlockKind::kDrive) continue;
    std::optional<Drive> drive = readDrive(device);
    if (!drive) continue;
    drive->kernelName = device.name;
    drive->deviceName = device.deviceName();
    addBlockFacts(*drive, device);
    m_list.drives.push_back(*std::move(drive));
  }
}

std::optional<Drive> Reader::readDrive(const BlockDevice& device) {
  if (device.name.starts_with("nvme")) return m_nvme.read(device);
  const std::string unit = device.path.scsiDirectory();
  if (unit.empty()) return readPlainDrive(device);
  m_units.insert(unit);
  return readScsiDrive(SysfsAttributes(unit), device.udev, m_hosts, m_list.outcome);
}

void Reader::addBlockFacts(Drive& drive, const BlockDevice& device) const {
  const SysfsAttributes attributes(device.directory);
  drive.isRemovable = attributes.flag("removable");
  drive.isReadOnly = device.isReadOnly;
  drive.logicalSectorBytes = narrowed(attributes.number("queue/logical_block_size"));
  drive.physicalSectorBytes = narrowed(attributes.number("queue/physical_block_size"));
  if (drive.kind == DriveKind::kDisk) addRotation(drive, attributes);
  const uint64_t size = device.sizeBytes.value_or(0);
  const bool hasNoDisc = drive.kind == DriveKind::kOptical && size == kNoDiscBytes;
  // The floppy driver's size is that of the format last used, be a disk in or not.
  if (size != 0 && !hasNoDisc && drive.kind != DriveKind::kFloppy) drive.sizeBytes = size;
}

void Reader::addRotation(Drive& drive, const SysfsAttributes& attributes) const {
  if (drive.rotation != Rotation::kNotTold || isOneOf(drive.bus, FLAG_IS_DEFAULT)) return;
  const std::optional<bool> flag = attributes.flag("queue/rotational");
  if (!flag) return;
  if (!*flag) drive.rotation = Rotation::kSolidState;
  if (*flag && !m_isGuest && isOneOf(drive.bus, FLAG_MEANS_DISK)) {
    drive.rotation = Rotation::kSpinning;
  }
}

// World-wide name in the uuid of a multipath head: the type of the identifier, then its digits.
std::string nameOfMultipath(std::string_view uuid) {
  constexpr std::string_view kNaa = "mpath-3";
  return uuid.starts_with(kNaa) ? worldWideName("naa." + std::string(uuid.substr(kNaa.size())))
                                : "";
}

// Of all the ways to a drive the first one in the machine is its place, whatever order the kernel
// found them in.
void joinPath(Drive& head, const Drive& path) {
  if (head.state != path.state) head.state.clear();
  if (!naturalLess(path.place, head.place)) return;
  head.place = path.place;
  head.location = path.location;
}

// One drive for all the ways to it.
void Reader::joinMultipaths() {
  std::map<std::string, const BlockDevice*> headOfPath;
  for (const BlockDevice& device : m_tree.devices()) {
    if (!device.isMultipath()) continue;
    for (const std::string& slave : device.slaves) headOfPath[slave] = &device;
  }
  std::map<const BlockDevice*, Drive> heads;
  std::vector<Drive> others;
  for (Drive& drive : m_list.drives) {
    const auto found = headOfPath.find(drive.kernelName);
    if (found == headOfPath.end()) {
      others.push_back(std::move(drive));
      continue;
    }
    const auto [head, isFirst] = heads.try_emplace(found->second, std::move(drive));
    if (!isFirst) joinPath(head->second, drive);
  }
  for (auto& [device, drive] : heads) {
    drive.kernelName = device->name;
    drive.deviceName = device->deviceName();
    drive.sizeBytes = device->sizeBytes;
    drive.isReadOnly = device->isReadOnly;
    drive.paths = static_cast<uint32_t>(device->slaves.size());
    if (drive.worldWideName.empty()) drive.worldWideName = nameOfMultipath(device->mapperUuid);
    others.push_back(std::move(drive));
  }
  m_list.drives = std::move(others);
}

// Names of the nodes of a class by the directory of their logical unit: "st0", not "nst0a".
std::map<std::string, std::string> Reader::namesOfClass(const char* directory,
                                                        std::string_view prefix) {
  std::map<std::string, std::string> names;
  std::vector<DirectoryEntry> entries;
  host().listEntries(directory, entries);
  for (const DirectoryEntry& entry : entries) {
    const bool isNode = entry.name.starts_with(prefix) &&
                        parseDecimal(std::string_view(entry.name).substr(prefix.size()));
    std::string target;
    const std::string path = std::string(directory) + "/" + entry.name;
    if (!isNode || !host().readLink(path.c_str(), target)) continue;
    names[BlockPath(resolveLink(directory, target)).scsiDirectory()] = entry.name;
  }
  return names;
}

void Reader::addOtherUnits() {
  std::vector<DirectoryEntry> entries;
  host().listEntries(kScsiDevices, entries);
  if (entries.empty()) return;
  std::map<std::string, std::string> names = namesOfClass("/sys/class/scsi_tape", "st");
  names.merge(namesOfClass("/sys/class/scsi_changer", "sch"));
  for (const DirectoryEntry& entry : entries) {
    std::string target;
    const std::string path = std::string(kScsiDevices) + "/" + entry.name;
    if (!parseScsiAddress(entry.name) || !host().readLink(path.c_str(), target)) continue;
    const std::string unit = resolveLink(kScsiDevices, target);
    if (!m_units.contains(unit)) addOtherUnit(unit, names);
  }
}

void Reader::addOtherUnit(const std::string& unit,
                          const std::map<std::string, std::string>& names) {
  std::optional<Drive> drive =
      readScsiDrive(SysfsAttributes(unit), UdevRecord(), m_hosts, m_list.outcome);
  if (!drive) return;
  if (const auto name = names.find(unit); name != names.end()) {
    drive->kernelName = name->second;
    drive->deviceName = "/dev/" + name->second;
  }
  m_list.drives.push_back(*std::move(drive));
}

}  // namespace

DriveList readDrives(const BlockTree& tree, bool isGuest) { return Reader(tree, isGuest).read(); }

}  // namespace quenlor
