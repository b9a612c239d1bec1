#include "readers/devicepath/DevicePath.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace quenlor {
namespace {

constexpr size_t kBehindDomain = 8;  // ":00:1f.2"
constexpr size_t kShortestDomain = 4;
constexpr size_t kLongestDomain = 8;

bool isDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// All of the text as a hexadecimal number of at most `largest`.
template <class Number>
bool readHex(std::string_view text, Number largest, Number& out) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, out, 16);
  return error == std::errc() && stop == end && out <= largest;
}

// Calls `take` with each part, from the last to the first, until it returns true.
template <class Take>
void fromLastPart(std::string_view path, Take take) {
  while (!path.empty()) {
    const std::string_view part = lastPart(path);
    if (take(part)) return;
    path.remove_suffix(std::min(part.size() + 1, path.size()));
  }
}

}  // namespace

std::string PciAddress::text() const {
  char text[32];
  std::snprintf(text, sizeof text, "%04x:%02x:%02x.%x", domain, bus, device, function);
  return text;
}

std::optional<PciAddress> parsePciAddress(std::string_view name) {
  if (name.size() < kShortestDomain + kBehindDomain ||
      name.size() > kLongestDomain + kBehindDomain) {
    return {};
  }
  const std::string_view domain = name.substr(0, name.size() - kBehindDomain);
  const std::string_view rest = name.substr(domain.size());
  if (rest[0] != ':' || rest[3] != ':' || rest[6] != '.') return {};
  PciAddress address;
  const bool isAddress = readHex(domain, UINT32_MAX, address.domain) &&
                         readHex<uint8_t>(rest.substr(1, 2), 0xFF, address.bus) &&
                         readHex<uint8_t>(rest.substr(4, 2), 0x1F, address.device) &&
                         readHex<uint8_t>(rest.substr(7, 1), 7, address.function);
  return isAddress ? std::optional(address) : std::nullopt;
}

std::optional<PciAddress> pciAddressOf(std::string_view path) {
  std::optional<PciAddress> address;
  fromLastPart(path, [&](std::string_view part) {
    address = parsePciAddress(part);
    return address.has_value();
  });
  return address;
}

std::string usbDeviceOf(std::string_view path) {
  std::string device;
  fromLastPart(path, [&](std::string_view part) {
    if (isUsbDeviceName(part)) device = part;
    return !device.empty() || parsePciAddress(part);
  });
  return device;
}

bool isUsbDeviceName(std::string_view name) {
  const size_t dash = name.find('-');
  if (dash == name.npos || !isDigits(name.substr(0, dash))) return false;
  std::string_view ports = name.substr(dash + 1);
  while (true) {
    const size_t end = std::min(ports.find('.'), ports.size());
    if (!isDigits(ports.substr(0, end))) return false;
    if (end == ports.size()) return true;
    ports.remove_prefix(end + 1);
  }
}

std::string_view lastPart(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace quenlor
