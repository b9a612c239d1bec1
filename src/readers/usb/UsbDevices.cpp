#include "readers/usb/UsbDevices.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <tuple>
#include <utility>

#include "base/NaturalOrder.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/idlist/IdList.h"
#include "readers/usb/UsbFiles.h"

namespace quenlor {
namespace {

constexpr const char* kDevices = "/sys/bus/usb/devices";

// Where the distributions keep the list, the freshest first.
constexpr std::array kIdLists = {"/usr/share/hwdata/usb.ids", "/usr/share/misc/usb.ids",
                                 "/usr/share/usb.ids", "/var/lib/usbutils/usb.ids"};

struct NaturalOrder {
  bool operator()(const std::string& left, const std::string& right) const {
    return naturalLess(left, right);
  }
};

// Entries of devices, each with those of its interfaces ("1-2:1.0").
using Entries = std::map<std::string, std::vector<std::string>, NaturalOrder>;

Entries sorted(const std::vector<DirectoryEntry>& listing) {
  Entries entries;
  for (const DirectoryEntry& item : listing) {
    const std::string device = item.name.substr(0, item.name.find(':'));
    if (!isUsbDeviceName(device)) continue;
    std::vector<std::string>& interfaces = entries[device];
    if (device.size() != item.name.size()) interfaces.push_back(item.name);
  }
  for (auto& [device, interfaces] : entries) {
    std::sort(interfaces.begin(), interfaces.end(), NaturalOrder());
  }
  return entries;
}

// By place; one place may hold two devices, as a connector's old and new wires are two buses.
bool isBefore(const UsbDevice& left, const UsbDevice& right) {
  if (left.location != right.location) return naturalLess(left.location, right.location);
  return naturalLess(left.entry, right.entry);
}

std::vector<UsbDevice> readAll(Outcome& outcome) {
  std::vector<UsbDevice> devices;
  std::vector<DirectoryEntry> listing;
  if (!host().listEntries(kDevices, listing)) {
    const bool isRefused = fileStatusOf(errno) == FileStatus::kRefused;
    outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                 isRefused ? "USB devices: refused" : "USB devices: not shown by this kernel");
    return devices;
  }
  for (const auto& [entry, interfaces] : sorted(listing)) {
    if (auto device = readUsbDevice(entry, interfaces)) devices.push_back(std::move(*device));
  }
  std::sort(devices.begin(), devices.end(), isBefore);
  return devices;
}

bool lacksName(const UsbDevice& device) {
  return device.name.empty() || device.manufacturer.empty();
}

// The device's own strings hold; the list is opened only when one is missing.
void completeNames(std::vector<UsbDevice>& devices, Outcome& outcome) {
  IdNames names;
  for (const UsbDevice& device : devices) {
    if (lacksName(device)) names.wantDevice(device.vendor, device.product);
  }
  if (names.wantsNothing()) return;
  readIdList(kIdLists, "names of USB devices", names, outcome);
  for (UsbDevice& device : devices) {
    if (device.manufacturer.empty()) device.manufacturer = names.vendor(device.vendor).value_or("");
    if (device.name.empty()) device.name = names.device(device.vendor, device.product).value_or("");
  }
}

}  // namespace

const UsbDevice* UsbDevices::find(const std::string& entry) const {
  const auto found = std::find_if(devices.begin(), devices.end(),
                                  [&](const UsbDevice& device) { return device.entry == entry; });
  return found == devices.end() ? nullptr : &*found;
}

UsbDevices readUsbDevices() {
  UsbDevices result;
  result.devices = readAll(result.outcome);
  completeNames(result.devices, result.outcome);
  return result;
}

}  // namespace quenlor
