// Writes a named firmware image to a file: physical memory, for use as a machine's /dev/mem, or
// with
// --dump what `dmidecode --from-dump` reads.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "tests/firmware/Images.h"

namespace quenlor::test {
namespace {

constexpr size_t kPage = 4096;

int usage() {
  std::fprintf(stderr,
               "usage: make_firmware [--dump] <image-name> <output-file>\n"
               "       make_firmware --list\n");
  return 1;
}

int listImages() {
  for (const std::string& name : firmwareNames()) std::printf("%s\n", name.c_str());
  return 0;
}

// Pages of zeros become holes: an image is mostly empty.
bool writeSparse(int fd, const std::string& bytes) {
  for (size_t at = 0; at < bytes.size(); at += kPage) {
    const std::string page = bytes.substr(at, kPage);
    if (page.find_first_not_of('\0') == page.npos) continue;
    if (pwrite(fd, page.data(), page.size(), static_cast<off_t>(at)) !=
        static_cast<ssize_t>(page.size())) {
      return false;
    }
  }
  return ftruncate(fd, static_cast<off_t>(bytes.size())) == 0;
}

int writeFile(const char* path, const std::string& bytes) {
  const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  const bool written = fd >= 0 && writeSparse(fd, bytes);
  if (fd < 0 || close(fd) != 0 || !written) {
    std::perror(path);
    return 1;
  }
  return 0;
}

int run(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) return listImages();
  const bool asDump = argc == 4 && std::strcmp(argv[1], "--dump") == 0;
  if (argc != 3 && !asDump) return usage();
  const std::optional<Firmware> firmware = firmwareNamed(argv[argc - 2]);
  if (!firmware) {
    std::fprintf(stderr, "make_firmware: no image named %s\n", argv[argc - 2]);
    return usage();
  }
  return writeFile(argv[argc - 1], asDump ? firmware->dump() : firmware->memory());
}

}  // namespace
}  // namespace quenlor::test

int main(int argc, char** argv) { return quenlor::test::run(argc, argv); }
