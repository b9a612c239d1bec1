// Files, pipes and bytes in memory.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "quenlorctl/input/ByteSource.h"

namespace quenlor::ctl {
namespace {

class FileSource : public ByteSource {
 public:
  FileSource(int descriptor, bool isOwned) : m_descriptor(descriptor), m_isOwned(isOwned) {}
  ~FileSource() override {
    if (m_isOwned) ::close(m_descriptor);
  }

  size_t read(char* buffer, size_t size) override {
    for (;;) {
      const ssize_t count = ::read(m_descriptor, buffer, size);
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR) throw InputError(std::strerror(errno));
    }
  }

 private:
  int m_descriptor;
  bool m_isOwned;
};

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : m_bytes(bytes) {}

  size_t read(char* buffer, size_t size) override {
    const size_t count = m_bytes.copy(buffer, size);
    m_bytes.remove_prefix(count);
    return count;
  }

 private:
  std::string_view m_bytes;
};

}  // namespace

std::unique_ptr<ByteSource> openFile(const std::string& name) {
  if (name == "-") return std::make_unique<FileSource>(STDIN_FILENO, false);
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) throw InputError(std::strerror(errno));
  return std::make_unique<FileSource>(descriptor, true);
}

std::unique_ptr<ByteSource> bytesOf(std::string_view bytes) {
  return std::make_unique<MemorySource>(bytes);
}

}  // namespace quenlor::ctl
