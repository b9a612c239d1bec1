#include "readers/block/DevicePath.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace quenlor {
namespace {

constexpr std::string_view kDecimal = "0123456789";
constexpr std::string_view kHex = "0123456789abcdefABCDEF";

bool consistsOf(std::string_view text, std::string_view bytes) {
  return !text.empty() && text.find_first_not_of(bytes) == std::string_view::npos;
}

// Prefix, then digits only: "host2".
bool isCounted(std::string_view component, std::string_view prefix) {
  return component.starts_with(prefix) && consistsOf(component.substr(prefix.size()), kDecimal);
}

std::vector<std::string> split(std::string_view path) {
  std::vector<std::string> parts;
  while (!path.empty()) {
    const size_t end = std::min(path.find('/'), path.size());
    if (end > 0) parts.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return parts;
}

// Takes a number and the colon behind it, if one is there, off the text.
template <typename Number>
bool takeNumber(std::string_view& text, Number& number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc()) return false;
  text.remove_prefix(static_cast<size_t>(result.ptr - text.data()));
  return true;
}

bool takeColon(std::string_view& text) {
  if (!text.starts_with(':')) return false;
  text.remove_prefix(1);
  return true;
}

// "1-1.2": a device behind a bus and its ports. Interfaces have a colon, buses are "usb1".
std::string_view usbPortOf(std::string_view component) {
  const size_t dash = component.find('-');
  if (dash == std::string_view::npos || !consistsOf(component.substr(0, dash), kDecimal)) return {};
  const std::string_view ports = component.substr(dash + 1);
  return consistsOf(ports, "0123456789.") ? ports : std::string_view();
}

// Names that a subsystem counts through in the order of discovery.
constexpr std::string_view COUNTED_NAMES[] = {"host",   "ata",  "usb", "session",
                                              "virtio", "nvme", "fw"};

std::string withoutCounters(const std::string& component) {
  if (const auto address = parseScsiAddress(component)) return address->withoutHost();
  if (const std::string_view port = usbPortOf(component); !port.empty()) return std::string(port);
  for (const std::string_view name : COUNTED_NAMES) {
    if (isCounted(component, name)) return std::string(name);
  }
  const bool hasHost = component.starts_with("target") || component.starts_with("rport-") ||
                       component.starts_with("end_device-") || component.starts_with("port-");
  return hasHost ? component.substr(std::min(component.find(':'), component.size())) : component;
}

}  // namespace

std::string ScsiAddress::withoutHost() const {
  return std::to_string(channel) + ":" + std::to_string(target) + ":" + std::to_string(unit);
}

std::optional<ScsiAddress> parseScsiAddress(std::string_view text) {
  ScsiAddress address;
  const bool isAddress = takeNumber(text, address.host) && takeColon(text) &&
                         takeNumber(text, address.channel) && takeColon(text) &&
                         takeNumber(text, address.target) && takeColon(text) &&
                         takeNumber(text, address.unit) && text.empty();
  return isAddress ? std::optional(address) : std::nullopt;
}

bool isPciAddress(std::string_view text) {
  const size_t domain = std::min(text.find(':'), text.size());
  const std::string_view rest = text.substr(domain);  // ":00:1f.2"
  return domain >= 4 && consistsOf(text.substr(0, domain), kHex) && rest.size() == 8 &&
         consistsOf(rest.substr(1, 2), kHex) && rest[3] == ':' &&
         consistsOf(rest.substr(4, 2), kHex) && rest[6] == '.' && rest[7] >= '0' && rest[7] <= '7';
}

std::string resolveLink(std::string_view directory, std::string_view target) {
  std::vector<std::string> parts;
  if (!target.starts_with('/')) parts = split(directory);
  for (std::string& part : split(target)) {
    if (part == ".") continue;
    if (part != "..") {
      parts.push_back(std::move(part));
    } else if (!parts.empty()) {
      parts.pop_back();
    }
  }
  std::string path;
  for (const std::string& part : parts) path += "/" + part;
  return path;
}

DevicePath::DevicePath(std::string path) : m_path(std::move(path)), m_components(split(m_path)) {}

std::string DevicePath::deviceDirectory() const {
  std::string path = m_path.substr(0, m_path.rfind('/'));
  constexpr std::string_view kBlock = "/block";
  if (path.ends_with(kBlock)) path.erase(path.size() - kBlock.size());
  return path;
}

std::string DevicePath::pciAddress() const {
  const auto found = std::find_if(m_components.rbegin(), m_components.rend(), isPciAddress);
  return found == m_components.rend() ? std::string() : *found;
}

std::string DevicePath::usbPort() const {
  if (component("usb").empty()) return {};
  const auto found = std::find_if(m_components.rbegin(), m_components.rend(),
                                  [](const auto& part) { return !usbPortOf(part).empty(); });
  return found == m_components.rend() ? std::string() : std::string(usbPortOf(*found));
}

std::optional<ScsiAddress> DevicePath::scsiAddress() const {
  for (auto part = m_components.rbegin(); part != m_components.rend(); ++part) {
    if (const auto address = parseScsiAddress(*part)) return address;
  }
  return {};
}

std::string DevicePath::scsiDirectory() const {
  const auto found = std::find_if(m_components.rbegin(), m_components.rend(), [](const auto& part) {
    return parseScsiAddress(part).has_value();
  });
  return found == m_components.rend() ? std::string() : pathThrough(*found);
}

std::string DevicePath::ataPort() const { return component("ata"); }

std::string DevicePath::ataPortDirectory() const {
  const std::string port = ataPort();
  return port.empty() ? port : pathThrough(port);
}

std::string DevicePath::component(std::string_view prefix) const {
  const auto found =
      std::find_if(m_components.begin(), m_components.end(),
                   [prefix](const std::string& part) { return isCounted(part, prefix); });
  return found == m_components.end() ? std::string() : *found;
}

bool DevicePath::hasPrefix(std::string_view prefix) const {
  return std::any_of(m_components.begin(), m_components.end(),
                     [prefix](const std::string& part) { return part.starts_with(prefix); });
}

std::string DevicePath::stablePart() const {
  std::string path;
  for (size_t index = 0; index + 1 < m_components.size(); ++index) {
    path += "/" + withoutCounters(m_components[index]);
  }
  return path;
}

std::string DevicePath::pathThrough(std::string_view component) const {
  std::string path;
  for (const std::string& part : m_components) {
    path += "/" + part;
    if (part == component) break;
  }
  return path;
}

}  // namespace quenlor
