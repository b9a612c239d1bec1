// What a monitor says of itself. Source: VESA E-EDID Standard, EDID structures 1.3 and 1.4.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quenlor {

struct DisplayMode {
  uint32_t width = 0;   // pixels
  uint32_t height = 0;  // lines of a whole picture
};

// The base block of an EDID. Texts are UTF-8; empty: not told.
struct Edid {
  std::string manufacturer;  // three letters
  std::string model;
  std::string serialNumber;  // the text, else the number
  std::optional<uint32_t> year;
  std::optional<uint32_t> week;    // of manufacture; nothing where the year is the model's
  std::optional<uint32_t> width;   // mm; nothing for projectors and where only a ratio is told
  std::optional<uint32_t> height;  // mm
  std::optional<DisplayMode> preferredMode;
};

// Nothing unless the bytes begin with a whole base block of version 1 whose sum is right. Extension
// blocks behind it, whole or cut, are not read.
std::optional<Edid> parseEdid(std::string_view bytes);

// Text of code page 437 as UTF-8.
std::string utf8OfCodePage437(std::string_view text);

}  // namespace quenlor
