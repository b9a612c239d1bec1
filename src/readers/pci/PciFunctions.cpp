#include "readers/pci/PciFunctions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <map>
#include <utility>

#include "base/NaturalOrder.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/idlist/IdList.h"
#include "readers/pci/PciFunctionFiles.h"
#include "readers/pci/PciLookup.h"

namespace quenlor {
namespace {

constexpr const char* kFunctions = "/sys/bus/pci/devices";
constexpr const char* kSlots = "/sys/bus/pci/slots";

// Where the distributions keep the list, the freshest first.
constexpr std::array kIdLists = {"/usr/share/hwdata/pci.ids", "/usr/share/misc/pci.ids",
                                 "/usr/share/pci.ids", "/var/lib/pciutils/pci.ids"};

uint8_t baseClassOf(const PciFunction& function) {
  return static_cast<uint8_t>(function.classCode >> 16);
}

uint8_t subclassOf(const PciFunction& function) {
  return static_cast<uint8_t>(function.classCode >> 8);
}

std::vector<PciFunction> readFunctions(Outcome& outcome) {
  std::vector<PciFunction> functions;
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(kFunctions, entries)) {
    const bool isRefused = fileStatusOf(errno) == FileStatus::kRefused;
    outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                 isRefused ? "PCI devices: refused" : "PCI devices: not shown by this kernel");
    return functions;
  }
  for (const DirectoryEntry& entry : entries) {
    const auto address = parsePciAddress(entry.name);
    auto function = address ? readPciFunction(*address, entry.name) : std::nullopt;
    if (function) functions.push_back(std::move(*function));
  }
  std::sort(functions.begin(), functions.end(),
            [](const auto& left, const auto& right) { return left.address < right.address; });
  return functions;
}

// Slots by the address of a device's first function. A device that two slots name has the one that
// people count first.
std::map<PciAddress, std::string> readSlots() {
  std::map<PciAddress, std::string> slots;
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(kSlots, entries)) return slots;
  for (const DirectoryEntry& entry : entries) {
    const auto text = readAttribute(std::string(kSlots) + "/" + entry.name + "/address");
    const auto address = parsePciAddress(text.value_or("") + ".0");
    if (!address) continue;
    const auto [slot, isNew] = slots.emplace(*address, entry.name);
    if (!isNew && naturalLess(entry.name, slot->second)) slot->second = entry.name;
  }
  return slots;
}

void setSlots(std::vector<PciFunction>& functions) {
  const std::map<PciAddress, std::string> slots = readSlots();
  for (PciFunction& function : functions) {
    PciAddress device = function.address;
    device.function = 0;
    const auto slot = slots.find(device);
    if (slot != slots.end()) function.slot = slot->second;
  }
}

IdNames readNames(const std::vector<PciFunction>& functions, Outcome& outcome) {
  IdNames names;
  for (const PciFunction& function : functions) {
    names.wantDevice(function.vendor, function.device);
    names.wantClass(baseClassOf(function), subclassOf(function));
  }
  if (!names.wantsNothing()) readIdList(kIdLists, "names of PCI devices", names, outcome);
  return names;
}

// The built-in tables are searched from their front, so once for each pair of ids.
class Names {
 public:
  explicit Names(IdNames list) : m_list(std::move(list)) {}

  void set(PciFunction& function) {
    const auto [known, isNew] = m_known.try_emplace({function.vendor, function.device});
    if (isNew) known->second = find(function.vendor, function.device);
    function.vendorName = known->second.first;
    function.deviceName = known->second.second;
    function.className = m_list.className(baseClassOf(function), subclassOf(function)).value_or("");
  }

 private:
  std::pair<std::string, std::string> find(uint16_t vendor, uint16_t device) const {
    std::string vendorName = m_list.vendor(vendor).value_or("");
    if (vendorName.empty()) vendorName = builtInVendorName(vendor);
    std::string deviceName = m_list.device(vendor, device).value_or("");
    if (deviceName.empty()) deviceName = builtInDeviceName(vendor, device);
    return {std::move(vendorName), std::move(deviceName)};
  }

  IdNames m_list;
  std::map<std::pair<uint16_t, uint16_t>, std::pair<std::string, std::string>> m_known;
};

std::string nameOrNumber(const std::string& name, const char* what, uint16_t id) {
  if (!name.empty()) return name;
  char number[16];
  std::snprintf(number, sizeof number, "%s %04x", what, id);
  return number;
}

}  // namespace

std::string PciFunction::name() const {
  return nameOrNumber(vendorName, "Vendor", vendor) + " " +
         nameOrNumber(deviceName, "Device", device);
}

const PciFunction* PciFunctions::find(const PciAddress& address) const {
  const auto found = std::lower_bound(
      functions.begin(), functions.end(), address,
      [](const PciFunction& item, const PciAddress& sought) { return item.address < sought; });
  return found == functions.end() || found->address != address ? nullptr : &*found;
}

PciFunctions readPciFunctions() {
  PciFunctions result;
  result.functions = readFunctions(result.outcome);
  if (result.functions.empty()) return result;
  setSlots(result.functions);
  Names names(readNames(result.functions, result.outcome));
  for (PciFunction& function : result.functions) names.set(function);
  return result;
}

}  // namespace quenlor
