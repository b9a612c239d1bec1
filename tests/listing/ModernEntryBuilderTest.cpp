#include "listing/ModernEntryBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr const char* kTwoTerabytes = "2000398934016";  // 1863.02 of 2^30

RowValues drive(const std::string& medium, const std::string& bytes,
                const std::string& removable = "N") {
  return {{"Index", "1"}, {"Medium", medium}, {"Size Bytes", bytes}, {"Removable", removable}};
}

TEST(RowsOfTest, eachRowBeginsWithTheFirstAttribute) {
  const auto rows = rowsOf(
      {{"Index", "1"}, {"Kind", "physical"}, {"Index", "2"}, {"Index", "3"}, {"Kind", "bond"}},
      "Index");
  EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("Index", "1"), Pair("Kind", "physical")),
                                ElementsAre(Pair("Index", "2")),
                                ElementsAre(Pair("Index", "3"), Pair("Kind", "bond"))));
}

TEST(RowsOfTest, whatStandsBeforeTheFirstRowBelongsToNone) {
  EXPECT_THAT(rowsOf({{"Kind", "physical"}}, "Index"), IsEmpty());
  EXPECT_THAT(rowsOf({}, "Index"), IsEmpty());
}

TEST(FixedDriveGigabytesTest, sumIsDividedOnce) {
  // Each alone loses a fraction; both together are one more.
  EXPECT_EQ(fixedDriveGigabytes({drive("ssd", "1610612736"), drive("disk", "1610612736")}), 3u);
  EXPECT_EQ(fixedDriveGigabytes({drive("ssd", kTwoTerabytes), drive("disk", kTwoTerabytes)}),
            3726u);
}

TEST(FixedDriveGigabytesTest, onlyDrivesThatAreBuiltInCount) {
  EXPECT_EQ(fixedDriveGigabytes({drive("ssd", "1073741824"), drive("disk", kTwoTerabytes, "Y"),
                                 drive("optical", kTwoTerabytes), drive("tape", kTwoTerabytes),
                                 drive("none", kTwoTerabytes)}),
            1u);
}

TEST(FixedDriveGigabytesTest, withoutDrivesNothingIsSaid) {
  EXPECT_EQ(fixedDriveGigabytes({}), std::nullopt);
  EXPECT_EQ(fixedDriveGigabytes({drive("optical", kTwoTerabytes)}), std::nullopt);
}

TEST(FixedDriveGigabytesTest, driveOfUnknownSizeAddsNothing) {
  EXPECT_EQ(fixedDriveGigabytes({{{"Index", "1"}, {"Medium", "ssd"}}}), 0u);
}

}  // namespace
}  // namespace quenlor
