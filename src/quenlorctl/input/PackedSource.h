// What the expanding sources share: a buffer of packed bytes, and the limit of what they become.
#pragma once

#include <array>
#include <memory>
#include <utility>

#include "quenlorctl/input/ByteSource.h"

namespace quenlor::ctl {

class PackedSource : public ByteSource {
 public:
  explicit PackedSource(std::unique_ptr<ByteSource> packed) : m_packed(std::move(packed)) {}

 protected:
  static constexpr size_t kBufferSize = 32768;

  // Refills the buffer, which has been used up; its number of bytes, 0 at the end.
  size_t refill() {
    const size_t count = m_packed->read(m_buffer.data(), m_buffer.size());
    m_packedBytes += count;
    return count;
  }

  char* buffer() { return m_buffer.data(); }

  // Counts what was expanded; throws InputError when it is too much for what was read.
  size_t counted(size_t expanded) {
    m_expandedBytes += expanded;
    if (m_expandedBytes > kRatioCountsFrom && m_expandedBytes / kRatioLimit > m_packedBytes) {
      throw InputError("expands to more than " + std::to_string(kRatioLimit) + " times its size");
    }
    return expanded;
  }

 private:
  std::unique_ptr<ByteSource> m_packed;
  std::array<char, kBufferSize> m_buffer{};
  size_t m_packedBytes = 0;
  size_t m_expandedBytes = 0;
};

}  // namespace quenlor::ctl
