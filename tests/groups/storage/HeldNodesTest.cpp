// Drives whose nodes do not open, since another process is busy with them.
#include <gtest/gtest.h>

#include <chrono>

#include "groups/storage/StorageGatherers.h"
#include "readers/storage/SgEnumeration.h"
#include "tests/readers/storage/HeldNodeHost.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using test::ScriptedSgDevice;

constexpr auto kShort = 400ms;
constexpr uint32_t kModel = 4;
constexpr uint32_t kTotalSize = 10;

class HeldNodesTest : public ::testing::Test {
 protected:
  HeldNodesTest() {
    for (int i = 0; i < 3; ++i) {
      const std::string number = std::to_string(i);
      const std::string disk = std::string("sd") + static_cast<char>('a' + i);
      devices[i].id = i;
      devices[i].product = "DISK " + number;
      machine.devices["/dev/sg" + number] = devices[i].genericNode();
      machine.devices["/dev/" + disk] = devices[i].diskNode({.bytes = 1ULL << 30});
      machine.directories["/dev"].push_back(disk);
    }
  }

  std::vector<test::RowValues> gather() {
    VelTable table(group::kStorage, 1);
    DriveEnumeration enumeration;
    StorageCollection collection{table, enumeration, 0, DeviceOpener(kShort)};
    gatherSCSIDriveInformation(collection);
    return test::rowsOf(&table);
  }

  ScriptedSgDevice devices[3];
  test::HeldNodeHost machine;
};

TEST_F(HeldNodesTest, genericNodeThatDoesNotOpenIsLeftOutAlone) {
  machine.hold("/dev/sg1");
  ::testing::internal::CaptureStderr();
  const auto rows = gather();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dev/sg1 did not open within 400 ms and is left out\n");
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(test::valueOf(rows[0], kModel), "DISK 0");
  EXPECT_EQ(test::valueOf(rows[1], kModel), "DISK 2");
}

TEST_F(HeldNodesTest, diskNodeThatDoesNotOpenCostsItsOwnDriveTheSizeOnlyAndOneLimit) {
  machine.hold("/dev/sda");
  ::testing::internal::CaptureStderr();
  const auto rows = gather();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dev/sda did not open within 400 ms and is left out\n");
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(test::valueOf(rows[0], kTotalSize), "0");
  EXPECT_EQ(test::valueOf(rows[1], kTotalSize), "1024");
  EXPECT_EQ(test::valueOf(rows[2], kTotalSize), "1024");
  EXPECT_EQ(machine.waiting(), 1);
}

}  // namespace
}  // namespace quenlor
