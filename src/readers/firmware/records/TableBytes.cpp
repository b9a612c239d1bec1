#include "readers/firmware/records/TableBytes.h"

#include <algorithm>
#include <cstring>

namespace quenlor {

TableBytes::TableBytes(int size)
    : m_size(std::clamp(size, 0, kMaxSize)),
      m_storage(static_cast<size_t>(kGuardBefore + m_size + kGuardAfter)) {}

std::string_view TableBytes::textAt(int offset) const {
  if ((*this)[offset] == 0) return {};
  const unsigned char* text = data() + offset;
  const unsigned char* end = std::find(text, data() + m_size, 0);
  return {reinterpret_cast<const char*>(text), static_cast<size_t>(end - text)};
}

uint16_t IntelByteBuffer::readUSHORT(const TableBytes& buf, int off) {
  return static_cast<uint16_t>(buf[off] | buf[off + 1] << 8);
}

uint32_t IntelByteBuffer::readULONG(const TableBytes& buf, int off) {
  return readUSHORT(buf, off) | static_cast<uint32_t>(readUSHORT(buf, off + 2)) << 16;
}

void IntelByteBuffer::readASCIIZ(const TableBytes& buf, int off, std::string& out) {
  out = buf.textAt(off);
}

void IntelByteBuffer::readCHARArray(const TableBytes& buf, int off, unsigned char* out, int n) {
  for (int i = 0; i < n; ++i) out[i] = buf[off + i];
}

}  // namespace quenlor
