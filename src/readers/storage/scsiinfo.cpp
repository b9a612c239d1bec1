#include "readers/storage/scsiinfo.h"

#include <fcntl.h>
#include <scsi/scsi.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "log/CcLogWrapper.h"
#include "readers/storage/ScsiInquiry.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/scsiinfo.cpp";
constexpr unsigned kHeaderSize = sizeof(sg_header);
static_assert(kHeaderSize == 36);
constexpr unsigned kCommandLength = 6;
constexpr unsigned char kAllocationLength = 255;
constexpr unsigned kLongCommand = 12;
constexpr int kSequenceFailed = -1;
constexpr int kSequenceNoDevice = -2;
constexpr int kNothingTransferred = -1;

// Narrower than the standard's 8 and 16 characters: the identity of listed drives depends on it.
constexpr size_t kVendorWidth = 7;
constexpr size_t kModelWidth = 8;

constexpr unsigned char kSupportedPages = 0x00;
constexpr unsigned char kUnitSerialNumber = 0x80;
constexpr size_t kPageCodeAt = 1;
constexpr size_t kPageLengthAt = 3;
constexpr size_t kPageDataAt = 4;

constexpr unsigned char kFormatDevice = 3;
constexpr unsigned char kRigidDiskGeometry = 4;
constexpr size_t kBlockDescriptorLengthAt = 3;
constexpr size_t kBlockDescriptorLength = 8;
constexpr size_t kModePageAt = 12;            // behind a 4-byte header and one block descriptor
constexpr size_t kRigidDiskGeometryEnd = 18;  // the bytes that are read of the pages end here
constexpr size_t kFormatDeviceEnd = 26;

constexpr unsigned kCheckCondition = 1;  // as target_status has it, without the lowest bit
constexpr int kMaxAttempts = 3;

sg_header headerOf(const char* packet) {
  sg_header header;
  std::memcpy(&header, packet, sizeof(header));
  return header;
}

// The device itself has declined the command. Some adapters (pvscsi) report that as a failure of
// their own, and the driver then gives a result; the sense data can only come from the device.
bool hasDeclined(const sg_header& header) {
  return senseKeyOf(header.sense_buffer) > kRecoveredError;
}

// The driver's result is 0 also for a command that the device refused.
bool wasRefused(const sg_header& header) {
  if (header.host_status != 0) return true;
  const int key = senseKeyOf(header.sense_buffer);
  if (key == kRecoveredError && header.target_status <= kCheckCondition) return false;
  return header.target_status != 0 || header.driver_status != 0 || key > kRecoveredError;
}

// Only to open the node must not wait; the answer to a command that was sent must.
void waitForAnswers(int fd) {
  int nonBlocking = 0;
  host().ioctl(fd, FIONBIO, &nonBlocking);
}

// A write or read that moved fewer bytes than asked: its count, which never passes for success.
int asFailure(ssize_t count) { return count == 0 ? kNothingTransferred : static_cast<int>(count); }

}  // namespace

// A six-byte command and room for the 255 bytes that it may return.
struct scsiinfo::Command {
  Command(unsigned char operation, unsigned char second, unsigned char page) {
    const unsigned char block[kCommandLength] = {operation, second, page, 0, kAllocationLength, 0};
    std::memcpy(packet.data() + kHeaderSize, block, sizeof(block));
  }

  unsigned char at(size_t offset) const {
    return static_cast<unsigned char>(reply[kHeaderSize + offset]);
  }
  const char* data(size_t offset) const { return reply.data() + kHeaderSize + offset; }
  std::string text(size_t offset, size_t width) const {
    return std::string(data(offset), ::strnlen(data(offset), width));
  }

  std::array<char, kHeaderSize + kCommandLength> packet{};
  std::array<char, kHeaderSize + kAllocationLength> reply{};
};

scsiinfo::scsiinfo(const char* node) {
  DeviceOpener opener;
  probe(node, opener);
}

scsiinfo::scsiinfo(const char* node, DeviceOpener& opener) { probe(node, opener); }

void scsiinfo::probe(const char* node, DeviceOpener& opener) {
  const TraceFunction at{kSourcePath, "scsiinfo()"};
  m_fd = opener.open(node, O_RDWR);
  if (!m_fd) {
    m_isHeld = errno == EBUSY;
    m_errorcode = kCannotOpen;
    getCcLogHw()->traceMIN(at(), "hardware %s %s", "cannot open", node);
    return;
  }
  waitForAnswers(m_fd.get());
  m_headerLength = kHeaderSize;
  const int result = getSCSIinfo(node);
  if (result == kSequenceFailed) m_errorcode = kInquiryFailed;
  if (result == kSequenceNoDevice) m_errorcode = kNoDevice;
}

int scsiinfo::getSCSIinfo(const char* node) {
  const TraceFunction at{kSourcePath, "getSCSIinfo()"};
  int result = determineSCSIvendor();
  bool hasSerialNumber = false;
  if (result == 0) result = checkVPDPage(kUnitSerialNumber, hasSerialNumber);
  if (result == 0 && hasSerialNumber) result = determineSCSIserialnumber();
  CcLogWrapper* log = getCcLogHw();
  // What the device has told by now stays true when it answers no more.
  if (result == 0 && determineSCSIgeometry() != 0) {
    log->traceMIN(at(), "hardware %s %s", "no geometry of", node);
  }
  if (result == 0) {
    log->traceMAX(at(), "hardware %s %s %d", "getSCSIinfo", node, result);
  } else {
    log->traceMIN(at(), "hardware %s %s %d", "getSCSIinfo", node, result);
  }
  return result;
}

