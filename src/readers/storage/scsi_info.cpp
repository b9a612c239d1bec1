#include "readers/storage/scsi_info.h"

#include <fcntl.h>
#include <linux/hdreg.h>
#include <scsi/scsi.h>
#include <scsi/sg.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "host/Handles.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/DiskSize.h"
#include "readers/storage/ScsiInquiry.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/scsi_info.cpp";
constexpr const char* kName = "get_scsi_info";
constexpr unsigned char kInquiryLength = kSerialOffset + kSerialLength;
constexpr unsigned kTimeoutMilliseconds = 10000;
constexpr unsigned char kCheckCondition = 2;  // status byte, SAM-3

// False when the device sent no data that counts.
bool succeeded(const sg_io_hdr& request) {
  if ((request.info & SG_INFO_OK_MASK) == SG_INFO_OK) return true;
  return request.host_status == 0 && request.status == kCheckCondition &&
         senseKeyOf(request.sbp) == kRecoveredError;
}

// SPC-3, 6.4: standard INQUIRY through the version 3 interface of the sg driver. Only the bytes
// that came are returned; nothing when the command failed in any way.
std::optional<InquiryData> inquire(int fd) {
  InquiryData data;
  unsigned char command[6] = {INQUIRY, 0, 0, 0, kInquiryLength, 0};
  unsigned char sense[32] = {};
  sg_io_hdr request = {};
  request.interface_id = 'S';
  request.dxfer_direction = SG_DXFER_FROM_DEV;
  request.cmd_len = sizeof(command);
  request.mx_sb_len = sizeof(sense);
  request.dxfer_len = kInquiryLength;
  request.dxferp = data.bytes.data();
  request.cmdp = command;
  request.sbp = sense;
  request.timeout = kTimeoutMilliseconds;
  if (host().ioctl(fd, SG_IO, &request) != 0) return std::nullopt;
  if (!succeeded(request)) return std::nullopt;
  const int received = static_cast<int>(kInquiryLength) - std::max(request.resid, 0);
  if (received <= 0) return std::nullopt;
  data.length = static_cast<size_t>(received);
  return data;
}

void traceIdentity(const TraceFunction& at, const SCSIIdentity& identity) {
  getCcLogHw()->traceMAX(at(),
                         "hardware %s:\n"
                         "manufacturer = %s\n"
                         "model = %s\n"
                         "revision = %s\n"
                         "serial number = %s\n"
                         "host number = %d\n"
                         "channel = %d\n"
                         "SCSI id = %d\n"
                         "lun = %d\n"
                         "SCSI type = %d",
                         kName, identity.manufacturer.c_str(), identity.model.c_str(),
                         identity.revision.c_str(), identity.serialNumber.c_str(),
                         identity.hostNumber, identity.channel, identity.scsiId, identity.lun,
                         identity.scsiType);
}

std::optional<SCSIIdentity> identify(int fd, const char* sgNode) {
  const TraceFunction at{kSourcePath, "get_scsi_info()"};
  sg_scsi_id address = {};
  if (host().ioctl(fd, SG_GET_SCSI_ID, &address) != 0) {
    getCcLogHw()->traceMIN(at(), "hardware %s: SG_GET_SCSI_ID ioctl failed for device '%s'.", kName,
                           sgNode);
    return std::nullopt;
  }
  const std::optional<InquiryData> inquiry = inquire(fd);
  if (!inquiry) {
    getCcLogHw()->traceMIN(at(), "hardware %s: SG_IO ioctl failed for device '%s'.", kName, sgNode);
    return std::nullopt;
  }
  if (inquiry->saysNoDevice()) {
    getCcLogHw()->traceMIN(at(), "hardware %s: no device behind '%s'.", kName, sgNode);
    return std::nullopt;
  }
  SCSIIdentity identity;
  identity.manufacturer = inquiry->text(kVendorOffset, kVendorLength);
  identity.model = inquiry->text(kProductOffset, kProductLength);
  identity.revision = inquiry->text(kRevisionOffset, kRevisionLength);
  identity.serialNumber = inquiry->text(kSerialOffset, kSerialLength);
  identity.hostNumber = address.host_no;
  identity.channel = address.channel;
  identity.scsiId = address.scsi_id;
  identity.lun = address.lun;
  identity.scsiType = address.scsi_type;
  traceIdentity(at, identity);
  return identity;
}

