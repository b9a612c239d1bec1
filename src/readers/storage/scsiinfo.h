// One SCSI device, asked through its generic SCSI node with the write and read protocol of version
// 2 of the sg driver: INQUIRY with its vital product data pages (SPC-3, 6.4 and 7.6) and MODE
// SENSE(6) with the geometry pages of SBC.
#pragma once

#include <string>

#include "host/Handles.h"
#include "readers/storage/DeviceOpener.h"

namespace quenlor {

class scsiinfo {
 public:
  // Results of errorcode() and doSCSIcmd().
  static constexpr int kCannotOpen = 10;
  static constexpr int kNoCommand = 30;
  static constexpr int kNoCommandBuffer = 50;
  static constexpr int kNoReplyBuffer = 60;
  static constexpr int kInquiryFailed = 70;
  static constexpr int kNoDevice = 80;  // the node answers, but says that no device is there

  // Opens the node and asks for everything.
  explicit scsiinfo(const char* node);
  // The same for one of the nodes of a collection.
  scsiinfo(const char* node, DeviceOpener& opener);

  int errorcode() const { return m_errorcode; }
  unsigned long numheads() const { return m_heads; }
  unsigned long numcylinders() const { return m_cylinders; }
  unsigned long numsectors() const { return m_sectors; }      // per track
  unsigned long sector_size() const { return m_sectorSize; }  // bytes
  int type() const { return m_type; }                         // peripheral device type, 0 to 31
  unsigned long totalsize() const { return m_totalsize; }     // kilobytes
  const char* model() const { return m_model.c_str(); }
  const char* manufacturer() const { return m_vendor.c_str(); }
  const char* serialnumber() const { return m_serialNumber.c_str(); }
  bool mediapresent() const { return m_totalsize != 0; }
  bool isdevicevalid() const { return m_errorcode == 0; }
  bool isHeld() const { return m_isHeld; }  // another process has opened the node for itself alone

  // Sends the command at byte 36 of buffer, with inLen bytes of data behind it, and reads up to
  // replyLen bytes to byte 36 of reply; the first 36 bytes of both are the driver's header. 0 when
  // all of it succeeded and reply holds the device's answer; else not 0: one of the codes above,
  // the count of a write or read that failed, the driver's errno, or kRefused.
  int doSCSIcmd(unsigned cmdLen, unsigned inLen, char* buffer, unsigned replyLen, char* reply);
  // The device does not answer this command (CHECK CONDITION and the like); reply is of no use.
  static constexpr int kRefused = -3;

  // Big-endian unsigned integer of up to 4 bytes.
  static unsigned long getinteger(const char* bytes, int count);

 private:
  struct Command;  // one command with its reply

  void probe(const char* node, DeviceOpener& opener);
  int getSCSIinfo(const char* node);
  int determineSCSIvendor();
  int checkVPDPage(unsigned char page, bool& present);
  int determineSCSIserialnumber();
  int determineSCSIgeometry();
  int run(Command& command);
  int readModePage(unsigned char page, size_t end, Command& command);

  Descriptor m_fd;
  bool m_isHeld = false;
  int m_errorcode = 0;
  unsigned long m_headerLength = 36;
  unsigned long m_heads = 0;
  unsigned long m_cylinders = 0;
  unsigned long m_sectors = 0;
  unsigned long m_totalsize = 0;
  std::string m_model;  // at most 8 characters, the vendor 7: widths that inventories rely on
  std::string m_vendor;
  std::string m_serialNumber;
  int m_type = 0;
  unsigned long m_sectorSize = 0;
};

}  // namespace quenlor
