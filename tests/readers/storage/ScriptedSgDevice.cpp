#include "tests/readers/storage/ScriptedSgDevice.h"

#include <linux/fs.h>
#include <linux/hdreg.h>
#include <scsi/scsi.h>
#include <scsi/sg.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quenlor::test {
namespace {

constexpr int kIllegalRequest = 5;
constexpr int kUnitAttention = 6;
constexpr unsigned kHostError = 7;  // DID_ERROR

int fail(int error) {
  errno = error;
  return -1;
}

std::string padded(std::string text, size_t width) {
  text.resize(width, ' ');
  return text;
}

std::string bigEndian(int value, int count) {
  std::string text;
  for (int i = count - 1; i >= 0; --i) text += static_cast<char>(value >> 8 * i & 0xFF);
  return text;
}

void setSense(unsigned char* sense, int key) {
  sense[0] = 0x70;
  sense[2] = static_cast<unsigned char>(key);
}

}  // namespace

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

ScriptedSgDevice::ScriptedSgDevice() : m_buffer(4096, '\0') {}

void ScriptedSgDevice::setGeometryPages(int cylinders, int heads, int sectors, int sectorSize) {
  modePages[4] = bytes({4, 0x16}) + bigEndian(cylinders, 3) + bigEndian(heads, 1);
  modePages[4].resize(24, '\0');
  modePages[3] =
      bytes({3, 0x16}) + std::string(8, '\0') + bigEndian(sectors, 2) + bigEndian(sectorSize, 2);
  modePages[3].resize(24, '\0');
}

void ScriptedSgDevice::setSerialNumber(const std::string& serial) {
  vpdPages[0x00] = bytes({0x00, 0x80, 0x83});
  vpdPages[0x80] = serial;
}

std::string ScriptedSgDevice::standardInquiry() const {
  const int additional = 31 + static_cast<int>(vendorSpecific.size());
  return bytes({qualifier << 5 | type, 0, 3, 2, additional, 0, 0, 0}) + padded(vendor, 8) +
         padded(product, 16) + padded(revision, 4) + vendorSpecific;
}

ScriptedSgDevice::Answer ScriptedSgDevice::execute(const unsigned char* command) {
  char text[16];
  std::snprintf(text, sizeof text, "%02X %02X %02X", command[0], command[1], command[2]);
  commands.emplace_back(text);
  if (refused.count(text) != 0) return {"", kIllegalRequest};
  if (command[0] != INQUIRY && unitAttentions > 0) {
    --unitAttentions;
    return {"", kUnitAttention};
  }
  Answer answer;
  if (command[0] == INQUIRY && (command[1] & 1) == 0) {
    answer.data = standardInquiry();
  } else if (command[0] == INQUIRY) {
    const auto page = vpdPages.find(command[2]);
    if (page == vpdPages.end()) return {"", kIllegalRequest};
    answer.data =
        bytes({qualifier << 5 | type, command[2], 0, static_cast<int>(page->second.size())}) +
        page->second;
  } else if (command[0] == MODE_SENSE) {
    const auto page = modePages.find(command[2] & 0x3F);
    if (page == modePages.end()) return {"", kIllegalRequest};
    const std::string rest = std::string(static_cast<size_t>(blockDescriptorLength), '\0');
    const int length = static_cast<int>(3 + rest.size() + page->second.size());
    answer.data = bytes({length, 0, 0, blockDescriptorLength}) + rest + page->second;
  } else {
    return {"", kIllegalRequest};
  }
  if (distort) distort(answer.data);
  return answer;
}

ssize_t ScriptedSgDevice::take(const void* packet, size_t size) {
  if (writeFails) return fail(EPERM);
  sg_header header;
  if (size < sizeof(header) + 6) return fail(EIO);
  std::memcpy(&header, packet, sizeof(header));
  twelveByteFlags.push_back(header.twelve_byte != 0);
  m_answer = execute(static_cast<const unsigned char*>(packet) + sizeof(header));
  return static_cast<ssize_t>(size) - missingWrite;
}

