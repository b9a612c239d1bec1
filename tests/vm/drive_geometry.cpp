// Prints what the kernel says about a drive, "cylinders heads sectors", for comparison with the
// scanner: HDIO_GETGEO of a disk, FDGETPRM of a floppy drive and its FDGETDRVTYP name.
#include <fcntl.h>
#include <linux/fd.h>
#include <linux/hdreg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
  const int fd = argc == 2 ? open(argv[1], O_RDONLY | O_NONBLOCK) : -1;
  if (fd < 0) {
    std::fprintf(stderr, "usage: drive-geometry device\n");
    return 2;
  }
  hd_geometry disk{};
  floppy_struct floppy{};
  floppy_drive_name name{};
  if (ioctl(fd, FDGETPRM, &floppy) == 0 && ioctl(fd, FDGETDRVTYP, name) == 0) {
    std::printf("%u %u %u %s\n", floppy.track, floppy.head, floppy.sect, name);
  } else if (ioctl(fd, HDIO_GETGEO, &disk) == 0) {
    std::printf("%u %u %u\n", disk.cylinders, disk.heads, disk.sectors);
  } else {
    std::perror(argv[1]);
    return 1;
  }
  close(fd);
  return 0;
}
