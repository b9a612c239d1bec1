#include "readers/mounts/SwapAreas.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

const char* const kHeader = "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n";

TEST(SwapAreas, devicesAndFilesAreTold) {
  const auto areas = parseSwapAreas(std::string(kHeader) +
                                    "/dev/dm-1                               partition\t1048572\t\t"
                                    "12\t\t-2\n"
                                    "/swap.img file 524284 0 100\n");
  ASSERT_EQ(areas.size(), 2u);
  EXPECT_EQ(areas[0].area.name, "/dev/dm-1");
  EXPECT_TRUE(areas[0].isDevice);
  EXPECT_EQ(areas[0].area.size, 1048572u);
  EXPECT_EQ(areas[0].area.used, 12u);
  EXPECT_EQ(areas[1].area.name, "/swap.img");
  EXPECT_FALSE(areas[1].isDevice);
}

TEST(SwapAreas, namesAreDecodedAndRemovedFilesMarked) {
  const auto areas = parseSwapAreas(std::string(kHeader) +
                                    "/my\\040swap\\043\\134 file 10 4 -1\n"
                                    "/old\\040(deleted) file 10 4 -1\n");
  ASSERT_EQ(areas.size(), 2u);
  EXPECT_EQ(areas[0].area.name, "/my swap#\\");
  EXPECT_FALSE(areas[0].isDeleted);
  EXPECT_EQ(areas[1].area.name, "/old");
  EXPECT_TRUE(areas[1].isDeleted);
}

TEST(SwapAreas, headerAloneAndRubbishAreNoAreas) {
  for (const std::string& text :
       {std::string(kHeader), std::string(), std::string("\n\n"), std::string("/dev/a partition\n"),
        std::string("/dev/a partition ten 4 -1\n"), std::string("/dev/a partition 10 -4 -1\n"),
        std::string("/dev/a other 10 4 -1\n"), std::string("\0\0\n", 3),
        std::string("/dev/a partition 99999999999999999999999 0 -1\n")}) {
    EXPECT_TRUE(parseSwapAreas(text).empty()) << text;
  }
}

TEST(SwapAreas, kernelWithoutSwappingHasNone_refusedListIsSaid) {
  test::FakeHost machine;
  EXPECT_TRUE(readSwapAreas().areas.empty());
  EXPECT_EQ(readSwapAreas().outcome.status(), OutcomeStatus::kComplete);
  machine.openErrors["/proc/swaps"] = EACCES;
  EXPECT_EQ(readSwapAreas().outcome.status(), OutcomeStatus::kPartial);
}

TEST(SwapAreas, listIsReadOnce) {
  test::FakeHost machine;
  machine.files["/proc/swaps"] = std::string(kHeader) + "/dev/sda2 partition 100 0 -2\n";
  EXPECT_EQ(readSwapAreas().areas.size(), 1u);
  EXPECT_EQ(machine.opened.size(), 1u);
}

}  // namespace
}  // namespace quenlor
