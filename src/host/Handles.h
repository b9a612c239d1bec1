// Owners of what Host hands out: streams, command streams and descriptors.
#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/Host.h"
#include "host/ScanState.h"

namespace quenlor {

struct StreamCloser {
  void operator()(FILE* stream) const {
    if (stream == nullptr) return;
    std::fclose(stream);
    countProgress();
  }
};

// A file opened for reading or writing; false when it could not be opened.
using FileStream = std::unique_ptr<FILE, StreamCloser>;

// Opens a file through the host. Null, with errno, when that fails.
inline FileStream openFile(const char* path, const char* mode = "r") {
  return FileStream(host().fopen(path, mode));
}

// Output of one command. The child is reaped at the latest by the destructor.
class CommandStream {
 public:
  explicit CommandStream(const char* commandLine) : m_stream(host().popen(commandLine)) {}
  CommandStream(const char* path, const std::vector<std::string>& arguments)
      : m_stream(host().startProgram(path, arguments)) {}
  ~CommandStream() { close(); }
  CommandStream(const CommandStream&) = delete;
  CommandStream& operator=(const CommandStream&) = delete;

  // True when the command could be started.
  explicit operator bool() const { return m_stream != nullptr; }
  FILE* get() const { return m_stream; }

  // What is wanted has been read: the command may take so much longer to end.
  void endWithin(std::chrono::milliseconds rest) { host().limitCommand(m_stream, rest); }

  // Reaps the child; its wait status, or -1 when the stream was never open or is closed already.
  int close() {
    FILE* stream = std::exchange(m_stream, nullptr);
    return stream == nullptr ? -1 : host().pclose(stream);
  }

 private:
  FILE* m_stream;
};

// An open descriptor, closed through the host.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : m_fd(fd) {}
  Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~Descriptor() {
    if (m_fd < 0) return;
    host().close(m_fd);
    countProgress();
  }

  explicit operator bool() const { return m_fd >= 0; }
  int get() const { return m_fd; }

 private:
  int m_fd = -1;
};

}  // namespace quenlor
