#include "groups/system/RegionalGroup.h"

#include <gtest/gtest.h>

#include <clocale>

#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::FakeHost;
using test::RowValues;

class RegionalGroupTest : public ::testing::Test {
 protected:
  FakeHost machine;
};

TEST_F(RegionalGroupTest, zoneEastOfUtcIsPlus) {
  machine.zone = {-3600, true, "CET", "CEST"};
  machine.locales[LC_CTYPE] = "de_DE.UTF-8";
  EXPECT_EQ(collect<RegionalGroup>(),
            (std::vector<RowValues>{
                {{1, "de_DE.UTF-8"}, {2, "3600"}, {3, "1"}, {4, "1"}, {5, "CET"}, {6, "CEST"}}}));
}

TEST_F(RegionalGroupTest, zoneWestOfUtcIsMinus) {
  machine.zone = {18000, false, "EST", "EST"};
  EXPECT_EQ(collect<RegionalGroup>()[0],
            (RowValues{{1, "C"}, {2, "18000"}, {3, "2"}, {4, "2"}, {5, "EST"}, {6, "EST"}}));
}

TEST_F(RegionalGroupTest, utcIsPlusZero) {
  machine.zone = {0, false, "UTC", "UTC"};
  const RowValues row = collect<RegionalGroup>()[0];
  EXPECT_EQ(test::valueOf(row, 2), "0");
  EXPECT_EQ(test::valueOf(row, 3), "1");
}

TEST_F(RegionalGroupTest, unknownLocaleIsEmpty) {
  machine.locales[LC_CTYPE] = std::nullopt;
  EXPECT_EQ(test::valueOf(collect<RegionalGroup>()[0], 1), "");
}

}  // namespace
}  // namespace quenlor
