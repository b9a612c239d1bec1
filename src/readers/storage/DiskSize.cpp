#include "readers/storage/DiskSize.h"

#include <linux/fs.h>

#include <cstdint>

#include "host/Host.h"

namespace quenlor {

int disk_size(int fd, unsigned long long* sectors) {
  uint64_t bytes = 0;
  if (host().ioctl(fd, BLKGETSIZE64, &bytes) == 0) {
    *sectors = bytes / 512;
    return 1;
  }
  unsigned long count = 0;  // BLKGETSIZE writes a long, 8 bytes here, whatever its name suggests
  if (host().ioctl(fd, BLKGETSIZE, &count) != 0) return 0;
  *sectors = count;
  return 1;
}

unsigned long long get_megabytes(unsigned long long sectors) { return sectors << 9 >> 20; }

}  // namespace quenlor
