#include "readers/block/ScsiDrive.h"

#include <algorithm>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr std::string_view kAtaVendor = "ATA";
constexpr size_t kInquiryModel = 16;  // characters; a shorter text was not cut

// Sources of a serial number beside the device's own page, from the best to the worst: for SCSI
// drives ID_SERIAL_SHORT is often the world-wide name.
constexpr std::string_view SERIAL_PROPERTIES[] = {"SCSI_IDENT_SERIAL", "ID_SCSI_SERIAL",
                                                  "ID_USB_SERIAL_SHORT", "ID_SERIAL_SHORT"};

std::string firstOf(const std::string& text, const std::string& otherwise) {
  return text.empty() ? otherwise : text;
}

std::string serialFromUdev(const UdevRecord& udev) {
  for (const std::string_view key : SERIAL_PROPERTIES) {
    if (std::string text = udev.text(key); !text.empty()) return text;
  }
  return {};
}

void addAtaIdentity(Drive& drive, AtaIdentity identity) {
  drive.model = firstOf(identity.model, drive.model);
  drive.firmware = firstOf(identity.firmware, drive.firmware);
  if (drive.serial.empty()) drive.serial = std::move(identity.serial);
  if (drive.worldWideName.empty()) drive.worldWideName = std::move(identity.worldWideName);
  if (drive.rotation == Rotation::kNotTold) drive.rotation = identity.rotation;
  if (drive.bus == "ata" && identity.isSerialAta) drive.bus = "sata";
  if (!identity.hasSecurity) return;
  drive.security = identity.isSecurityEnabled ? DriveSecurity::kEnabled : DriveSecurity::kDisabled;
}

// What udev's ata_id asked the drive when it was plugged in.
void addAtaFromUdev(Drive& drive, const UdevRecord& udev, Outcome& outcome) {
  const std::string model = udev.property("ID_BUS") == "ata" ? udev.text("ID_MODEL_ENC") : "";
  if (model.empty() && drive.model.size() >= kInquiryModel) {
    outcome.note(OutcomeStatus::kPartial, "models: ATA drives cut to 16 characters");
  }
  drive.model = firstOf(model, drive.model);
  drive.firmware = firstOf(udev.text("ID_REVISION"), drive.firmware);
  if (udev.property("ID_ATA_SATA") == "1" && drive.bus == "ata") drive.bus = "sata";
  if (udev.property("ID_ATA_ROTATION_RATE_RPM") == "0") drive.rotation = Rotation::kSolidState;
  const auto rate = parseDecimal(udev.property("ID_ATA_ROTATION_RATE_RPM"));
  if (rate && *rate > 0) drive.rotation = Rotation::kSpinning;
  if (udev.property("ID_ATA_FEATURE_SET_SECURITY") != "1") return;
  drive.security = udev.property("ID_ATA_FEATURE_SET_SECURITY_ENABLED") == "1"
                       ? DriveSecurity::kEnabled
                       : DriveSecurity::kDisabled;
}

// The kernel's text is the model's first 16 characters, and the maker is part of the model.
void addAta(Drive& drive, const SysfsAttributes& unit, const UdevRecord& udev, Outcome& outcome) {
  if (auto identity = parseAtaInformation(unit.bytes("vpd_pg89"))) {
    addAtaIdentity(drive, *std::move(identity));
  } else {
    addAtaFromUdev(drive, udev, outcome);
  }
  const size_t blank = drive.model.find(' ');
  drive.vendor = blank == std::string::npos ? "" : drive.model.substr(0, blank);
}

std::string worldWideNameOf(const SysfsAttributes& unit, const UdevRecord& udev) {
  std::string name = worldWideName(unit.text("wwid"));
  if (name.empty()) name = parseIdentification(unit.bytes("vpd_pg83"));
  if (name.empty()) name = worldWideName(udev.property("ID_WWN_WITH_EXTENSION"));
  return name.empty() ? worldWideName(udev.property("ID_WWN")) : name;
}

// What tells the drives of one PCI device apart. Hosts are not counted: a SATA port, of which each
// has a host to itself, has its own number.
std::string placeBehind(const BlockPath& path, const ScsiPlace& address, ScsiHosts& hosts) {
  std::string port = path.usbPort();
  if (port.empty()) port = hosts.portOf(path);
  std::string unit = address.withoutHost();
  if (port.empty()) return unit;
  return unit == "0:0:0" ? port : port + "/" + unit;
}

void addPlace(Drive& drive, const BlockPath& path, const ScsiPlace& address, ScsiHosts& hosts) {
  const std::string pci = path.pciAddress();
  const std::string behind = placeBehind(path, address, hosts);
  drive.usbPort = path.usbPort();
  drive.location = pci.empty() ? "" : pci + "/" + behind;
  drive.place = pci.empty() ? path.stablePart() + "/" + behind : drive.location;
}

// The kernel keeps the pages of devices of its standard or later; older ones, and many behind USB,
// would have to be asked. Optical drives have neither number nor name.
void noteWhatNobodyTold(const Drive& drive, Outcome& outcome) {
  const bool isNameless = drive.serial.empty() && drive.worldWideName.empty();
  if (!isNameless || drive.kind == DriveKind::kOptical) return;
  outcome.note(OutcomeStatus::kPartial, "serial numbers: some drives tell theirs only when asked");
}

}  // namespace

std::optional<DriveKind> driveKindOf(uint64_t peripheralType) {
  switch (peripheralType) {
    case 0:   // direct access
    case 14:  // simplified direct access
    case 20:  // host-managed zones
      return DriveKind::kDisk;
    case 1:
      return DriveKind::kTape;
    case 4:  // write once
    case 7:  // optical memory
      return DriveKind::kMagnetoOptical;
    case 5:
      return DriveKind::kOptical;
    case 8:
      return DriveKind::kChanger;
    default:
      return {};
  }
}

std::optional<Drive> readScsiDrive(const SysfsAttributes& unit, const UdevRecord& udev,
                                   ScsiHosts& hosts, Outcome& outcome) {
  const BlockPath path(unit.directory());
  const std::optional<ScsiPlace> address = path.scsiAddress();
  const std::optional<uint64_t> type = unit.number("type");
  const std::optional<DriveKind> kind = type ? driveKindOf(*type) : std::nullopt;
  if (!address || !kind) return {};
  Drive drive;
  drive.kind = *kind;
  drive.vendor = unit.text("vendor");
  drive.model = unit.text("model");
  drive.firmware = unit.text("rev");
  drive.state = unit.text("state");
  drive.bus = hosts.busOf(path, *address);
  drive.driver = hosts.driverOf(address->host);
  drive.worldWideName = worldWideNameOf(unit, udev);
  drive.serial = parseUnitSerial(unit.bytes("vpd_pg80"));
  drive.rotation = parseRotation(unit.bytes("vpd_pgb1"));
  if (drive.vendor == kAtaVendor) addAta(drive, unit, udev, outcome);
  if (drive.serial.empty()) drive.serial = serialFromUdev(udev);
  noteWhatNobodyTold(drive, outcome);
  addPlace(drive, path, *address, hosts);
  return drive;
}

}  // namespace quenlor