SCSIDiskData readDiskData(const std::string& path, DeviceOpener& opener) {
  const TraceFunction at{kSourcePath, "get_scsi_info()"};
  SCSIDiskData data;
  const Descriptor disk = opener.open(path, O_RDONLY);
  if (!disk) {
    getCcLogHw()->traceMIN(at(), "hardware %s: error opening device '%s'.", kName, path.c_str());
    return data;
  }
  hd_geometry geometry = {};
  if (host().ioctl(disk.get(), HDIO_GETGEO, &geometry) == 0) {
    data.cylinders = geometry.cylinders;
    data.heads = geometry.heads;
    data.sectors = geometry.sectors;
  } else {
    getCcLogHw()->traceMIN(at(), "hardware %s: HDIO_GETGEO ioctl failed for device '%s'.", kName,
                           path.c_str());
  }
  unsigned long long sectors = 0;
  if (disk_size(disk.get(), &sectors) != 0) {
    data.megabytes = get_megabytes(sectors);
  } else {
    getCcLogHw()->traceMIN(at(), "hardware %s: size of device '%s' is not known.", kName,
                           path.c_str());
  }
  return data;
}

void traceMapped(const TraceFunction& at, const char* sgNode, const std::string& path) {
  getCcLogHw()->traceMAX(at(), "hardware %s: '%s' mapped to '%s'", kName, sgNode, path.c_str());
}

// Tape nodes are asked last and for tapes only, since merely opening one rewinds it.
std::unique_ptr<SCSIInfo> describe(int fd, const char* sgNode, SCSIIdentity identity,
                                   ScsiNodes& nodes) {
  const TraceFunction at{kSourcePath, "get_scsi_info()"};
  const ScsiAddress address = scsiAddressOf(fd);
  if (const std::string path = nodes.disks.find(address); !path.empty()) {
    traceMapped(at, sgNode, path);
    getCcLogHw()->traceMAX(at(), "hardware %s: SCSI disk device detected.", kName);
    return std::make_unique<SCSIDiskInfo>(std::move(identity), readDiskData(path, nodes.opener));
  }
  if (const std::string path = nodes.removables.find(address); !path.empty()) {
    traceMapped(at, sgNode, path);
    getCcLogHw()->traceMAX(at(), "hardware %s: SCSI removable device detected.", kName);
    return std::make_unique<SCSIRemovableInfo>(std::move(identity));
  }
  if (identity.scsiType == TYPE_TAPE) {
    if (const std::string path = nodes.tapes.find(address); !path.empty()) {
      traceMapped(at, sgNode, path);
      getCcLogHw()->traceMAX(at(), "hardware %s: SCSI tape device detected.", kName);
      return std::make_unique<SCSITapeInfo>(std::move(identity));
    }
  }
  getCcLogHw()->traceMAX(at(), "hardware %s: Generic SCSI device detected.", kName);
  return std::make_unique<SCSIInfo>(std::move(identity));
}

}  // namespace

int get_scsi_info(const char* sgNode, SCSIInfo*& out) {
  DeviceOpener opener;
  ScsiNodes nodes(opener);
  return get_scsi_info(sgNode, nodes, out);
}

int get_scsi_info(const char* sgNode, ScsiNodes& nodes, SCSIInfo*& out) {
  const TraceFunction at{kSourcePath, "get_scsi_info()"};
  out = nullptr;
  const Descriptor node = nodes.opener.open(sgNode, O_RDONLY);
  if (!node) {
    getCcLogHw()->traceMIN(at(), "hardware %s: error opening device '%s'.", kName, sgNode);
    return 0;
  }
  std::optional<SCSIIdentity> identity = identify(node.get(), sgNode);
  if (!identity) return 0;
  out = describe(node.get(), sgNode, std::move(*identity), nodes).release();
  return 1;
}

}  // namespace quenlor
