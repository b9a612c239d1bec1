// Geometry and size of a disk as "/sbin/fdisk -l" prints them. Three forms of its text are known:
//   A (util-linux up to 2.11): "Disk /dev/hda: 255 heads, 63 sectors, 2434 cylinders", then a line
//     "Units = cylinders of 16065 * 512 bytes" whose product, times the cylinders, is the size;
//   B (2.12 to 2.2x): "Disk /dev/hda: 36.4 GB, 36414750720 bytes", the geometry on the next line;
//   C (2.26 and later): "Disk /dev/sda: 20 GiB, 21474836480 bytes, 41943040 sectors", no geometry.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quenlor {

struct FdiskDisk {
  unsigned long cylinders = 0;
  unsigned long heads = 0;
  unsigned long sectors = 0;  // per track
  unsigned long totalKilobytes = 0;
};

// The disk of that name in a listing; nothing when no line names it followed by a colon, as
// "/dev/sda" also stands in "/dev/sdaa". Numbers that the listing lacks are 0.
std::optional<FdiskDisk> parseFdiskListing(const std::vector<std::string>& lines,
                                           const std::string& device);

// Each runs fdisk and fills the outputs (the size in kilobytes): 1; 0, with the outputs untouched,
// when the listing has no such disk.
//
// For a device path; a generic SCSI node stands for its disk.
int getFromFdisk(const char* device, unsigned long* cylinders, unsigned long* heads,
                 unsigned long* sectors, unsigned long* totalKilobytes);
// For a name relative to /dev, as files under /proc give it ("cciss/c0d0").
int getFromFdisk2(const char* device, unsigned long* cylinders, unsigned long* heads,
                  unsigned long* sectors, unsigned long* totalKilobytes);
// For a disk whose name was cut from a line of the mount command.
int getFromFdiskMount(const char* device, unsigned long* cylinders, unsigned long* heads,
                      unsigned long* sectors, unsigned long* totalKilobytes);

}  // namespace quenlor
