#include "tests/groups/firmware/ModernFirmware.h"

#include <cerrno>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor::test {
namespace {

constexpr char kEntryPoint[] = "/sys/firmware/dmi/tables/smbios_entry_point";
constexpr char kTable[] = "/sys/firmware/dmi/tables/DMI";

}  // namespace

void installFirmware(FakeHost& machine, const std::vector<Structure>& structures, Version version) {
  machine.files[kTable] = tableOf(structures);
  const auto size = static_cast<uint32_t>(machine.files[kTable].size());
  machine.files[kEntryPoint] = entryPoint64(version, size);
}

void refuseFirmware(FakeHost& machine) {
  machine.user = 1000;
  machine.openErrors[kEntryPoint] = EACCES;
  machine.files["/sys/class/dmi/id/sys_vendor"] = "Maker\n";
  machine.files["/sys/class/dmi/id/product_name"] = "Product\n";
  machine.files["/sys/class/dmi/id/product_serial"] = "S\n";
  machine.openErrors["/sys/class/dmi/id/product_serial"] = EACCES;
  machine.files["/sys/class/dmi/id/chassis_type"] = "9\n";
}

}  // namespace quenlor::test
