#include "readers/block/VpdPages.h"

#include <algorithm>
#include <iterator>

#include "base/Text.h"
#include "identity/UuidText.h"

namespace quenlor {
namespace {

constexpr size_t kHeader = 4;
constexpr size_t kIdentifyOffset = 60;
constexpr size_t kIdentifyBytes = 512;
constexpr std::string_view kHexDigits = "0123456789abcdef";

uint8_t byteAt(std::string_view bytes, size_t offset) {
  return offset < bytes.size() ? static_cast<uint8_t>(bytes[offset]) : uint8_t{0};
}

uint16_t bigEndian16(std::string_view bytes, size_t offset) {
  return static_cast<uint16_t>(byteAt(bytes, offset) << 8 | byteAt(bytes, offset + 1));
}

// What follows the header, as far as the page says and the kernel gave it; empty for another page.
std::string_view pageBody(std::string_view page, uint8_t code) {
  if (page.size() < kHeader || byteAt(page, 1) != code) return {};
  return page.substr(kHeader, bigEndian16(page, 2));
}

// Without what drives pad their texts with: blanks and NUL bytes.
std::string padded(std::string_view text) {
  constexpr std::string_view kPadding(" \t\r\n\0", 5);
  const size_t first = text.find_first_not_of(kPadding);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(kPadding) - first + 1));
}

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += kHexDigits[static_cast<uint8_t>(byte) >> 4];
    text += kHexDigits[static_cast<uint8_t>(byte) & 15];
  }
  return text;
}

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

Rotation rotationOf(uint16_t rate) {
  if (rate == 1) return Rotation::kSolidState;
  return rate > 0x400 && rate < 0xFFFF ? Rotation::kSpinning : Rotation::kNotTold;
}

// --- page 83 ---

enum DesignatorType : uint8_t { kT10 = 1, kEui = 2, kNaa = 3, kNameString = 8, kUuid = 10 };

struct Designator {
  uint8_t type = 0;
  std::string_view value;
};

// The longer an identifier, the less likely two makers gave the same: the order in which the kernel
// chooses too. Length 0: any.
struct Preference {
  uint8_t type;
  size_t length;
};
constexpr Preference PREFERENCES[] = {
    {kNaa, 16}, {kEui, 16},  {kEui, 12},       {kNaa, 8},
    {kEui, 8},  {kUuid, 18}, {kNameString, 0}, {kT10, 0},
};

// Smaller is better; the table's size for what is no identifier.
size_t rankOf(const Designator& designator) {
  const auto* found = std::find_if(
      std::begin(PREFERENCES), std::end(PREFERENCES), [&](const Preference& preference) {
        return preference.type == designator.type &&
               (preference.length == 0 || preference.length == designator.value.size());
      });
  return static_cast<size_t>(found - std::begin(PREFERENCES));
}

std::string nameOf(const Designator& designator) {
  switch (designator.type) {
    case kNaa:
      return worldWideName("naa." + hex(designator.value));
    case kEui:
      return worldWideName("eui." + hex(designator.value));
    case kUuid:
      return worldWideName("uuid." + uuidOfDigits(hex(designator.value.substr(2))));
    case kT10:
      return worldWideName("t10." + padded(designator.value));
    default:
      return worldWideName(padded(designator.value));
  }
}

// Takes the next descriptor off the body; the body is empty behind one that is cut off.
Designator takeDesignator(std::string_view& body) {
  const bool isOfUnit = (byteAt(body, 1) & 0x30) == 0;
  const auto type = static_cast<uint8_t>(byteAt(body, 1) & 0x0F);
  const size_t length = byteAt(body, 3);
  const bool isWhole = body.size() >= kHeader + length && length > 0;
  const Designator designator{isOfUnit && isWhole ? type : uint8_t{0},
                              body.substr(std::min(kHeader, body.size()), length)};
  body.remove_prefix(std::min(kHeader + length, body.size()));
  return designator;
}

// --- page 89 ---

uint16_t wordOf(std::string_view identify, size_t index) {
  return static_cast<uint16_t>(byteAt(identify, 2 * index) | byteAt(identify, 2 * index + 1) << 8);
}

// Words hold two characters each, the first one in the upper byte.
std::string textOfWords(std::string_view identify, size_t first, size_t last) {
  std::string text;
  for (size_t index = first; index <= last; ++index) {
    text += static_cast<char>(wordOf(identify, index) >> 8);
    text += static_cast<char>(wordOf(identify, index) & 0xFF);
  }
  return padded(text);
}

std::string nameOfWords(std::string_view identify) {
  std::string bytes;
  for (size_t index = 108; index <= 111; ++index) {
    bytes += static_cast<char>(wordOf(identify, index) >> 8);
    bytes += static_cast<char>(wordOf(identify, index) & 0xFF);
  }
  const bool isRegistered = byteAt(bytes, 0) >> 4 == 5;
  return isRegistered ? worldWideName("naa." + hex(bytes)) : std::string();
}

bool isTold(uint16_t word) { return word != 0 && word != 0xFFFF; }

bool isAllZeros(std::string_view digits) {
  return digits.find_first_not_of("0-") == std::string_view::npos;
}

}  // namespace

std::string parseUnitSerial(std::string_view page) { return padded(pageBody(page, 0x80)); }

std::string parseIdentification(std::string_view page) {
  std::string_view body = pageBody(page, 0x83);
  size_t best = std::size(PREFERENCES);
  std::string name;
  while (!body.empty()) {
    const Designator designator = takeDesignator(body);
    const size_t rank = rankOf(designator);
    if (rank >= best) continue;
    std::string candidate = nameOf(designator);
    if (candidate.empty()) continue;
    best = rank;
    name = std::move(candidate);
  }
  return name;
}

std::optional<AtaIdentity> parseAtaInformation(std::string_view page) {
  if (byteAt(page, 1) != 0x89 || page.size() < kIdentifyOffset + kIdentifyBytes) return {};
  const std::string_view words = page.substr(kIdentifyOffset, kIdentifyBytes);
  const uint16_t security = isTold(wordOf(words, 128)) ? wordOf(words, 128) : uint16_t{0};
  AtaIdentity identity;
  identity.serial = textOfWords(words, 10, 19);
  identity.firmware = textOfWords(words, 23, 26);
  identity.model = textOfWords(words, 27, 46);
  identity.worldWideName = nameOfWords(words);
  identity.rotation = rotationOf(wordOf(words, 217));
  identity.isSerialAta = isTold(wordOf(words, 76));
  identity.hasSecurity = (security & 1) != 0;
  identity.isSecurityEnabled = (security & 3) == 3;
  return identity;
}

Rotation parseRotation(std::string_view page) {
  const std::string_view body = pageBody(page, 0xB1);
  return body.size() < 2 ? Rotation::kNotTold : rotationOf(bigEndian16(body, 0));
}

std::string worldWideName(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with("0x")) return worldWideName("naa." + std::string(text.substr(2)));
  if (text.starts_with("t10.")) return trimmed(text.substr(4)).empty() ? "" : std::string(text);
  for (const std::string_view prefix : {"naa.", "eui.", "uuid."}) {
    if (!text.starts_with(prefix)) continue;
    const std::string digits = lowered(text.substr(prefix.size()));
    const bool isNumber = digits.find_first_not_of("0123456789abcdef-") == std::string::npos;
    return isNumber && !isAllZeros(digits) ? std::string(prefix) + digits : std::string();
  }
  return {};
}

}  // namespace quenlor
