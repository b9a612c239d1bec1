// /proc/pci of any content, through the whole PCI group.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "groups/devices/PCIDeviceGroup.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  test::FakeHost machine;
  machine.files["/proc/pci"].assign(reinterpret_cast<const char*>(data), size);
  PCIDeviceGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  require(table != nullptr);
  require(machine.started.empty() && machine.openDescriptors() == 0);
  uint32_t index = 0;
  for (const test::RowValues& row : test::rowsOf(table.get())) {
    require(row.size() == 3);
    require(test::valueOf(row, 1) == std::to_string(++index));
    const std::string revision = test::valueOf(row, 3);
    require(revision.starts_with("0x") && revision.size() == 4);
  }
  return 0;
}
