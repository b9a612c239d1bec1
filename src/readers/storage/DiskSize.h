// Sizes of block devices.
#pragma once

namespace quenlor {

// Sectors of 512 bytes of the open block device (ioctls BLKGETSIZE64, else BLKGETSIZE) into
// sectors: 1; 0, with sectors untouched, when the kernel tells neither.
int disk_size(int fd, unsigned long long* sectors);

// Sectors of 512 bytes to whole megabytes (2^20 bytes).
unsigned long long get_megabytes(unsigned long long sectors);

}  // namespace quenlor
