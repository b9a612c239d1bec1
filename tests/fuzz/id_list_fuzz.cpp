// Lists of PCI and USB ids, events of PCI functions and names of devices, of any content.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "readers/devicepath/DevicePath.h"
#include "readers/idlist/IdList.h"
#include "readers/pci/PciFunctionFiles.h"
#include "readers/resolver/Resolver.h"
#include "readers/usb/UsbFiles.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

// A name is a piece of one line of the list.
void checkName(const std::string& list, const std::optional<std::string>& name) {
  if (!name) return;
  require(!name->empty() && name->find('\n') == std::string::npos);
  require(list.find(*name) != std::string::npos);
}

void checkList(const std::string& list) {
  IdNames names;
  names.wantDevice(0x8086, 0x10D3);
  names.wantDevice(0x1AF4, 0x1000);
  names.wantClass(0x02, 0x00);
  names.take(list);
  names.endList();
  checkName(list, names.vendor(0x8086));
  checkName(list, names.device(0x8086, 0x10D3));
  checkName(list, names.device(0x1AF4, 0x1000));
  checkName(list, names.className(0x02, 0x00));
  require(!names.vendor(0x1234));
}

void checkPath(const std::string& path) {
  const auto address = pciAddressOf(path);
  require(!address || parsePciAddress(address->text()) == address);
  const std::string device = usbDeviceOf(path);
  require(device.empty() || isUsbDeviceName(device));
  usbLocation(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  checkList(bytes);
  checkPath(bytes);
  const auto function = parsePciEvent(bytes);
  require(!function || function->classCode <= 0xFFFFFF);
  parseUsbSpeed(bytes);
  const ResolverSettings settings = parseResolverSettings(bytes);
  for (const std::string& server : settings.nameServers) require(!server.empty());
  domainInHosts(bytes, "web1");
  return 0;
}
