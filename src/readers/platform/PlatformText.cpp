// Parsers of what the kernel shows of firmware variables and of a TPM.
#include <charconv>
#include <cstdint>

#include "readers/platform/Platform.h"

namespace quenlor {
namespace {

constexpr size_t kAttributeBytes = 4;
constexpr std::string_view kMakerLabel = "Manufacturer: 0x";

// The characters of a number, most significant byte first, up to the first NUL.
std::string charactersOf(uint32_t number) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const char c = static_cast<char>(number >> shift & 0xFF);
    if (c == '\0') break;
    text += c;
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

std::optional<bool> parseEfiFlag(std::string_view bytes) {
  if (bytes.size() != kAttributeBytes + 1) return {};
  const char value = bytes[kAttributeBytes];
  return value == 0 || value == 1 ? std::optional(value == 1) : std::nullopt;
}

std::optional<bool> isSecureBoot(std::optional<bool> secureBoot, std::optional<bool> setupMode) {
  if (!secureBoot) return {};
  if (!*secureBoot) return false;
  return setupMode ? std::optional(!*setupMode) : std::nullopt;
}

std::optional<std::string> parseTpmCapsMaker(std::string_view caps) {
  const size_t start = caps.find(kMakerLabel);
  if (start == caps.npos) return {};
  const std::string_view digits = caps.substr(start + kMakerLabel.size());
  uint32_t number = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (parsed.ec != std::errc()) return {};
  const std::string text = charactersOf(number);
  return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace quenlor
