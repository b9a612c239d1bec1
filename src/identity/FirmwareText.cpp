#include "identity/FirmwareText.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace quenlor {
namespace {

// Memory modules fill their serial-presence-detect texts up with FF or NUL bytes.
constexpr std::string_view kPadding("\0 \t\n\v\f\r\xFF", 8);

// All in lower case.
constexpr std::string_view PLACEHOLDERS[] = {
    "to be filled by o.e.m.",
    "to be filled by o.e.m",
    "default string",
    "system manufacturer",
    "system product name",
    "system model",
    "system version",
    "system serial number",
    "base board serial number",
    "chassis serial number",
    "no asset information",
    "this is oem",
    "not specified",
    "not available",
    "not applicable",
    "n/a",
    "na",
    "none",
    "unknown",
    "undefined",
    "invalid",
    "oem",
    "o.e.m.",
    "sn",
    "empty",
    "[empty]",
    "no dimm",
    "0123456789",
    "1234567890",
    "123456789",
    "9876543210",
};

// Followed by the number of a slot: "SerNum00", "PartNum3".
constexpr std::string_view NUMBERED[] = {"sernum", "assettagnum", "partnum", "manufacturer",
                                         "modulepartnumber"};

// Texts of nothing but one of these groups. A mix of 0 and F may be a real text: the firmware
// version "F0".
constexpr std::string_view FILLERS[] = {"0-. ", "f-. ", "x"};
constexpr size_t kShortestX = 3;  // "X" and "XX" are versions

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), lowered);
  return lower;
}

std::string_view withoutPadding(std::string_view text) {
  const size_t start = text.find_first_not_of(kPadding);
  if (start == text.npos) return {};
  return text.substr(start, text.find_last_not_of(kPadding) - start + 1);
}

bool isNumbered(std::string_view text) {
  const auto matches = [text](std::string_view name) {
    return text.size() > name.size() && text.starts_with(name) &&
           text.find_first_not_of("0123456789", name.size()) == text.npos;
  };
  return std::any_of(std::begin(NUMBERED), std::end(NUMBERED), matches);
}

bool isFiller(std::string_view text) {
  const auto matches = [text](std::string_view filler) {
    return text.find_first_not_of(filler) == text.npos &&
           (text[0] != 'x' || text.size() >= kShortestX);
  };
  return std::any_of(std::begin(FILLERS), std::end(FILLERS), matches);
}

// "DIMM_A1_AssetTag".
bool isModuleTag(std::string_view text) {
  return text.starts_with("dimm") && text.ends_with("assettag");
}

}  // namespace

bool isPlaceholder(std::string_view text) { return knownFirmwareText(text).empty(); }

std::string_view knownFirmwareText(std::string_view text) {
  const std::string_view bare = withoutPadding(text);
  if (bare.empty()) return {};
  const std::string lower = lowerCase(bare);
  const bool isListed =
      std::find(std::begin(PLACEHOLDERS), std::end(PLACEHOLDERS), lower) != std::end(PLACEHOLDERS);
  return isListed || isNumbered(lower) || isFiller(lower) || isModuleTag(lower) ? std::string_view()
                                                                                : bare;
}

}  // namespace quenlor
