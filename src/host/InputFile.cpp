#include "host/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// What a stream reads: bytes that are here already, then the rest of a file.
class Source {
 public:
  Source(Descriptor file, std::string bytes) : m_file(std::move(file)), m_bytes(std::move(bytes)) {}

  ssize_t read(char* buffer, size_t size) {
    if (m_file) return host().read(m_file.get(), buffer, size);
    const size_t count = m_bytes.copy(buffer, size, m_position);
    m_position += count;
    return static_cast<ssize_t>(count);
  }

 private:
  Descriptor m_file;
  std::string m_bytes;
  size_t m_position = 0;
};

FileStream streamOver(Descriptor file, std::string bytes) {
  auto source = std::make_unique<Source>(std::move(file), std::move(bytes));
  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, size_t size) {
    return static_cast<Source*>(cookie)->read(buffer, size);
  };
  functions.close = [](void* cookie) {
    delete static_cast<Source*>(cookie);
    return 0;
  };
  FileStream stream(::fopencookie(source.get(), "r", functions));
  if (stream) static_cast<void>(source.release());  // the stream's now
  return stream;
}

// Waits until there is something to read, or the pipe has ended. False when the time is over.
bool waitForMore(int pipe, Clock::time_point end) {
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
  if (left <= 0) return false;
  pollfd event{pipe, POLLIN, 0};
  ::poll(&event, 1, static_cast<int>(left));
  return true;
}

// All that is written to a pipe opened without blocking; 0, or the reason why it is refused. The
// end is told by a read of 0 bytes, at once where nobody has the pipe open for writing.
int readPipe(int pipe, const PipeLimits& limits, std::string& bytes) {
  const auto end = Clock::now() + limits.time;
  std::array<char, 65536> piece;
  for (;;) {
    const ssize_t count = host().read(pipe, piece.data(), piece.size());
    if (count == 0) return bytes.empty() ? ENXIO : 0;
    if (count > 0) bytes.append(piece.data(), static_cast<size_t>(count));
    if (bytes.size() > limits.bytes) return EFBIG;
    if (count < 0 && errno != EAGAIN && errno != EINTR) return errno;
    if (!waitForMore(pipe, end)) return ETIMEDOUT;
  }
}

}  // namespace

FileStream openInputFile(const char* path, const PipeLimits& limits) {
  Descriptor file(host().open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY, 0));
  struct stat facts {};
  if (!file || host().fstat(file.get(), &facts) != 0) return nullptr;
  if (S_ISREG(facts.st_mode)) return streamOver(std::move(file), {});
  std::string bytes;
  const int refused = S_ISFIFO(facts.st_mode) ? readPipe(file.get(), limits, bytes) : EINVAL;
  if (refused == 0) return streamOver({}, std::move(bytes));
  errno = refused;
  return nullptr;
}

}  // namespace quenlor
