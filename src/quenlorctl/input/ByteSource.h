// Bytes that are read once, from the start to the end, whatever they come from.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quenlor::ctl {

// What cannot be read: the text says why, without the name of the file.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class ByteSource {
 public:
  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  virtual ~ByteSource() = default;

  // Fills the buffer with 1 to `size` bytes and returns their number; 0 at the end. Throws
  // InputError.
  virtual size_t read(char* buffer, size_t size) = 0;
};

// A file or a pipe; "-" is standard input. Throws InputError when it cannot be opened.
std::unique_ptr<ByteSource> openFile(const std::string& name);

// Bytes in memory, which stay the caller's.
std::unique_ptr<ByteSource> bytesOf(std::string_view bytes);

// What an input may cost: so much of it expanded for each byte read once it is longer than that.
inline constexpr size_t kRatioLimit = 200;
inline constexpr size_t kRatioCountsFrom = size_t{16} << 20;

// Expanded, which throw InputError when the input is damaged, cut off or a bomb: RFC 1952 members
// one after another, RFC 8878 frames one after another.
std::unique_ptr<ByteSource> gunzip(std::unique_ptr<ByteSource> packed);
std::unique_ptr<ByteSource> unzstd(std::unique_ptr<ByteSource> packed);

}  // namespace quenlor::ctl
