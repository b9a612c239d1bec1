#include "readers/pci/PciLookup.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PCIDeviceGroup.cpp";
constexpr const char* kRawIds = "PCI device ";
constexpr int kNoSuchId = 0x10000;

const PciVendor* findVendor(int vendor) {
  const PciVendor* end = PciVenTable + kPciVendorsSearched;
  const PciVendor* found =
      std::find_if(PciVenTable, end, [=](const PciVendor& row) { return row.vendor == vendor; });
  return found == end ? nullptr : found;
}

const PciDevice* findDevice(int vendor, int device) {
  const PciDevice* end = PciDevTable + kPciDevicesSearched;
  const PciDevice* found = std::find_if(PciDevTable, end, [=](const PciDevice& row) {
    return row.vendor == vendor && row.device == device;
  });
  return found == end ? nullptr : found;
}

bool isEmpty(const char* text) { return *text == '\0'; }

std::string inParentheses(const char* text) { return std::string("(") + text + ")"; }

std::string shortOrLongName(const PciVendor& row) {
  return isEmpty(row.shortName) ? row.longName : row.shortName;
}

std::string deviceText(const PciDevice& row) {
  if (isEmpty(row.chip)) return row.description;
  const std::string chip = row.chip;
  return isEmpty(row.description) ? chip : chip + " " + inParentheses(row.description);
}

std::string deviceName(const std::string& vendorName, const PciDevice& row) {
  const std::string text = deviceText(row);
  return text.empty() ? text : vendorName + " " + text;
}

std::string nameOf(int vendor, int device, const char* classText) {
  const PciVendor* vendorRow = findVendor(vendor);
  if (vendorRow == nullptr) return isEmpty(classText) ? "" : inParentheses(classText);
  const std::string vendorName = shortOrLongName(*vendorRow);

  std::string name;
  const PciDevice* deviceRow = findDevice(vendor, device);
  if (deviceRow != nullptr) name = deviceName(vendorName, *deviceRow);
  if (!name.empty()) return name;
  return vendorName + (isEmpty(classText) ? " device" : " " + inParentheses(classText));
}

// Bytes of the text that fit into the limit without a part of a character. Names are ASCII or, in
// class texts of unknown origin, UTF-8.
size_t lengthWithin(const std::string& text, size_t limit) {
  if (text.size() <= limit) return text.size();
  constexpr size_t kMostContinuationBytes = 3;
  const auto isContinuation = [&](size_t i) { return (text[i] & 0xC0) == 0x80; };
  size_t length = limit;
  while (length > 0 && limit - length < kMostContinuationBytes && isContinuation(length)) --length;
  // More continuation bytes than a character has: not UTF-8, so no byte belongs to another.
  return isContinuation(length) ? limit : length;
}

// Fills the whole buffer: the text, cut to what fits, then zeros.
void copyCut(const std::string& text, char* buffer, size_t size) {
  std::memset(buffer, 0, size);
  std::memcpy(buffer, text.data(), lengthWithin(text, size - 1));
}

}  // namespace

char* lookupPCI(int vendor, int device, const char* classText) {
  const TraceFunction at{kSourcePath, "lookupPCI()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s%x %s%x", "looking up vendor 0x", static_cast<unsigned>(vendor),
                "device 0x", static_cast<unsigned>(device));
  auto* result = static_cast<char*>(std::malloc(kPciNameSize));
  if (result == nullptr) return nullptr;
  copyCut(nameOf(vendor, device, classText == nullptr ? "" : classText), result, kPciNameSize);
  log->traceMAX(at(), "hardware %s%s", "Return: ", result);
  return result;
}

std::string pciName(int vendor, int device, const std::string& classText) {
  char* name = lookupPCI(vendor, device, classText.c_str());
  if (name == nullptr) return {};
  std::string result(name);
  std::free(name);
  return result;
}

std::string builtInVendorName(uint16_t vendor) {
  const PciVendor* row = findVendor(vendor);
  return row == nullptr ? std::string() : shortOrLongName(*row);
}

std::string builtInDeviceName(uint16_t vendor, uint16_t device) {
  const PciDevice* row = findDevice(vendor, device);
  return row == nullptr ? std::string() : deviceText(*row);
}

std::optional<int> readPciId(const char* text, const char** end) {
  char* stop = nullptr;
  const unsigned long id = std::strtoul(text, &stop, 16);
  if (end != nullptr) *end = stop;
  if (stop == text) return std::nullopt;
  return id > 0xFFFF ? kNoSuchId : static_cast<int>(id);
}

void processSuSEline(const char* line, char* buffer, size_t size) {
  if (size == 0) return;
  std::memset(buffer, 0, size);
  const char* ids = std::strstr(line, kRawIds);
  if (ids == nullptr) return;
  const char* colon = nullptr;
  const std::optional<int> vendor = readPciId(ids + std::strlen(kRawIds), &colon);
  if (!vendor || *colon != ':') return;
  const std::optional<int> device = readPciId(colon + 1);
  if (device) copyCut(pciName(*vendor, *device, ""), buffer, size);
}

}  // namespace quenlor
