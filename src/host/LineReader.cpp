#include "host/LineReader.h"

#include <algorithm>
#include <cctype>
#include <climits>

namespace quenlor {

LineReader::LineReader(FILE* stream, size_t bufferSize)
    : m_stream(stream), m_buffer(std::clamp<size_t>(bufferSize, 2, INT_MAX), '\0') {}

bool LineReader::next() {
  if (m_stream == nullptr) return false;
  return std::fgets(m_buffer.data(), static_cast<int>(m_buffer.size()), m_stream) != nullptr;
}

void LineReader::cutTrailingControl() {
  const size_t length = std::char_traits<char>::length(m_buffer.c_str());
  if (length == 0) return;
  const auto last = static_cast<unsigned char>(m_buffer[length - 1]);
  if (last < 0x20 || last == 0x7F) m_buffer[length - 1] = '\0';
}

}  // namespace quenlor
