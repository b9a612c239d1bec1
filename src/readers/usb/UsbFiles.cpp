#include "readers/usb/UsbFiles.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kDevices = "/sys/bus/usb/devices/";
constexpr uint32_t kToldByInterfaces = 0x00;
// A device of several functions says so, and its interfaces what they are.
constexpr uint32_t kMiscellaneous = 0xEF;
constexpr size_t kIdDigits = 4;
constexpr size_t kClassDigits = 2;

struct ClassWord {
  uint32_t code;
  const char* word;
};

constexpr ClassWord CLASS_WORDS[] = {
    {0x01, "audio"},
    {0x02, "communications"},
    {0x03, "hid"},
    {0x05, "physical"},
    {0x06, "image"},
    {0x07, "printer"},
    {0x08, "storage"},
    {0x09, "hub"},
    {0x0A, "cdc-data"},
    {0x0B, "smart-card"},
    {0x0D, "content-security"},
    {0x0E, "video"},
    {0x0F, "health"},
    {0x10, "audio-video"},
    {0x11, "billboard"},
    {0x12, "type-c-bridge"},
    {0xDC, "diagnostic"},
    {0xE0, "wireless"},
    {0xEF, "miscellaneous"},
    {0xFE, "application"},
    {0xFF, "vendor"},
};

std::string text(const std::string& path) {
  return std::string(trimmed(readAttribute(path).value_or("")));
}

void addOnce(std::vector<std::string>& words, std::string word) {
  const bool isNew = std::find(words.begin(), words.end(), word) == words.end();
  if (isNew && !word.empty()) words.push_back(std::move(word));
}

void addInterface(const std::string& entry, std::vector<std::string>& classes,
                  std::vector<std::string>& drivers) {
  const std::string folder = kDevices + entry;
  const auto code = parseUsbNumber(text(folder + "/bInterfaceClass"), kClassDigits);
  if (code) addOnce(classes, usbClassWord(*code));
  std::string driver;
  if (host().readLink((folder + "/driver").c_str(), driver)) {
    addOnce(drivers, std::string(lastPart(driver)));
  }
}

bool isToldByInterfaces(uint32_t deviceClass) {
  return deviceClass == kToldByInterfaces || deviceClass == kMiscellaneous;
}

void readInterfaces(const std::string& folder, const std::vector<std::string>& interfaces,
                    UsbDevice& device) {
  const auto own = parseUsbNumber(text(folder + "bDeviceClass"), kClassDigits);
  for (const std::string& interface : interfaces) {
    addInterface(interface, device.classes, device.drivers);
  }
  const bool isOwn = own && (!isToldByInterfaces(*own) || device.classes.empty());
  const std::string word = isOwn ? usbClassWord(*own) : std::string();
  if (!word.empty()) device.classes = {word};
}

std::string removableWord(const std::string& word) {
  return word == "removable" || word == "fixed" ? word : std::string();
}

}  // namespace

std::optional<uint32_t> parseUsbNumber(std::string_view text, size_t digits) {
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
  const bool isNumber = text.size() == digits && error == std::errc() && stop == end;
  return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> parseUsbSpeed(std::string_view text) {
  constexpr uint32_t kLargest = UINT32_MAX / 1000 - 1;
  uint32_t megabits = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, megabits);
  if (error != std::errc() || megabits > kLargest) return {};
  // Only the slowest speed, 1.5, has a fraction.
  const bool isHalf = std::string_view(stop, static_cast<size_t>(end - stop)) == ".5";
  if (stop != end && !isHalf) return {};
  const uint32_t kilobits = megabits * 1000 + (isHalf ? 500 : 0);
  return kilobits == 0 ? std::nullopt : std::optional(kilobits);
}

std::string usbClassWord(uint32_t code) {
  const auto* found = std::find_if(std::begin(CLASS_WORDS), std::end(CLASS_WORDS),
                                   [=](const ClassWord& row) { return row.code == code; });
  return found == std::end(CLASS_WORDS) ? "" : found->word;
}

std::string usbLocation(std::string_view path) {
  const std::string_view device = lastPart(path);
  const std::string_view ports = device.substr(std::min(device.find('-'), device.size()));
  if (const auto controller = pciAddressOf(path)) return controller->text() + std::string(ports);
  const size_t root = path.find("/usb");
  const std::string_view above = lastPart(path.substr(0, std::min(root, path.size())));
  return root == path.npos ? std::string(device) : std::string(above) + std::string(ports);
}

std::optional<UsbDevice> readUsbDevice(const std::string& entry,
                                       const std::vector<std::string>& interfaces) {
  const std::string folder = kDevices + entry + "/";
  const auto vendor = parseUsbNumber(text(folder + "idVendor"), kIdDigits);
  const auto product = parseUsbNumber(text(folder + "idProduct"), kIdDigits);
  std::string path;
  if (!vendor || !product || !host().readLink((kDevices + entry).c_str(), path)) return {};
  UsbDevice device;
  device.entry = entry;
  device.location = usbLocation(path);
  device.vendor = static_cast<uint16_t>(*vendor);
  device.product = static_cast<uint16_t>(*product);
  device.name = text(folder + "product");
  device.manufacturer = text(folder + "manufacturer");
  device.serialNumber = text(folder + "serial");
  device.version = text(folder + "version");
  device.speed = parseUsbSpeed(text(folder + "speed"));
  device.removable = removableWord(text(folder + "removable"));
  readInterfaces(folder, interfaces, device);
  return device;
}

}  // namespace quenlor
