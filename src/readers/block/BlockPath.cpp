#include "readers/block/BlockPath.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

#include "readers/devicepath/DevicePath.h"

namespace quenlor {
namespace {

constexpr std::string_view kDecimal = "0123456789";

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

// "1.2" of "1-1.2": the way behind the bus; empty for what is no USB device.
std::string_view usbPortOf(std::string_view component) {
  return isUsbDeviceName(component) ? component.substr(component.find('-') + 1)
                                    : std::string_view();
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

std::string ScsiPlace::withoutHost() const {
  return std::to_string(channel) + ":" + std::to_string(target) + ":" + std::to_string(unit);
}

std::optional<ScsiPlace> parseScsiAddress(std::string_view text) {
  ScsiPlace address;
  const bool isAddress = takeNumber(text, address.host) && takeColon(text) &&
                         takeNumber(text, address.channel) && takeColon(text) &&
                         takeNumber(text, address.target) && takeColon(text) &&
                         takeNumber(text, address.unit) && text.empty();
  return isAddress ? std::optional(address) : std::nullopt;
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

BlockPath::BlockPath(std::string path) : m_path(std::move(path)), m_components(split(m_path)) {}

std::string BlockPath::deviceDirectory() const {
  std::string path = m_path.substr(0, m_path.rfind('/'));
  constexpr std::string_view kBlock = "/block";
  if (path.ends_with(kBlock)) path.erase(path.size() - kBlock.size());
  return path;
}

std::string BlockPath::pciAddress() const {
  const std::optional<PciAddress> address = pciAddressOf(m_path);
  return address ? address->text() : std::string();
}

std::string BlockPath::usbPort() const {
  if (component("usb").empty()) return {};
  return std::string(usbPortOf(usbDeviceOf(m_path)));
}

std::optional<ScsiPlace> BlockPath::scsiAddress() const {
  for (auto part = m_components.rbegin(); part != m_components.rend(); ++part) {
    if (const auto address = parseScsiAddress(*part)) return address;
  }
  return {};
}

std::string BlockPath::scsiDirectory() const {
  const auto found = std::find_if(m_components.rbegin(), m_components.rend(), [](const auto& part) {
    return parseScsiAddress(part).has_value();
  });
  return found == m_components.rend() ? std::string() : pathThrough(*found);
}

std::string BlockPath::ataPort() const { return component("ata"); }

std::string BlockPath::ataPortDirectory() const {
  const std::string port = ataPort();
  return port.empty() ? port : pathThrough(port);
}

std::string BlockPath::component(std::string_view prefix) const {
  const auto found =
      std::find_if(m_components.begin(), m_components.end(),
                   [prefix](const std::string& part) { return isCounted(part, prefix); });
  return found == m_components.end() ? std::string() : *found;
}

bool BlockPath::hasPrefix(std::string_view prefix) const {
  return std::any_of(m_components.begin(), m_components.end(),
                     [prefix](const std::string& part) { return part.starts_with(prefix); });
}

std::string BlockPath::stablePart() const {
  std::string path;
  for (size_t index = 0; index + 1 < m_components.size(); ++index) {
    path += "/" + withoutCounters(m_components[index]);
  }
  return path;
}

std::string BlockPath::pathThrough(std::string_view component) const {
  std::string path;
  for (const std::string& part : m_components) {
    path += "/" + part;
    if (part == component) break;
  }
  return path;
}

}  // namespace quenlor
