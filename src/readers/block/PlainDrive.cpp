#include "readers/block/PlainDrive.h"

#include <algorithm>
#include <iterator>

#include "readers/block/SysfsAttributes.h"

namespace quenlor {
namespace {

// Attributes of the device below the block device; virtio's serial number alone is the disk's own.
void readVirtio(Drive& drive, const BlockDevice& device) {
  drive.serial = SysfsAttributes(device.directory).text("serial");
}

void readCard(Drive& drive, const BlockDevice& device) {
  const SysfsAttributes card(device.path.deviceDirectory());
  drive.model = card.text("name");
  drive.serial = card.text("serial");
  drive.firmware = card.text("fwrev");
}

// The namespace's label on the modules.
void readPersistentMemory(Drive& drive, const BlockDevice& device) {
  const SysfsAttributes space(device.path.deviceDirectory());
  drive.worldWideName = worldWideName("uuid." + space.text("uuid"));
}

void readSmartArray(Drive& drive, const BlockDevice& device) {
  const SysfsAttributes volume(device.path.deviceDirectory());
  drive.vendor = volume.text("vendor");
  drive.model = volume.text("model");
  drive.firmware = volume.text("rev");
  drive.serial = volume.text("unique_id");
}

// The IDE driver of kernels before 5.14.
void readIde(Drive& drive, const BlockDevice& device) {
  const SysfsAttributes disk(device.path.deviceDirectory());
  const std::string media = disk.text("media");
  if (media == "cdrom") drive.kind = DriveKind::kOptical;
  if (media == "tape") drive.kind = DriveKind::kTape;
  if (media == "floppy") drive.kind = DriveKind::kFloppy;
  drive.model = disk.text("model");
  drive.serial = disk.text("serial");
  drive.firmware = disk.text("firmware");
  const size_t blank = drive.model.find(' ');
  if (blank != std::string::npos) drive.vendor = drive.model.substr(0, blank);
}

// The driver's names of the drive types that the CMOS memory has numbers for, from 1 on.
constexpr const char* FLOPPY_TYPES[] = {"d360", "h1200", "D720", "H1440", "E2880", "E2880"};

void readFloppy(Drive& drive, const BlockDevice& device) {
  drive.kind = DriveKind::kFloppy;
  const uint64_t type = SysfsAttributes(device.path.deviceDirectory()).number("cmos").value_or(0);
  if (type >= 1 && type <= std::size(FLOPPY_TYPES)) drive.model = FLOPPY_TYPES[type - 1];
}

void readNothing(Drive&, const BlockDevice&) {}

struct PlainKind {
  std::string_view prefix;  // of the name
  const char* bus;
  void (*read)(Drive&, const BlockDevice&);
};
constexpr PlainKind PLAIN_KINDS[] = {
    {"vd", "virtio", readVirtio},   {"mmcblk", "mmc", readCard},
    {"xvd", "xen", readNothing},    {"pmem", "nvdimm", readPersistentMemory},
    {"nbd", "nbd", readNothing},    {"rbd", "rbd", readNothing},
    {"ublkb", "ublk", readNothing}, {"fd", "floppy", readFloppy},
    {"hd", "ata", readIde},         {"cciss/", "raid", readSmartArray},
    {"ida/", "raid", readNothing},  {"rd/", "raid", readNothing},
};

// Without a driver's place in the machine, a drive across the network is the one of its number.
void addPlace(Drive& drive, const BlockDevice& device) {
  drive.location = device.path.pciAddress();
  drive.place = drive.location;
  if (!drive.location.empty()) return;
  drive.place = device.path.stablePart();
  if (device.path.isVirtual()) drive.place += "/" + device.name;
}

bool isThere(const Drive& drive, const BlockDevice& device) {
  // The floppy driver of old boards registers its first drive unseen.
  if (drive.bus == "floppy") return !drive.model.empty();
  return !device.path.isVirtual() || device.sizeBytes.value_or(0) != 0;
}

}  // namespace

std::optional<Drive> readPlainDrive(const BlockDevice& device) {
  const auto* known =
      std::find_if(std::begin(PLAIN_KINDS), std::end(PLAIN_KINDS),
                   [&](const PlainKind& kind) { return device.name.starts_with(kind.prefix); });
  Drive drive;
  if (known != std::end(PLAIN_KINDS)) {
    drive.bus = known->bus;
    known->read(drive, device);
  }
  if (!isThere(drive, device)) return {};
  if (!device.path.isVirtual()) {
    drive.driver = SysfsAttributes(device.path.deviceDirectory()).linkName("driver");
  }
  addPlace(drive, device);
  return drive;
}

}  // namespace quenlor
