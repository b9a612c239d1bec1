#include <gtest/gtest.h>

#include "groups/modern/Collectors.h"
#include "tests/groups/ModernRows.h"
#include "tests/groups/firmware/ModernFirmware.h"

namespace quenlor {
namespace {

using test::collectModern;
using test::FakeHost;
using test::Structure;
using test::valueOf;

using Values = test::RowValues;

test::RowValues rowOf(const std::vector<Structure>& structures) {
  FakeHost machine;
  installFirmware(machine, structures);
  return collectModern(group::kComponentId, collectComponentId).rows.at(0);
}

TEST(ComponentIDModernTest, namesOfTheSystem) {
  EXPECT_EQ(rowOf({Structure(1).text("Maker").text("Product").text("V1").text("S1")}),
            (Values{{1, "Maker"}, {2, "Product"}, {3, "V1"}, {4, "S1"}, {7, "V1"}}));
}

TEST(ComponentIDModernTest, machineThatNamesNothingIsLinux) {
  const Values expected = {{1, "Linux"}, {2, "Linux"}, {3, ""}, {4, ""}, {7, ""}};
  EXPECT_EQ(rowOf({Structure(127)}), expected);
  const FakeHost machine;
  const auto collected = collectModern(group::kComponentId, collectComponentId);
  EXPECT_EQ(collected.rows.at(0), expected);
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kNoSource);
}

TEST(ComponentIDModernTest, placeholdersNameNothing) {
  EXPECT_EQ(rowOf({Structure(1)
                       .text("Maker")
                       .text("System Product Name")
                       .text("System Version")
                       .text("0")}),
            (Values{{1, "Maker"}, {2, "Maker"}, {3, ""}, {4, ""}, {7, ""}}));
}

TEST(ComponentIDModernTest, oneMakerWritesTheTypeIntoTheProduct) {
  const Structure system =
      Structure(1).text("ZUM").text("Server 342 -[867041X]-").text("V5").text("S1");
  EXPECT_EQ(valueOf(rowOf({system}), 7), "8670");
  const Structure none = Structure(1).text("ZUM").text("Server").text("V5").text("S1");
  EXPECT_EQ(valueOf(rowOf({none}), 7), "");
}

TEST(ComponentIDModernTest, userHasNoSerialNumber) {
  FakeHost machine;
  refuseFirmware(machine);
  const auto collected = collectModern(group::kComponentId, collectComponentId);
  EXPECT_EQ(valueOf(collected.rows.at(0), 1), "Maker");
  EXPECT_EQ(valueOf(collected.rows.at(0), 4), "");
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
}

}  // namespace
}  // namespace quenlor
