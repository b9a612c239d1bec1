// Output of "lspci -m" of any content and end, through the whole PCI group. The first byte is the
// signal that ends the command.
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
  if (size == 0) return 0;
  test::FakeHost machine;
  machine.commands["/sbin/lspci -m 2>/dev/null"] = {
      std::string(reinterpret_cast<const char*>(data) + 1, size - 1), data[0] & 0x7F};
  PCIDeviceGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  require(table != nullptr);
  require(machine.openCommands() == 0);
  uint32_t index = 0;
  for (const test::RowValues& row : test::rowsOf(table.get())) {
    require(row.size() == 3);
    require(test::valueOf(row, 1) == std::to_string(++index));
    require(test::valueOf(row, 2).size() >= 3);
    const std::string revision = test::valueOf(row, 3);
    require(revision.empty() || (revision.starts_with("0x") && revision.size() > 2));
  }
  return 0;
}
