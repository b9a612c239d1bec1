// UUIDs of the firmware's table as texts; none for those that identify nothing.
#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>

#include "identity/UuidText.h"
#include "readers/dmi/DmiTable.h"

namespace quenlor {
namespace {

constexpr DmiVersion kFirstSwapped = {2, 6};
constexpr std::array<size_t, 16> kStoredOrder = {0, 1, 2,  3,  4,  5,  6,  7,
                                                 8, 9, 10, 11, 12, 13, 14, 15};

constexpr size_t kTextSize = 36;
constexpr size_t HYPHENS[] = {8, 13, 18, 23};

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

}  // namespace

DmiText dmiUuidText(const DmiUuid& stored, DmiVersion version) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const size_t place : version >= kFirstSwapped ? kSwappedUuidOrder : kStoredOrder) {
    if (isHyphenPlace(text.size())) text += '-';
    text += kDigits[stored[place] >> 4];
    text += kDigits[stored[place] & 0x0F];
  }
  return dmiUuidText(text);
}

DmiText dmiUuidText(std::string_view text) {
  if (!hasForm(text)) return {};
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return isConstantUuid(lower) ? std::nullopt : std::optional(lower);
}

}  // namespace quenlor
