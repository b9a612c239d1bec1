// RAID logical drives as the DAC960 and the Smart Array (cciss) driver list them under /proc, and
// as mounted cciss devices.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quenlor {

struct RAIDLogicalDrive {
  std::string name;     // "/dev/rd/c0d0"
  uint64_t blocks = 0;  // of 512 bytes
};

// One DAC960 controller.
struct RAIDInfo {
  std::string controller;  // maker, the first word of the controller's name
  std::string model;       // the rest of the controller's name
  std::vector<RAIDLogicalDrive> drives;
};

// From the lines of /proc/rd/c0/current_status.
RAIDInfo parseDac960Status(const std::vector<std::string>& lines);
// Sizes of the volumes in /proc/driver/cciss/cciss0: their sectors shifted right by 10. That is
// half of their megabytes; inventories have always carried it so.
std::vector<unsigned long> parseCompaqVolumes(const std::vector<std::string>& lines);
// Names of the cciss disks in the mount command's output, each once: the lines with "cciss" cut at
// their first 'p', where the partition number begins. A volume that is mounted as a whole is cut
// elsewhere and names no disk.
std::vector<std::string> parseCcissMounts(const std::vector<std::string>& lines);

int getLogicalDAC960DriveNum();            // 0 without such a controller
int getFromCurrentStatus(RAIDInfo* info);  // 1 when the driver's file could be read, else 0
int getCompaqSmartDiskNum();               // 0 without such a controller
unsigned long getCompaqSmartDiskSize(
    int disk);  // disk counts from 0; 0 for a disk that is not there
std::vector<std::string> getMountedCcissDisks();

}  // namespace quenlor
