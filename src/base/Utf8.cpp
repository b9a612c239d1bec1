#include "base/Utf8.h"

#include <algorithm>
#include <cstdint>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr char kBlanks[] = " \t\r\n\v\f";

// Lead bytes of sequences of more than one, by length: their fixed bits, and the smallest code
// point that needs them.
struct Sequence {
  size_t length;
  uint32_t smallest;
  uint8_t mask;
  uint8_t lead;
};

constexpr Sequence kSequences[] = {
    {2, 0x80, 0xE0, 0xC0}, {3, 0x800, 0xF0, 0xE0}, {4, 0x10000, 0xF8, 0xF0}};

bool isCodePoint(uint32_t value, uint32_t smallest) {
  return value >= smallest && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

bool isControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

std::string_view withoutBlanks(std::string_view bytes) {
  const size_t first = bytes.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return bytes.substr(first, bytes.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::optional<std::pair<char32_t, size_t>> decodeUtf8(std::string_view bytes) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  if (first < 0x80) return std::pair{static_cast<char32_t>(first), size_t{1}};
  const auto* form = std::find_if(std::begin(kSequences), std::end(kSequences),
                                  [&](const auto& s) { return (first & s.mask) == s.lead; });
  if (form == std::end(kSequences) || form->length > bytes.size()) return {};
  uint32_t value = first & static_cast<uint8_t>(~form->mask);
  for (size_t i = 1; i < form->length; ++i) {
    const auto next = static_cast<uint8_t>(bytes[i]);
    if ((next & 0xC0) != 0x80) return {};
    value = value << 6 | (next & 0x3Fu);
  }
  if (!isCodePoint(value, form->smallest)) return {};
  return std::pair{static_cast<char32_t>(value), form->length};
}

std::u32string cleanCharacters(std::string_view bytes, size_t longest) {
  std::u32string text;
  bytes = withoutBlanks(bytes);
  text.reserve(std::min(bytes.size(), longest));
  for (; !bytes.empty() && text.size() < longest;) {
    const auto decoded = decodeUtf8(bytes);
    const bool isClean = decoded && !isControl(decoded->first);
    text += isClean ? decoded->first : static_cast<char32_t>(kReplacementCharacter);
    bytes.remove_prefix(decoded ? decoded->second : 1);
  }
  while (!text.empty() && text.back() == U' ') text.pop_back();  // where it was cut
  return text;
}

std::string cleanUtf8(std::string_view bytes, size_t longest) {
  return toUtf8(cleanCharacters(bytes, longest));
}

std::string toUtf8(std::u32string_view characters) {
  std::string bytes;
  for (const char32_t character : characters) appendUtf8(bytes, character);
  return bytes;
}

std::string joinParts(const std::vector<std::string>& parts) {
  std::string joined;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) joined += ',';
    for (const char c : part) {
      if (c == ',' || c == '\\') joined += '\\';
      joined += c;
    }
  }
  return joined;
}

}  // namespace quenlor