ssize_t ScriptedSgDevice::give(void* packet, size_t size) {
  if (readFails) return fail(EIO);
  sg_header header = {};
  header.result = driverResult;
  header.target_status = static_cast<unsigned>(targetStatus) & 0x1F;
  header.host_status = static_cast<unsigned>(hostStatus) & 0xFF;
  header.driver_status = static_cast<unsigned>(driverStatus) & 0xFF;
  if (senseKey) setSense(header.sense_buffer, *senseKey);
  if (m_answer.key != 0) {
    header.target_status = 1;  // CHECK CONDITION, shifted
    header.driver_status = 8;  // sense data is there
    setSense(header.sense_buffer, m_answer.key);
    if (refusalIsHostError) header.host_status = kHostError;
    if (refusalIsHostError) header.result = EIO;
  }
  const size_t room = std::min(size - sizeof(header), m_buffer.size());
  m_answer.data.copy(m_buffer.data(), room);
  std::memcpy(packet, &header, sizeof(header));
  std::memcpy(static_cast<char*>(packet) + sizeof(header), m_buffer.data(), room);
  return static_cast<ssize_t>(size) - missingRead;
}

int ScriptedSgDevice::answerAddress(unsigned long request, void* argument) const {
  if (request == SCSI_IOCTL_GET_IDLUN && !idlunFails) {
    const auto byte = [](int value, int shift) {
      return (static_cast<uint32_t>(value) & 0xFF) << shift;
    };
    const uint32_t words[2] = {byte(id, 0) | byte(lun, 8) | byte(channel, 16) | byte(host, 24), 7};
    std::memcpy(argument, words, sizeof(words));
    return 0;
  }
  if (request == SCSI_IOCTL_GET_BUS_NUMBER && !busNumberFails) {
    std::memcpy(argument, &host, sizeof(host));
    return 0;
  }
  if (request == SG_GET_SCSI_ID && !addressFails) {
    sg_scsi_id address = {};
    address.host_no = host;
    address.channel = channel;
    address.scsi_id = id;
    address.lun = lun;
    address.scsi_type = type;
    std::memcpy(argument, &address, sizeof(address));
    return 0;
  }
  return fail(ENOTTY);
}

int ScriptedSgDevice::answerSgIo(void* argument) {
  if (sgIoFails) return fail(EIO);
  auto* request = static_cast<sg_io_hdr*>(argument);
  const Answer answer = execute(request->cmdp);
  const size_t sent = std::min<size_t>(request->dxfer_len, answer.data.size());
  std::memcpy(request->dxferp, answer.data.data(), sent);
  request->resid = residual != 0 ? residual : static_cast<int>(request->dxfer_len - sent);
  if (answer.key != 0 || sgIoReportsTrouble) request->info |= SG_INFO_CHECK;
  const int key = answer.key != 0 ? answer.key : senseKey.value_or(0);
  if (key != 0) {
    request->status = 2;  // CHECK CONDITION
    request->info |= SG_INFO_CHECK;
    request->sb_len_wr = 18;
    setSense(request->sbp, key);
  }
  if (hostStatus != 0) {
    request->host_status = static_cast<unsigned short>(hostStatus);
    request->info |= SG_INFO_CHECK;
  }
  return 0;
}

FakeDevice ScriptedSgDevice::genericNode() {
  FakeDevice node;
  node.type = S_IFCHR;
  node.write = [this](const void* packet, size_t size) { return take(packet, size); };
  node.read = [this](void* packet, size_t size) { return give(packet, size); };
  node.ioctl = [this](unsigned long request, void* argument) {
    return request == SG_IO ? answerSgIo(argument) : answerAddress(request, argument);
  };
  return node;
}

FakeDevice ScriptedSgDevice::otherNode() {
  FakeDevice node;
  node.ioctl = [this](unsigned long request, void* argument) {
    return request == SG_GET_SCSI_ID ? fail(ENOTTY) : answerAddress(request, argument);
  };
  return node;
}

FakeDevice ScriptedSgDevice::diskNode(const Disk& disk) {
  FakeDevice node;
  node.ioctl = [this, disk](unsigned long request, void* argument) {
    if (request == HDIO_GETGEO && disk.hasGeometry) {
      hd_geometry geometry = {};
      geometry.heads = static_cast<unsigned char>(disk.heads);
      geometry.sectors = static_cast<unsigned char>(disk.sectors);
      geometry.cylinders = static_cast<unsigned short>(disk.cylinders);
      std::memcpy(argument, &geometry, sizeof(geometry));
      return 0;
    }
    if (request == BLKGETSIZE64 && disk.bytes) {
      std::memcpy(argument, &*disk.bytes, sizeof(*disk.bytes));
      return 0;
    }
    if (request == BLKGETSIZE && disk.sectors512) {
      std::memcpy(argument, &*disk.sectors512, sizeof(*disk.sectors512));
      return 0;
    }
    return request == SG_GET_SCSI_ID ? fail(ENOTTY) : answerAddress(request, argument);
  };
  return node;
}

}  // namespace quenlor::test
