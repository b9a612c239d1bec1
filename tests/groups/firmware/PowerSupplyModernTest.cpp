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

constexpr uint16_t kPresent = 1 << 1;
constexpr uint16_t kUnplugged = 1 << 2;
constexpr uint16_t kOk = 3 << 7;

Structure supply(uint16_t watts, unsigned bits) {
  Structure out(39);
  out.byte(1)
      .text("PSU 1 FRU")
      .text("PWR SPLY")
      .text("Maker")
      .text("PS-1")
      .byte(0)
      .text("PN-1")
      .byte(0);
  return out.word(watts).word(bits);
}

test::RowValues rowOf(const Structure& structure) {
  FakeHost machine;
  installFirmware(machine, {structure});
  return collectModern(group::kPowerSupply, collectPowerSupply).rows.at(0);
}

TEST(PowerSupplyModernTest, supply) {
  EXPECT_EQ(rowOf(supply(1100, kPresent | kOk)), (test::RowValues{{1, "1"},
                                                                  {2, "PSU 1 FRU"},
                                                                  {3, "PWR SPLY"},
                                                                  {4, "Maker"},
                                                                  {5, "PN-1"},
                                                                  {6, "PS-1"},
                                                                  {7, "1100"},
                                                                  {8, "ok"}}));
}

TEST(PowerSupplyModernTest, status) {
  EXPECT_EQ(valueOf(rowOf(supply(1, kOk)), 8), "absent");
  EXPECT_EQ(valueOf(rowOf(supply(1, kPresent | kUnplugged | kOk)), 8), "unplugged");
  EXPECT_EQ(valueOf(rowOf(supply(1, kPresent | 4 << 7)), 8), "non-critical");
  EXPECT_EQ(valueOf(rowOf(supply(1, kPresent | 5 << 7)), 8), "critical");
  EXPECT_EQ(valueOf(rowOf(supply(1, kPresent | 1 << 7)), 8), "other");
  EXPECT_EQ(valueOf(rowOf(supply(1, kPresent | 2 << 7)), 8), "(absent)");
}

TEST(PowerSupplyModernTest, unknownPowerIsLeftOut) {
  EXPECT_EQ(valueOf(rowOf(supply(0x8000, kPresent)), 7), "(absent)");
}

TEST(PowerSupplyModernTest, userIsRefused) {
  FakeHost machine;
  refuseFirmware(machine);
  EXPECT_EQ(collectModern(group::kPowerSupply, collectPowerSupply).outcome.status(),
            OutcomeStatus::kRefused);
}

}  // namespace
}  // namespace quenlor
