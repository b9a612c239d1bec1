// Base blocks of EDIDs, made of their parts.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace quenlor::test {

// A block of version 1.4 that is filled in by offset, with the right sum at the end.
class EdidBytes {
 public:
  EdidBytes() {
    set(0, std::string("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8));
    set(18, "\x01\x04");
  }

  EdidBytes& set(size_t offset, const std::string& bytes) {
    m_bytes.replace(offset, bytes.size(), bytes);
    return *this;
  }

  EdidBytes& byte(size_t offset, uint8_t value) {
    m_bytes[offset] = static_cast<char>(value);
    return *this;
  }

  // Three capitals.
  EdidBytes& manufacturer(const char* letters) {
    const auto bits = [&](int i) { return static_cast<unsigned>(letters[i] - 'A' + 1); };
    const unsigned word = bits(0) << 10 | bits(1) << 5 | bits(2);
    return byte(8, static_cast<uint8_t>(word >> 8)).byte(9, static_cast<uint8_t>(word));
  }

  // One of the four descriptors, from 0, as a text of the tag.
  EdidBytes& text(size_t descriptor, uint8_t tag, std::string content) {
    if (content.size() < 13) content += '\n';
    content.resize(13, ' ');
    const std::string head{'\0', '\0', '\0', static_cast<char>(tag), '\0'};
    return set(54 + 18 * descriptor, head + content);
  }

  // The first descriptor as a timing with a picture of a size in mm.
  EdidBytes& timing(unsigned width, unsigned height, unsigned widthMm = 0, unsigned heightMm = 0) {
    const auto low = [](unsigned n) { return static_cast<char>(n); };
    const auto high = [](unsigned left, unsigned right) {
      return static_cast<char>((left >> 8) << 4 | right >> 8);
    };
    std::string bytes(18, '\0');
    bytes[0] = 1;
    bytes[2] = low(width);
    bytes[4] = high(width, 0);
    bytes[5] = low(height);
    bytes[7] = high(height, 0);
    bytes[12] = low(widthMm);
    bytes[13] = low(heightMm);
    bytes[14] = high(widthMm, heightMm);
    return set(54, bytes);
  }

  std::string bytes() const {
    std::string block = m_bytes;
    unsigned sum = 0;
    for (size_t i = 0; i < 127; ++i) sum += static_cast<uint8_t>(block[i]);
    block[127] = static_cast<char>(256 - sum % 256);
    return block;
  }

 private:
  std::string m_bytes = std::string(128, '\0');
};

}  // namespace quenlor::test
