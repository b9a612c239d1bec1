// Texts of UUIDs, and those that identify nothing.
#include <algorithm>
#include <cctype>
#include <iterator>

#include "readers/dmi/DmiTable.h"

namespace quenlor {
namespace {

constexpr DmiVersion kFirstSwapped = {2, 6};
constexpr size_t STORED_ORDER[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr size_t SWAPPED_ORDER[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

constexpr size_t kTextSize = 36;
constexpr size_t HYPHENS[] = {8, 13, 18, 23};

// What boards come with whose maker gave them no identity.
constexpr std::string_view CONSTANTS[] = {
    "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
    "12345678-1234-5678-90ab-cddeefaabbcc", "fefefefe-fefe-fefe-fefe-fefefefefefe"};

bool isHyphenPlace(size_t place) {
  return std::find(std::begin(HYPHENS), std::end(HYPHENS), place) != std::end(HYPHENS);
}

bool hasForm(std::string_view text) {
  if (text.size() != kTextSize) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isRight =
        isHyphenPlace(i) ? text[i] == '-' : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
    if (!isRight) return false;
  }
  return true;
}

// All bytes equal: every hyphen-free pair of digits is the first one.
bool isOneByteRepeated(std::string_view text) {
  std::string digits(text);
  std::erase(digits, '-');
  for (size_t i = 2; i < digits.size(); ++i) {
    if (digits[i] != digits[i % 2]) return false;
  }
  return true;
}

}  // namespace

DmiText dmiUuidText(const DmiUuid& stored, DmiVersion version) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const size_t place : version >= kFirstSwapped ? SWAPPED_ORDER : STORED_ORDER) {
    if (isHyphenPlace(text.size())) text += '-';
    text += kDigits[stored[place] >> 4];
    text += kDigits[stored[place] & 0x0F];
  }
  return dmiUuidText(text);
}

DmiText dmiUuidText(std::string_view text) {
  if (!hasForm(text) || isOneByteRepeated(text)) return {};
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  const bool isConstant =
      std::find(std::begin(CONSTANTS), std::end(CONSTANTS), lower) != std::end(CONSTANTS);
  return isConstant ? std::nullopt : std::optional(lower);
}

}  // namespace quenlor
