#include "quenlorctl/document/HostKey.h"

#include <cctype>
#include <charconv>
#include <string_view>
#include <utility>

#include "base/Utf8.h"
#include "identity/FirmwareText.h"
#include "identity/UuidText.h"

namespace quenlor::ctl {
namespace {

namespace attribute {
constexpr uint32_t kSmbiosUuid = 9;  // SMBIOS, 32 digits in stored order
constexpr uint32_t kSmbiosUuidText = 101;
constexpr uint32_t kMachineUuid = 1;
constexpr uint32_t kMachineSerial = 2;
constexpr uint32_t kManufacturer = 1;  // ComponentID
constexpr uint32_t kProduct = 2;
constexpr uint32_t kSerial = 4;
constexpr uint32_t kPermanentAddress = 3;  // Network Adapter
constexpr uint32_t kHostname = 3;          // UNIX System Params
}  // namespace attribute

constexpr size_t kUuidDigits = 32;

std::string lowerHexDigits(std::string_view text) {
  std::string digits;
  for (const char character : text) {
    if (std::isxdigit(static_cast<unsigned char>(character)) == 0) continue;
    digits += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return digits;
}

std::string canonical(const std::string& storedDigits) {
  std::string digits;
  for (const size_t place : kSwappedUuidOrder) digits += storedDigits.substr(2 * place, 2);
  return digits;
}

std::optional<std::string> uuidOf(std::string_view text, bool isStored) {
  std::string digits = lowerHexDigits(text);
  if (digits.size() != kUuidDigits) return {};
  if (isStored) digits = canonical(digits);
  std::string uuid = uuidOfDigits(std::move(digits));
  if (isConstantUuid(uuid)) return {};
  return uuid;
}

std::optional<std::string> systemUuid(const Document& document) {
  if (auto uuid = uuidOf(document.textOf(group::kSmbios, attribute::kSmbiosUuidText), false)) {
    return uuid;
  }
  if (auto uuid = uuidOf(document.textOf(group::kMachine, attribute::kMachineUuid), false)) {
    return uuid;
  }
  return uuidOf(document.textOf(group::kSmbios, attribute::kSmbiosUuid), true);
}

std::string known(std::string_view text) { return std::string(knownFirmwareText(text)); }

std::optional<std::string> makerAndSerial(const Document& document) {
  const auto component = [&](uint32_t id) {
    return known(document.textOf(group::kComponentId, id));
  };
  std::string serial = component(attribute::kSerial);
  if (serial.empty()) {
    serial = known(document.textOf(group::kMachine, attribute::kMachineSerial));
  }
  const std::string maker = component(attribute::kManufacturer);
  const std::string product = component(attribute::kProduct);
  if (serial.empty() || maker.empty() || product.empty()) return {};
  return joinParts({maker, product, serial});
}

// Of a maker's own: neither for a group of receivers nor given by the system (IEEE 802), nor a
// filler.
bool isBurntIn(const std::string& digits) {
  if (digits.size() != 12) return false;
  unsigned first = 0;
  std::from_chars(digits.data(), digits.data() + 2, first, 16);
  return (first & 3U) == 0 && digits.find_first_not_of('0') != digits.npos;
}

std::optional<std::string> smallestAddress(const Document& document) {
  std::optional<std::string> smallest;
  for (const Document::Row& row : document.rows()) {
    if (row.group == nullptr || row.group->id != group::kNetworkAdapter) continue;
    const std::string digits = lowerHexDigits(document.textOf(row, attribute::kPermanentAddress));
    if (isBurntIn(digits) && (!smallest || digits < *smallest)) smallest = digits;
  }
  if (smallest) {
    for (size_t place = 10; place > 0; place -= 2) smallest->insert(place, ":");
  }
  return smallest;
}

std::optional<std::string> hostName(const Document& document) {
  const std::string_view name = document.textOf(group::kUnixSystemParams, attribute::kHostname);
  if (name.empty() || name.starts_with("localhost")) return {};
  return std::string(name);
}

}  // namespace

std::optional<HostKey> hostKey(const Document& document) {
  using Choice = std::optional<std::string> (*)(const Document&);
  constexpr Choice CHOICES[] = {systemUuid, makerAndSerial, smallestAddress, hostName};
  int rank = 0;
  for (const Choice choice : CHOICES) {
    ++rank;
    if (auto key = choice(document)) return HostKey{std::move(*key), rank};
  }
  return {};
}

}  // namespace quenlor::ctl
