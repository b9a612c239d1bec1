#include "readers/pci/PciListing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "log/CcLogWrapper.h"
#include "readers/pci/PciLookup.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PCIDeviceGroup.cpp";
constexpr TraceFunction kAt{kSourcePath, "getTable()"};
constexpr const char* kGroupName = "PCIDeviceGroup";

constexpr const char* kBus = "Bus";
constexpr const char* kDevice = "device";
constexpr const char* kFunction = "function";
constexpr const char* kSeparator = ": ";  // between class and description
constexpr const char* kRevision = "(rev";
constexpr const char* kRawIdForm = "PCI device ";
constexpr const char* kUnknown = "Unknown ";
constexpr const char* kVendorId = "Vendor id=";
constexpr const char* kDeviceId = "Device id=";

// Which double quotes of an lspci line open the names; the first pair holds the class.
constexpr int kVendorQuote = 3;
constexpr int kDeviceQuote = 5;

// The text behind a label of the line; null when the line lacks the label.
const char* behind(const char* line, const char* label) {
  const char* found = std::strstr(line, label);
  return found == nullptr ? nullptr : found + std::strlen(label);
}

// A label without a number is as good as no label: id 0 would name a device that is not there.
std::optional<int> idBehind(const char* line, const char* label) {
  const char* text = behind(line, label);
  return text == nullptr ? std::nullopt : readPciId(text);
}

uint32_t decimalAt(const char* text) {
  return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

// "0x03" of "(rev 3)"; the kernel prints decimal, a prefix of another base is honoured. Four
// characters at most: larger numbers lose their last digits.
std::string revisionText(const char* text) {
  const long number = text == nullptr ? 0 : std::strtol(text, nullptr, 0);
  char revision[5];
  std::snprintf(revision, sizeof revision, "0x%02X", static_cast<unsigned>(number));
  return revision;
}

bool contains(std::string_view text, const char* part) {
  return text.find(part) != std::string_view::npos;
}

// "Host bridge" of "    Host bridge: Intel ..."
std::string classTextOf(const std::string& line, size_t separator) {
  const size_t start = std::min(line.find_first_not_of(" \t"), separator);
  return line.substr(start, separator - start);
}

std::string nameOfRawIds(const std::string& line) {
  char name[512];
  processSuSEline(line.c_str(), name, sizeof name);
  return name;
}

// The text between the n-th double quote (from 1) and the next one; empty when one is missing.
std::string quotedText(const std::string& line, int n) {
  size_t open = line.find('"');
  while (open != std::string::npos && --n > 0) open = line.find('"', open + 1);
  if (open == std::string::npos) return {};
  const size_t close = line.find('"', open + 1);
  return close == std::string::npos ? std::string() : line.substr(open + 1, close - open - 1);
}

// The digits of the first "-r" of the whole line: a device name that holds "-r" gives its own
// text, and so it has always been reported.
std::string revisionDigits(const std::string& line) {
  const size_t option = line.find("-r");
  if (option == std::string::npos) return {};
  const size_t start = option + 2;
  return line.substr(start, line.find_first_of(" \t\r\n", start) - start);
}

}  // namespace

std::optional<PciRow> ProcPciParser::addLine(const char* line) {
  if (m_state == State::kDescription) {
    m_state = State::kBusLine;
    getCcLogHw()->traceMAX(kAt(), "hardware %s%s", "|", line);
    m_revision.clear();
    if (std::strstr(line, kSeparator) != nullptr) return takeDescription(line);
  } else if (m_state == State::kRawIds) {
    getCcLogHw()->traceMAX(kAt(), "hardware %s%s", "|", line);
    if (contains(m_classText, kUnknown)) m_classText.clear();
    const std::optional<int> vendor = idBehind(line, kVendorId);
    const std::optional<int> device = idBehind(line, kDeviceId);
    if (vendor && device) return takeRawIds(*vendor, *device);
  }
  takeBusLine(line);
  return std::nullopt;
}

void ProcPciParser::takeBusLine(const char* line) {
  const char* bus = behind(line, kBus);
  const char* device = behind(line, kDevice);
  if (bus == nullptr || device == nullptr || std::strstr(line, kFunction) == nullptr) return;
  m_bus = decimalAt(bus);
  m_device = decimalAt(device);
  m_state = State::kDescription;
  getCcLogHw()->traceMAX(kAt(), "hardware %s %u %s %u", "    |Bus", m_bus, "Device ", m_device);
}

std::optional<PciRow> ProcPciParser::takeDescription(std::string line) {
  const size_t separator = line.find(kSeparator);
  const size_t revision = line.find(kRevision, separator);
  m_revision = revisionText(
      revision == std::string::npos ? nullptr : line.c_str() + revision + std::strlen(kRevision));
  // The blank before the revision ends the description.
  if (revision != std::string::npos && revision - separator >= 3) line.resize(revision - 1);

  if (contains(line, kRawIdForm)) return takeName(nameOfRawIds(line));

  std::string classText = classTextOf(line, separator);
  if (line.find(kUnknown, separator) != std::string::npos) {
    m_classText = std::move(classText);
    m_state = State::kRawIds;
    return std::nullopt;
  }
  std::string name = line.substr(separator + std::strlen(kSeparator));
  if (!contains(classText, kUnknown)) name += " (" + classText + ")";
  return takeName(std::move(name));
}

std::optional<PciRow> ProcPciParser::takeName(std::string name) {
  getCcLogHw()->traceMAX(kAt(), "hardware %s %s %s %s", "Wrote:", name.c_str(),
                         "rev:", m_revision.c_str());
  if (isDuplicate(name)) return std::nullopt;
  return remember(std::move(name));
}

std::optional<PciRow> ProcPciParser::takeRawIds(int vendor, int device) {
  m_state = State::kBusLine;
  std::string name = pciName(vendor, device, m_classText);
  getCcLogHw()->traceMAX(kAt(), "hardware %s%s%s%s", "Wrote: >", name.c_str(), "< rev: >",
                         m_revision.c_str());
  if (isDuplicate(name) || name.empty()) return std::nullopt;
  return remember(std::move(name));
}

// Tables that list a function twice name it twice in a row.
bool ProcPciParser::isDuplicate(const std::string& name) const {
  if (m_bus != m_previousBus || m_device != m_previousDevice || name != m_previousName) {
    return false;
  }
  getCcLogHw()->traceMAX(kAt(), "hardware %s", "^^^^ skipped because it's a dupe");
  return true;
}

PciRow ProcPciParser::remember(std::string name) {
  m_previousBus = m_bus;
  m_previousDevice = m_device;
  m_previousName = name;
  return {std::move(name), m_revision};
}

std::optional<PciRow> parseLspciLine(const std::string& line) {
  CcLogWrapper* log = getCcLogHw();
  const std::string vendor = quotedText(line, kVendorQuote);
  log->traceMAX(kAt(), "hardware %s: vendor name = >%s<", kGroupName, vendor.c_str());
  const std::string device = quotedText(line, kDeviceQuote);
  log->traceMAX(kAt(), "hardware %s: device name = >%s<", kGroupName, device.c_str());
  const std::string digits = revisionDigits(line);
  log->traceMAX(kAt(), "hardware %s: revision = >%s<", kGroupName, digits.c_str());
  if (vendor.empty() || device.empty()) return std::nullopt;

  PciRow row{vendor + " " + device, digits.empty() ? "" : "0x" + digits};
  log->traceMAX(kAt(), "hardware %s: found PCI device: >%s rev. '%s'<", kGroupName,
                row.name.c_str(), row.revision.c_str());
  return row;
}

}  // namespace quenlor
