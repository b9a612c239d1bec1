// What an entry of the mount table is, judged by its three texts alone.
#pragma once

#include <cstdint>

namespace quenlor {

// Code of a file-system type by its exact name: the partition-table byte where there is one, from
// 258 up the inventory's own numbers; 65535 for any other name.
uint32_t get_fstype_enum(const char* name);

// True for the types of partitions on local disks, by exact name.
bool ValidPartitionFileSys(const char* name);

// True for "nfs", "afs" and "smbfs", by exact name.
bool isRemote(const char* fstype);

// True unless the type is known to need nobody else's machine or program for an answer.
bool mayHang(const char* fstype);

// True for the mount point of an automounter.
bool isAutomountPoint(const char* fstype);

// Code of "Media Type": 4 network, 5 CD, 2 floppy, 3 fixed disk, 0 unknown. device is the device as
// reported, "remote" for remote file systems.
uint32_t getMediaType(const char* fstype, const char* device);

// True for what the kernel and automounters mount for themselves: no row is made of it.
bool isLeftOutMount(const char* device, const char* mountDir, const char* fstype);

}  // namespace quenlor
