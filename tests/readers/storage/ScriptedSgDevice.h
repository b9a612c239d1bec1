// A SCSI device behind a generic node whose every answer a test decides: standard INQUIRY, vital
// product data, MODE SENSE, refusals, transport faults and what the kernel knows of its address.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

// Bytes given as numbers.
std::string bytes(std::initializer_list<int> values);

class ScriptedSgDevice {
 public:
  ScriptedSgDevice();

  // --- the device ---
  int qualifier = 0;
  int type = 0;                    // peripheral device type
  std::string vendor = "SEAGATE";  // padded to its field
  std::string product = "ST318406LC";
  std::string revision = "0109";
  std::string vendorSpecific;                      // standard INQUIRY from byte 36 on
  std::map<int, std::string> vpdPages;             // page code to what follows the four-byte header
  std::map<int, std::string> modePages;            // page code to the page, its code included
  int blockDescriptorLength = 8;                   // 0: the mode pages follow the header at once
  std::set<std::string> refused;                   // commands ("12 01 00") answered CHECK CONDITION
  int unitAttentions = 0;                          // so many commands but INQUIRY are answered so
  std::function<void(std::string& data)> distort;  // changes the data of every answer

  // --- the driver's packets ---
  int missingWrite = 0;  // bytes that write takes less than it was given
  int missingRead = 0;   // bytes that read returns less than it was asked for
  bool writeFails = false;
  bool readFails = false;
  int driverResult = 0;
  int targetStatus = 0;
  int hostStatus = 0;
  int driverStatus = 0;
  std::optional<int> senseKey;      // sense data with this key beside the status
  bool refusalIsHostError = false;  // a refused command comes back with DID_ERROR and EIO

  // --- what the kernel knows ---
  int host = 0;
  int channel = 0;
  int id = 0;
  int lun = 0;
  bool addressFails = false;    // SG_GET_SCSI_ID
  bool idlunFails = false;      // SCSI_IOCTL_GET_IDLUN
  bool busNumberFails = false;  // SCSI_IOCTL_GET_BUS_NUMBER
  bool sgIoFails = false;       // the ioctl itself
  bool sgIoReportsTrouble = false;
  int residual = 0;  // bytes that SG_IO reports as missing

  // --- what was asked ---
  std::vector<std::string> commands;  // first three bytes of each, "12 01 80"
  std::vector<bool> twelveByteFlags;

  // Pages 3 and 4 as a disk of this geometry gives them.
  void setGeometryPages(int cylinders, int heads, int sectors, int sectorSize = 512);
  // Lists page 0 and the unit serial number, and holds it.
  void setSerialNumber(const std::string& serial);

  // The node of the sg driver. The device must outlive it.
  FakeDevice genericNode();
  // A node of another driver at the same address, answering also the given disk ioctls.
  struct Disk {
    bool hasGeometry = true;
    int cylinders = 0;
    int heads = 0;
    int sectors = 0;
    std::optional<uint64_t> bytes = std::nullopt;            // BLKGETSIZE64
    std::optional<unsigned long> sectors512 = std::nullopt;  // BLKGETSIZE
  };
  FakeDevice otherNode();
  FakeDevice diskNode(const Disk& disk);

 private:
  struct Answer {
    std::string data;
    int key = 0;  // sense key, 0: good
  };

  Answer execute(const unsigned char* command);
  std::string standardInquiry() const;
  int answerAddress(unsigned long request, void* argument) const;
  int answerSgIo(void* argument);
  ssize_t take(const void* packet, size_t size);
  ssize_t give(void* packet, size_t size);

  Answer m_answer;
  std::string m_buffer;  // of the driver: keeps the previous answer when a command brings none
};

}  // namespace quenlor::test
