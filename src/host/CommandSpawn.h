// Programs that are started for their output, and the descriptors that they get.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quenlor {

class OwnedDescriptor {
 public:
  explicit OwnedDescriptor(int fd = -1) : m_fd(fd) {}
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~OwnedDescriptor() {
    if (m_fd >= 0) ::close(m_fd);
  }
  int get() const { return m_fd; }

 private:
  int m_fd;
};

struct Pipe {
  OwnedDescriptor readEnd;
  OwnedDescriptor writeEnd;
};

// Both ends close-on-exec; no value, with errno, when there are no descriptors left.
std::optional<Pipe> makePipe();

// Something that reads as empty.
OwnedDescriptor openNoInput();

// Where commands complain: on most machines some of them are missing, and what their shell says of
// it would bury the scanner's own messages. Without /dev/null the complaints stay on our standard
// error.
OwnedDescriptor openNoErrors();

// A program by its path, and its arguments from its name on.
struct ProgramCall {
  std::string path;
  std::vector<std::string> arguments;
};

// The shell with a command line.
ProgramCall shellCall(const char* commandLine);

// Starts the program, without a shell of our own, in a process group of its own, named after it,
// with LC_ALL=C and default signals. errors may be -1: ours. 0, or the error number.
int spawnProgram(const ProgramCall& call, int input, int output, int errors, pid_t* pid);

}  // namespace quenlor
