// One drive of the old IDE driver: its directory under /proc/ide, and ioctls on its node.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "readers/storage/DeviceOpener.h"

namespace quenlor {

// The numbers of a "geometry" file's line "logical      1023/255/63", in the file's order; nothing
// when one of the three is missing.
struct IdeGeometry {
  unsigned long first = 0;
  unsigned long second = 0;
  unsigned long third = 0;
};
std::optional<IdeGeometry> parseLogicalGeometry(const std::string& line);

class ideinfo {
 public:
  // dir is a drive directory such as "/proc/ide/ide0/hda". Reads everything.
  explicit ideinfo(const char* dir);
  // The same for one of the drives of a collection.
  ideinfo(const char* dir, DeviceOpener& opener);

  // Last errno seen, -1 when dir names no device, 0 when all went well.
  int errorcode() const { return m_errorcode; }
  unsigned long numheads() const { return m_heads; }
  unsigned long numcylinders() const { return m_cylinders; }
  unsigned long numsectors() const { return m_sectors; }   // per track
  unsigned long sector_size() const { return 512; }        // bytes
  unsigned long totalsize() const { return m_totalsize; }  // kilobytes
  const char* model() const { return m_model.c_str(); }
  const char* manufacturer() const { return m_manufacturer.c_str(); }
  const char* serialnumber() const { return m_serialNumber.c_str(); }
  const char* type() const {
    return m_type.c_str();
  }                        // first line of "media", its newline included
  bool removable() const;  // a drive whose medium is no fixed disk
  bool mediapresent() const { return m_totalsize != 0; }
  // 1 security enabled, 0 supported but not enabled (and for CD-ROMs, which are not asked),
  // -1 unsupported or unknown.
  int security_enabled() const { return m_security; }
  // Name of the drive that the kernel counts after this one ("hdb" after "hda"); empty for none.
  std::string nextIDEdisk() const;

 private:
  void probe(DeviceOpener& opener);
  std::string firstLine(const char* file, size_t bufferSize);
  void readGeometry(DeviceOpener& opener);
  void askGeometry(DeviceOpener& opener);
  void readCapacity();
  void askDrive(DeviceOpener& opener);
  void askSerialNumber(int fd);
  void askSecurity(int fd);
  void readModel();
  Descriptor openDevice(DeviceOpener& opener);

  std::string m_dir;
  std::string m_name;  // "hda"; empty when dir has no last component
  int m_errorcode = 0;
  unsigned long m_totalsize = 0;
  unsigned long m_heads = 0;
  unsigned long m_cylinders = 0;
  unsigned long m_sectors = 0;
  std::string m_manufacturer;
  std::string m_model;
  std::string m_serialNumber;
  std::string m_type;
  int m_security = 0;
};

// Directories of all drives under /proc/ide, in the kernel's order.
std::vector<std::string> ideDriveDirectories();
// Writes their paths into the slots, as many as there are; the number written.
int determineIDEfilelist(char (*list)[255], size_t slots);
template <size_t Slots>
int determineIDEfilelist(char (&list)[Slots][255]) {
  return determineIDEfilelist(list, Slots);
}

}  // namespace quenlor
