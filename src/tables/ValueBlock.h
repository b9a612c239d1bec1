// Reading of value blocks: length, attribute id and type code (32 bits each, host byte order), then
// the value. A block's 8-byte values are not aligned, so everything is copied out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace quenlor {

inline constexpr size_t kBlockHeaderSize = 12;
inline constexpr size_t kDateTimeSize = 26;

// A number at any address.
template <class Number>
Number readNumber(const unsigned char* from) {
  static_assert(std::is_trivially_copyable_v<Number>);
  Number number;
  std::memcpy(&number, from, sizeof number);
  return number;
}

inline uint32_t blockLength(const unsigned char* block) { return readNumber<uint32_t>(block); }
inline uint32_t blockAttribId(const unsigned char* block) {
  return readNumber<uint32_t>(block + 4);
}
inline uint32_t blockType(const unsigned char* block) { return readNumber<uint32_t>(block + 8); }

// The value behind the header: a number, or count and contents of a string.
inline const unsigned char* blockValue(const unsigned char* block) {
  return block + kBlockHeaderSize;
}

// A string value: its count of characters (32 bits), then as many of wchar_t.
inline std::wstring readText(const unsigned char* velString) {
  const auto count = readNumber<uint32_t>(velString);
  std::wstring text(count, L'\0');
  std::memcpy(text.data(), velString + sizeof count, count * sizeof(wchar_t));
  return text;
}

}  // namespace quenlor
