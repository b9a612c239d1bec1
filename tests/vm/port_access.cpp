// Executes a command with access to the I/O ports, so that a hypervisor's port can answer it.
// The privilege level survives execve(2).
#include <sys/io.h>
#include <unistd.h>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: port-access command [argument ...]\n");
    return 2;
  }
  if (iopl(3) != 0) {
    std::perror("iopl");
    return 1;
  }
  execvp(argv[1], argv + 1);
  std::perror(argv[1]);
  return 127;
}