int scsiinfo::doSCSIcmd(unsigned cmdLen, unsigned inLen, char* buffer, unsigned replyLen,
                        char* reply) {
  if (cmdLen == 0) return kNoCommand;
  if (buffer == nullptr) return kNoCommandBuffer;
  if (reply == nullptr) return kNoReplyBuffer;

  const ssize_t replySize = ssize_t{replyLen} + kHeaderSize;
  sg_header header = headerOf(buffer);
  header.reply_len = static_cast<int>(replySize);
  header.result = 0;
  header.twelve_byte = cmdLen == kLongCommand ? 1 : 0;
  std::memcpy(buffer, &header, sizeof(header));

  const ssize_t size = ssize_t{cmdLen} + kHeaderSize + inLen;
  const ssize_t written = host().write(m_fd.get(), buffer, static_cast<size_t>(size));
  // The oldest drivers report a command that they do not take in the header they were given.
  if (written != size || headerOf(buffer).result != 0) return asFailure(written);

  const ssize_t received = host().read(m_fd.get(), reply, static_cast<size_t>(replySize));
  if (received < 0) std::perror("quenlor: reading from the SCSI device");
  if (received != replySize) return asFailure(received);
  const sg_header answer = headerOf(reply);
  if (answer.result != 0) return hasDeclined(answer) ? kRefused : answer.result;
  return wasRefused(answer) ? kRefused : 0;
}

// The reply is cleared first: a device that sends less, or nothing, leaves the driver's buffer as
// the previous command filled it. A unit attention only reports an event; the command is to be
// repeated.
int scsiinfo::run(Command& command) {
  int result = kNothingTransferred;
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    command.reply.fill('\0');
    result = doSCSIcmd(kCommandLength, 0, command.packet.data(), kAllocationLength,
                       command.reply.data());
    const bool repeat = result == kRefused &&
                        senseKeyOf(headerOf(command.reply.data()).sense_buffer) == kUnitAttention;
    if (!repeat) break;
  }
  return result;
}

int scsiinfo::determineSCSIvendor() {
  Command inquiry(INQUIRY, 0, 0);
  if (run(inquiry) != 0) return kSequenceFailed;
  m_type = inquiry.at(0) & 31;
  m_vendor = inquiry.text(kVendorOffset, kVendorWidth);
  m_model = inquiry.text(kProductOffset, kModelWidth);
  return peripheralSaysNoDevice(inquiry.at(0)) ? kSequenceNoDevice : 0;
}

int scsiinfo::checkVPDPage(unsigned char page, bool& present) {
  present = false;
  Command inquiry(INQUIRY, 1, kSupportedPages);
  const int result = run(inquiry);
  if (result == kRefused) return 0;  // devices before SCSI-2 have no such pages
  if (result != 0) return kSequenceFailed;
  if (inquiry.at(kPageCodeAt) != kSupportedPages) return 0;
  const size_t end = std::min<size_t>(kPageDataAt + inquiry.at(kPageLengthAt), kAllocationLength);
  for (size_t i = kPageDataAt; i < end; ++i) {
    if (inquiry.at(i) == page) present = true;
  }
  return 0;
}

// Asked twice: the first answer of some drives is that of the command before.
int scsiinfo::determineSCSIserialnumber() {
  Command inquiry(INQUIRY, 1, kUnitSerialNumber);
  int result = run(inquiry);
  if (result == 0) result = run(inquiry);
  if (result == kRefused) return 0;
  if (result != 0) return kSequenceFailed;
  if (inquiry.at(kPageCodeAt) != kUnitSerialNumber) return 0;
  const size_t room = kAllocationLength - kPageDataAt;
  m_serialNumber = inquiry.text(kPageDataAt, std::min<size_t>(inquiry.at(kPageLengthAt), room));
  return 0;
}

// 0 when the reply holds the page up to its end offset, kRefused when the device does not give that
// much of it or gives it elsewhere. Behind what the device sent, the driver's buffer still holds
// the answer to the command before.
int scsiinfo::readModePage(unsigned char page, size_t end, Command& command) {
  const int result = run(command);
  if (result != 0) return result == kRefused ? kRefused : kSequenceFailed;
  const size_t sent = size_t{command.at(0)} + 1;  // the mode data length does not count itself
  const bool usable = command.at(kBlockDescriptorLengthAt) == kBlockDescriptorLength &&
                      (command.at(kModePageAt) & 0x3F) == page && sent >= end;
  return usable ? 0 : kRefused;
}

// Both pages are obsolete; a device without them has no geometry, which is no error.
int scsiinfo::determineSCSIgeometry() {
  Command geometry(MODE_SENSE, 0, kRigidDiskGeometry);
  int result = readModePage(kRigidDiskGeometry, kRigidDiskGeometryEnd, geometry);
  if (result != 0) return result == kRefused ? 0 : result;
  Command format(MODE_SENSE, 0, kFormatDevice);
  result = readModePage(kFormatDevice, kFormatDeviceEnd, format);
  if (result != 0) return result == kRefused ? 0 : result;

  m_heads = geometry.at(17);
  m_cylinders = getinteger(geometry.data(14), 3);
  m_sectors = getinteger(format.data(22), 2);
  m_sectorSize = getinteger(format.data(24), 2);
  // Not simply a product: the halves are rounded like this in every inventory so far.
  const unsigned long tracks = m_sectors * m_cylinders;
  const unsigned long bytes = m_sectorSize * m_heads;
  m_totalsize = (tracks >> 1) * (bytes >> 9) + (tracks & 1) * (bytes >> 10);
  return 0;
}

unsigned long scsiinfo::getinteger(const char* bytes, int count) {
  unsigned long value = 0;
  for (int i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

}  // namespace quenlor
