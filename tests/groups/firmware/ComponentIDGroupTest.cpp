#include "groups/firmware/ComponentIDGroup.h"

#include <gtest/gtest.h>

#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::RowValues;
using test::SharedTable;

TEST(ComponentIDGroup, identityOfTheMachineInItsOwnOrder) {
  const SharedTable shared(*test::firmwareNamed("server-2.4"));
  const auto rows = test::collect<ComponentIDGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(
      rows[0],
      (RowValues{{1, "Example Systems"}, {2, "Rack 2000"}, {4, "SN-2400"}, {3, "3"}, {7, "3"}}));
}

TEST(ComponentIDGroup, withoutFirmwareTheMachineIsLinux) {
  test::FakeHost machine;
  const auto rows = test::collect<ComponentIDGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0], (RowValues{{1, "Linux"}, {2, "Linux"}, {4, ""}, {3, ""}, {7, ""}}));
  EXPECT_EQ(machine.files.count("/dev/mem"), 0u);
}

TEST(ComponentIDGroup, groupAndVersion) {
  test::FakeHost machine;
  ComponentIDGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 1u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
}

TEST(ComponentIDGroup, totalMemoryIgnoresTheUnit) {
  test::FakeHost machine;
  struct sysinfo memory {};
  memory.totalram = 4096 * 1024;
  memory.mem_unit = 4096;
  machine.sysinfoResult = memory;
  EXPECT_EQ(ComponentIDGroup::totalPhysMemKB(), 4096u);
  machine.sysinfoResult.reset();
  EXPECT_EQ(ComponentIDGroup::totalPhysMemKB(), 0u);
}

TEST(ComponentIDGroup, traces) {
  const test::CapturedTraces traces;
  const SharedTable shared(*test::firmwareNamed("server-2.4"));
  test::collect<ComponentIDGroup>();
  for (const char* expected :
       {"hardware ComponentIDGroup", "Type retrieved for linux intel=3",
        "SerialNumber retrieved for linux intel=SN-2400",
        "Manufacturer retrieved for linux intel=Example Systems",
        "Version retrieved for linux intel=3", "Product retrieved for linux intel=Rack 2000"}) {
    EXPECT_TRUE(traces.contains(expected)) << expected;
  }
}

}  // namespace
}  // namespace quenlor
