// Standard INQUIRY data (SPC-3, 6.4.2): offsets and bounded reading. Sense data (SPC-3, 4.5).
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>

namespace quenlor {

inline constexpr size_t kVendorOffset = 8;
inline constexpr size_t kVendorLength = 8;
inline constexpr size_t kProductOffset = 16;
inline constexpr size_t kProductLength = 16;
inline constexpr size_t kRevisionOffset = 32;
inline constexpr size_t kRevisionLength = 4;
inline constexpr size_t kSerialOffset = 36;  // vendor-specific; many makers put the number here
inline constexpr size_t kSerialLength = 20;

// Qualifiers 1 (nothing connected at present) and 3 (no device possible): no device is there.
inline bool peripheralSaysNoDevice(unsigned char firstByte) {
  const int qualifier = firstByte >> 5;
  return qualifier == 1 || qualifier == 3;
}

// The command succeeded, with help. Drives that expect to fail soon may say so with every command,
// beside a CHECK CONDITION, and send their data all the same.
inline constexpr int kRecoveredError = 1;
inline constexpr int kUnitAttention = 6;

// 0 without valid sense data. Response codes 0x72 and 0x73 have the key in byte 1.
inline int senseKeyOf(const unsigned char* sense) {
  const int responseCode = sense[0] & 0x7F;
  if (responseCode == 0x70 || responseCode == 0x71) return sense[2] & 0x0F;
  if (responseCode == 0x72 || responseCode == 0x73) return sense[1] & 0x0F;
  return 0;
}

struct InquiryData {
  std::array<unsigned char, 256> bytes{};
  size_t length = 0;  // bytes that the device sent

  bool saysNoDevice() const { return peripheralSaysNoDevice(bytes[0]); }

  // Text of a field up to its first NUL byte, within what was sent. Behind the 36 bytes that every
  // device has, byte 4 (the additional length) must announce it too.
  std::string text(size_t offset, size_t width) const {
    const size_t announced = std::max(kSerialOffset, size_t{bytes[4]} + 5);
    const size_t end = std::min({offset + width, length, announced, bytes.size()});
    if (offset >= end) return "";
    const auto* field = reinterpret_cast<const char*>(bytes.data() + offset);
    return std::string(field, ::strnlen(field, end - offset));
  }
};

}  // namespace quenlor
