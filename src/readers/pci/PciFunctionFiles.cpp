#include "readers/pci/PciFunctionFiles.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kFunctions = "/sys/bus/pci/devices/";
constexpr uint32_t kLargestId = 0xFFFF;
constexpr uint32_t kLargestClass = 0xFFFFFF;
constexpr uint32_t kLargestRevision = 0xFF;

template <class Number>
std::optional<Number> parseAll(std::string_view text, int base) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<uint16_t> asId(std::optional<uint32_t> number) {
  if (!number || *number > kLargestId) return {};
  return static_cast<uint16_t>(*number);
}

// "8086:10D3" into both ids; false when it is anything else.
bool takeIds(std::string_view text, uint16_t& first, uint16_t& second) {
  const size_t colon = text.find(':');
  if (colon == text.npos) return false;
  const auto left = asId(parseAll<uint32_t>(text.substr(0, colon), 16));
  const auto right = asId(parseAll<uint32_t>(text.substr(colon + 1), 16));
  if (left && right) {
    first = *left;
    second = *right;
  }
  return left && right;
}

// What of an event names the function; both have to be there.
struct EventParts {
  bool hasIds = false;
  bool hasClass = false;
};

void takeEventLine(std::string_view line, PciFunction& function, EventParts& parts) {
  const size_t equals = line.find('=');
  if (equals == line.npos) return;
  const std::string_view key = line.substr(0, equals);
  const std::string_view value = line.substr(equals + 1);
  if (key == "DRIVER") function.driver = value;
  if (key == "PCI_ID") parts.hasIds = takeIds(value, function.vendor, function.device);
  if (key == "PCI_SUBSYS_ID") takeIds(value, function.subsystemVendor, function.subsystemDevice);
  if (key == "PCI_CLASS") {
    const auto code = parseAll<uint32_t>(value, 16);
    parts.hasClass = code && *code <= kLargestClass;
    if (parts.hasClass) function.classCode = *code;
  }
}

std::optional<uint32_t> readNumber(const std::string& path) {
  const auto text = readAttribute(path);
  return text ? parsePciNumber(*text) : std::nullopt;
}

std::string linkBase(const std::string& path) {
  std::string target;
  return host().readLink(path.c_str(), target) ? std::string(lastPart(target)) : std::string();
}

// For kernels whose event of a PCI function tells less.
std::optional<PciFunction> readFiles(const std::string& folder) {
  const auto vendor = asId(readNumber(folder + "vendor"));
  const auto device = asId(readNumber(folder + "device"));
  if (!vendor || !device) return {};
  PciFunction function;
  function.vendor = *vendor;
  function.device = *device;
  function.subsystemVendor = asId(readNumber(folder + "subsystem_vendor")).value_or(0);
  function.subsystemDevice = asId(readNumber(folder + "subsystem_device")).value_or(0);
  function.classCode = readNumber(folder + "class").value_or(0) & kLargestClass;
  function.driver = linkBase(folder + "driver");
  return function;
}

}  // namespace

std::optional<PciFunction> parsePciEvent(const std::string& text) {
  PciFunction function;
  EventParts parts;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    takeEventLine(line, function, parts);
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return parts.hasIds && parts.hasClass ? std::optional(std::move(function)) : std::nullopt;
}

std::optional<uint32_t> parsePciNumber(const std::string& text) {
  std::string_view digits = text;
  if (digits.starts_with("0x")) digits.remove_prefix(2);
  return parseAll<uint32_t>(digits, 16);
}

std::optional<uint32_t> parseNodeNumber(const std::string& text) {
  return parseAll<uint32_t>(text, 10);
}

std::optional<PciFunction> readPciFunction(const PciAddress& address, const std::string& entry) {
  const std::string folder = kFunctions + entry + "/";
  auto function = parsePciEvent(readAttribute(folder + "uevent").value_or(""));
  if (!function) function = readFiles(folder);
  if (!function) return {};
  function->address = address;
  const auto revision = readNumber(folder + "revision");
  if (revision && *revision <= kLargestRevision) {
    function->revision = static_cast<uint8_t>(*revision);
  }
  function->numaNode = parseNodeNumber(readAttribute(folder + "numa_node").value_or(""));
  function->iommuGroup = parseNodeNumber(linkBase(folder + "iommu_group"));
  return function;
}

}  // namespace quenlor
