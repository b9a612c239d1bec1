// Owned firmware bytes between zero-filled guards.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// Lengths, offsets and string ends in firmware are wrong often enough that every walk must be able
// to leave its table: whatever lies outside reads as zero, so strings end and string sets are empty
// there.
class TableBytes {
 public:
  static constexpr int kGuardBefore = 3;   // the walk's trace looks at the bytes before a structure
  static constexpr int kGuardAfter = 512;  // the longest structure and its string set's end
  static constexpr int kMaxSize = 16 << 20;

  TableBytes() : TableBytes(0) {}
  // Zeros; a negative size is 0, a larger one kMaxSize.
  explicit TableBytes(int size);

  int size() const { return m_size; }
  unsigned char* data() { return m_storage.data() + kGuardBefore; }
  const unsigned char* data() const { return m_storage.data() + kGuardBefore; }

  // The byte at an offset; 0 outside.
  unsigned char operator[](int offset) const {
    const int64_t index = int64_t{offset} + kGuardBefore;
    if (index < 0 || index >= static_cast<int64_t>(m_storage.size())) return 0;
    return m_storage[static_cast<size_t>(index)];
  }

  // The zero-terminated text at an offset, terminator excluded; empty outside.
  std::string_view textAt(int offset) const;

 private:
  int m_size;
  std::vector<unsigned char> m_storage;
};

// Little-endian fields of firmware structures. Bytes outside the buffer count as 0.
class IntelByteBuffer {
 public:
  static uint8_t readUCHAR(const TableBytes& buf, int off) { return buf[off]; }
  static uint16_t readUSHORT(const TableBytes& buf, int off);
  static uint32_t readULONG(const TableBytes& buf, int off);
  // Copies the zero-terminated text at off.
  static void readASCIIZ(const TableBytes& buf, int off, std::string& out);
  // Length of a text with its terminator.
  static int getASCIIZLength(const std::string& text) { return static_cast<int>(text.size()) + 1; }
  static void readCHARArray(const TableBytes& buf, int off, unsigned char* out, int n);
};

}  // namespace quenlor
