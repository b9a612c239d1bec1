#include "identity/UuidText.h"

#include <algorithm>
#include <iterator>

namespace quenlor {
namespace {

constexpr std::string_view CONSTANTS[] = {"03000200-0400-0500-0006-000700080009",
                                          "00020003-0004-0005-0006-000700080009",
                                          "12345678-1234-5678-90ab-cddeefaabbcc"};

// Every hyphen-free pair of digits is the first one.
bool isOneByteRepeated(std::string_view uuid) {
  std::string digits(uuid);
  std::erase(digits, '-');
  for (size_t i = 2; i < digits.size(); ++i) {
    if (digits[i] != digits[i % 2]) return false;
  }
  return true;
}

}  // namespace

std::string uuidOfDigits(std::string digits) {
  for (const size_t position : {20U, 16U, 12U, 8U}) digits.insert(position, 1, '-');
  return digits;
}

bool isConstantUuid(std::string_view uuid) {
  return isOneByteRepeated(uuid) ||
         std::find(std::begin(CONSTANTS), std::end(CONSTANTS), uuid) != std::end(CONSTANTS);
}

}  // namespace quenlor
