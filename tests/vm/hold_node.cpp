// Opens a device node for itself alone, says "held", and holds it for the given number of seconds.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[]) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: hold_node NODE SECONDS\n");
    return 2;
  }
  if (::open(argv[1], O_RDWR | O_EXCL | O_CLOEXEC) < 0) {
    std::perror(argv[1]);
    return 1;
  }
  std::puts("held");
  std::fflush(stdout);
  ::sleep(static_cast<unsigned>(std::atoi(argv[2])));
  return 0;
}
