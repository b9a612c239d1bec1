// One floppy drive, asked through the ioctls of the floppy driver.
#pragma once

#include <string>

#include "host/Handles.h"
#include "readers/storage/DeviceOpener.h"

namespace quenlor {

class floppyinfo {
 public:
  static constexpr int kCannotOpen = 20;

  // device is a node such as "/dev/fd0". Asks everything; Itanium machines are not asked.
  explicit floppyinfo(const char* device);
  // The same for one of the drives of a collection.
  floppyinfo(const char* device, DeviceOpener& opener);

  // 0 when geometry or drive type could be determined, kCannotOpen, else the last errno seen.
  int errorcode() const { return m_errorcode; }
  unsigned long numheads() const { return m_heads; }
  unsigned long numcylinders() const { return m_cylinders; }
  unsigned long numsectors() const { return m_sectors; }      // per track
  unsigned long sector_size() const { return m_sectorSize; }  // bytes
  unsigned long totalsize() const { return m_totalsize; }     // kilobytes
  const char* model() const { return m_model.c_str(); }       // the driver's name of the drive type
  const char* serialnumber() const { return ""; }
  const char* type() const { return "floppy"; }
  bool removable() const { return true; }
  bool mediapresent() const { return m_geometryValid; }
  bool isHeld() const { return m_isHeld; }  // another process has opened the node for itself alone

  // True on an Itanium processor, by /proc/cpuinfo: its floppy driver cannot be asked.
  static bool itaniumIA64();

 private:
  void probe(const char* device, DeviceOpener& opener);
  int determineGeometry();
  int determineType();

  Descriptor m_fd;
  bool m_isHeld = false;
  int m_errorcode = 0;
  unsigned long m_sectorSize = 0;
  unsigned long m_totalsize = 0;
  unsigned long m_heads = 0;
  unsigned long m_cylinders = 0;
  unsigned long m_sectors = 0;
  std::string m_model;
  bool m_geometryValid = false;
};

}  // namespace quenlor
