// SCSI devices of every kind, through their generic nodes.
#include <optional>

#include "groups/storage/StorageGatherers.h"
#include "host/Handles.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/SgEnumeration.h"
#include "readers/storage/StorageText.h"
#include "readers/storage/scsi_info.h"
#include "readers/storage/scsiinfo.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ScsiDrives.cpp";
constexpr const char* kGenericPrefix = "/dev/sg";
constexpr uint32_t kPauseMicroseconds = 50000;
constexpr int kNoStorage = -1;

std::string firstKnown(const std::string& preferred, const char* other) {
  std::string text = trimmed(preferred);
  return text.empty() ? trimmed(other) : text;
}

// Cut at the first character that is no printable ASCII: the field of the standard INQUIRY belongs
// to the maker, who may keep anything there.
std::string serialText(const std::string& field) {
  const std::string text = trimmed(field);
  size_t length = 0;
  while (length < text.size() && text[length] >= ' ' && text[length] <= '~') ++length;
  return trimmed(text.substr(0, length));
}

// Both sources on one node; the kernel's is null where it identified nothing.
struct ScsiSources {
  const scsiinfo& inquiry;
  const SCSIInfo* kernel;

  bool inquiryFailed() const { return inquiry.errorcode() != 0; }
};

void setTexts(StorageDrive& drive, const ScsiSources& sources) {
  static const SCSIIdentity kNothingKnown;
  const SCSIIdentity& known = sources.kernel ? sources.kernel->identity() : kNothingKnown;
  drive.model = firstKnown(known.model, sources.inquiry.model());
  drive.manufacturer = firstKnown(known.manufacturer, sources.inquiry.manufacturer());
  if (sources.inquiryFailed()) return;
  drive.serialNumber = serialText(known.serialNumber);
  if (drive.serialNumber.empty()) drive.serialNumber = serialText(sources.inquiry.serialnumber());
}

void setGeometry(StorageDrive& drive, const ScsiSources& sources) {
  const SCSIDiskInfo* disk = sources.kernel ? sources.kernel->asDisk() : nullptr;
  if (disk != nullptr && disk->hasData()) {
    const SCSIDiskData& data = disk->data();
    drive.geometry = {data.cylinders, data.sectors, data.heads};
    drive.megabytes = data.megabytes;
  } else if (!sources.inquiryFailed()) {
    const scsiinfo& inquiry = sources.inquiry;
    drive.geometry = {inquiry.numcylinders(), inquiry.numsectors(), inquiry.numheads()};
    drive.megabytes = inquiry.totalsize() >> 10;
  }
}

// Nothing for a node that answers to neither source, or whose device is no storage.
std::optional<StorageDrive> describe(const char* node, ScsiNodes& nodes) {
  const TraceFunction at{kSourcePath, "gatherSCSIDriveInformation()"};
  CcLogWrapper* log = getCcLogHw();
  const scsiinfo inquiry(node, nodes.opener);
  log->traceMAX(at(), "hardware %s %d", "SCSI errorcode=", inquiry.errorcode());
  if (inquiry.errorcode() == scsiinfo::kNoDevice) return std::nullopt;

  SCSIInfo* found = nullptr;
  get_scsi_info(node, nodes, found);
  const std::unique_ptr<SCSIInfo> kernel(found);
  const ScsiSources sources{inquiry, kernel.get()};
  if (sources.inquiryFailed() && kernel == nullptr) {
    if (inquiry.isHeld()) reportHeld(node);
    return std::nullopt;
  }

  StorageDrive drive;
  drive.type =
      resolveSCSItype(sources.inquiryFailed() ? kernel->identity().scsiType : inquiry.type());
  log->traceMAX(at(), "hardware %s %d", "SCSI resolveSCSItype=", drive.type);
  if (drive.type == kNoStorage) return std::nullopt;
  setTexts(drive, sources);
  setGeometry(drive, sources);
  drive.idText = geometryIdText(drive.geometry, drive.megabytes);
  return drive;
}

// The walk over the generic nodes of one collection.
class GenericNodes {
 public:
  explicit GenericNodes(DriveCounter& counter) : m_counter(counter) {}

  // The first name decides whether the nodes have letters, as with old kernels, or numbers.
  DrivePath first() {
    DrivePath node = next();
    if (node == nullptr) {
      m_letters = 0;
      node = next();
    }
    return node;
  }

  DrivePath next() { return DrivePath(getNextDrive(m_counter, kGenericPrefix, m_letters)); }

 private:
  DriveCounter& m_counter;
  int m_letters = 1;
};

}  // namespace

int resolveSCSItype(int peripheralType) {
  switch (peripheralType) {
    case 0:  // direct access
      return kMediaHardDisk;
    case 1:  // sequential access
      return kMediaTapeCartridge;
    case 2:  // printer
    case 3:  // processor
    case 6:  // scanner
      return kNoStorage;
    case 4:  // write once
    case 7:  // optical memory
      return kMediaMagnetoOptical;
    case 5:  // CD, DVD
      return kMediaCdRom;
    default:  // medium changer (8) and what came later
      return kMediaUnknown;
  }
}

int gatherSCSIDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherSCSIDriveInformation()"};
  CcLogWrapper* log = getCcLogHw();
  ScsiNodes deviceNodes(collection.opener);
  GenericNodes generic(collection.enumeration.counter);
  int added = 0;
  for (DrivePath node = generic.first(); node != nullptr; node = generic.next()) {
    if (omitSGdevice(collection.enumeration.sgMap, log, node.get()) != 0) {
      log->traceMAX(at(), "hardware %s %s", "omitting SCSI name=", node.get());
      continue;
    }
    log->traceMAX(at(), "hardware %s %s", "SCSI name=", node.get());
    const std::optional<StorageDrive> drive = describe(node.get(), deviceNodes);
    if (!drive) continue;
    addDriveRow(collection, *drive);
    ++added;
    log->traceMAX(at(), "hardware %s %d", "Add SCSI index=>", collection.index);
    host().sleepMicroseconds(kPauseMicroseconds);
  }
  return added;
}

}  // namespace quenlor
