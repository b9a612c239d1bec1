// A drive of the machine, as its driver and its own identity data describe it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/block/VpdPages.h"

namespace quenlor {

enum class DriveKind : uint8_t {
  kDisk,
  kOptical,  // CD, DVD
  kMagnetoOptical,
  kTape,
  kChanger,
  kFloppy,
};

enum class DriveSecurity : uint8_t { kUnsupported, kDisabled, kEnabled };

// Texts are empty where unknown, as the device gives them but for blanks at their ends.
struct Drive {
  std::string kernelName;  // "sda"; empty where no driver has made a device of it
  std::string deviceName;  // "/dev/sda", "/dev/st0"; empty without a node
  DriveKind kind = DriveKind::kDisk;
  std::string bus;  // "nvme", "sata", "usb", ...
  std::string vendor;
  std::string model;
  std::string serial;
  std::string firmware;
  std::string worldWideName;
  std::string driver;
  std::string state;        // the kernel's word: "running", "live"
  std::string location;     // PCI address, then what tells the drives behind it apart
  std::string place;        // as location, of drives without a PCI address too: never empty
  std::string namespaceOf;  // NVMe: "nvme0"
  std::string usbPort;      // "1.2" below the controller; empty outside USB
  std::optional<uint64_t> sizeBytes;  // nothing without a medium
  std::optional<uint32_t> logicalSectorBytes;
  std::optional<uint32_t> physicalSectorBytes;
  std::optional<bool> isRemovable;  // the medium is
  std::optional<bool> isReadOnly;
  Rotation rotation = Rotation::kNotTold;
  std::optional<uint32_t> paths;  // of a multipath drive
  DriveSecurity security = DriveSecurity::kUnsupported;
};

// Drives with a block device in natural order of their names, then the others in the order of their
// places.
struct DriveList {
  std::vector<Drive> drives;
  Outcome outcome;
};

class BlockTree;

// Reads what the tree has not: the attributes of drives, adapters and NVMe controllers, and the
// logical units that have no block device. In a guest a hypervisor answers for the drives, and no
// flag of the kernel is proof of turning disks.
DriveList readDrives(const BlockTree& tree, bool isGuest);

}  // namespace quenlor
