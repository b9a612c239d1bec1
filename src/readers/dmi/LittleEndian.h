// Little-endian numbers in bytes of firmware, each with its bound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quenlor {

// The number at an offset; nothing unless all of it lies within the bytes.
template <class Number>
std::optional<Number> littleEndian(std::string_view bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(Number)) return std::nullopt;
  uint64_t value = 0;
  for (size_t i = sizeof(Number); i-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
  }
  return static_cast<Number>(value);
}

}  // namespace quenlor
