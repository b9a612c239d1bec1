#include "readers/interfaces/InterfaceFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/interfaces/EthtoolMessages.h"

namespace quenlor {
namespace {

constexpr const char* kInterfaces = "/sys/class/net/";
constexpr const char* kVirtualInterfaces = "/sys/devices/virtual/net";
constexpr std::string_view kWireless = "wlan";
constexpr const char* kBurntIn = "0";  // NET_ADDR_PERM

std::string pathOf(const std::string& name, const char* file) {
  return kInterfaces + name + "/" + file;
}

// All of the text as a decimal number of 32 bits.
std::optional<uint32_t> parseDecimal(std::string_view text) {
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::string linkBase(const std::string& path) {
  std::string target;
  return host().readLink(path.c_str(), target) ? std::string(lastPart(target)) : std::string();
}

// Kernels before 2.6.32 did not tell the type, and drivers of their own wireless layer never do.
bool isWireless(const std::string& name, const InterfaceEvent& event) {
  if (event.deviceType == kWireless) return true;
  std::string target;
  struct stat facts {};
  return host().readLink(pathOf(name, "phy80211").c_str(), target) ||
         host().stat(pathOf(name, "wireless").c_str(), &facts) == 0;
}

std::optional<uint8_t> parseByte(std::string_view digits) {
  uint8_t byte = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
  return digits.size() == 2 && error == std::errc() && stop == end ? std::optional(byte)
                                                                   : std::nullopt;
}

}  // namespace

InterfaceEvent parseInterfaceEvent(const std::string& text) {
  constexpr std::string_view kIndex = "IFINDEX=";
  constexpr std::string_view kType = "DEVTYPE=";
  InterfaceEvent event;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (line.starts_with(kIndex)) event.index = parseDecimal(line.substr(kIndex.size()));
    if (line.starts_with(kType)) event.deviceType = line.substr(kType.size());
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return event;
}

std::string parseHardwareAddress(const std::string& text) {
  std::string bytes;
  if (text.size() % 3 != 2) return {};
  for (size_t at = 0; at < text.size(); at += 3) {
    const auto byte = parseByte(std::string_view(text).substr(at, 2));
    const bool isSeparated = at + 2 == text.size() || text[at + 2] == ':';
    if (!byte || !isSeparated) return {};
    bytes += static_cast<char>(*byte);
  }
  return bytes.find_first_not_of('\0') == std::string::npos ? std::string() : bytes;
}

std::optional<std::set<std::string>> virtualInterfaces() {
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(kVirtualInterfaces, entries)) return {};
  std::set<std::string> names;
  for (DirectoryEntry& entry : entries) names.insert(std::move(entry.name));
  return names;
}

std::optional<InterfaceFiles> readInterfaceFiles(const std::string& name, uint32_t index) {
  std::string path;
  if (!host().readLink((kInterfaces + name).c_str(), path)) return {};
  const InterfaceEvent event =
      parseInterfaceEvent(readAttribute(pathOf(name, "uevent")).value_or(""));
  if (event.index != index) return {};

  InterfaceFiles files;
  files.isWireless = isWireless(name, event);
  files.driver = linkBase(pathOf(name, "device/driver"));
  files.pciAddress = pciAddressOf(path);
  files.usbDevice = usbDeviceOf(path);
  files.port = parseDecimal(readAttribute(pathOf(name, "dev_port")).value_or("")).value_or(0);
  return files;
}

std::string readPermanentAddress(const std::string& name) {
  const auto ofMember = readAttribute(pathOf(name, "bonding_slave/perm_hwaddr"));
  if (ofMember) return parseHardwareAddress(*ofMember);
  if (readAttribute(pathOf(name, "addr_assign_type")) != kBurntIn) return {};
  return parseHardwareAddress(readAttribute(pathOf(name, "address")).value_or(""));
}

std::optional<uint32_t> readSpeed(const std::string& name) {
  const auto speed = parseDecimal(readAttribute(pathOf(name, "speed")).value_or(""));
  return speed ? plausibleSpeed(*speed) : std::nullopt;
}

std::string readDuplex(const std::string& name) {
  const std::string word = readAttribute(pathOf(name, "duplex")).value_or("");
  return word == "half" || word == "full" ? word : "";
}

}  // namespace quenlor
