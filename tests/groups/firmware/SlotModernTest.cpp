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

Structure slot(const std::string& name, uint8_t kind, uint8_t width, uint8_t usage) {
  Structure out(9);
  return out.text(name).byte(kind).byte(width).byte(usage).byte(4).word(1).byte(4).byte(1);
}

TEST(SlotModernTest, slotsInTableOrder) {
  FakeHost machine;
  installFirmware(
      machine, {slot("PCIe 1", 0xB6, 0x0D, 4).word(0).byte(0x3B).byte(0x02),
                slot("M.2", 0x17, 0x0A, 3).word(0xFFFF).byte(0xFF).byte(0xFF), slot("", 2, 2, 2)});
  const auto rows = collectModern(group::kSlot, collectSlot).rows;
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], (test::RowValues{{1, "1"},
                                      {2, "PCIe 1"},
                                      {3, "pci express gen 3 x16"},
                                      {4, "x16"},
                                      {5, "in use"},
                                      {6, "long"},
                                      {7, "0000:3b:00.2"}}));
  EXPECT_EQ(
      rows[1],
      (test::RowValues{
          {1, "2"}, {2, "M.2"}, {3, "m.2 socket 3"}, {4, "x4"}, {5, "available"}, {6, "long"}}));
  EXPECT_EQ(rows[2], (test::RowValues{{1, "3"}, {2, ""}, {6, "long"}}));
}

TEST(SlotModernTest, segmentsAboveZeroAreTold) {
  FakeHost machine;
  installFirmware(machine, {slot("S", 0xA5, 8, 4).word(0x10A0).byte(0xFE).byte(0xFF)});
  EXPECT_EQ(valueOf(collectModern(group::kSlot, collectSlot).rows.at(0), 7), "10a0:fe:1f.7");
}

TEST(SlotModernTest, userIsRefused) {
  FakeHost machine;
  refuseFirmware(machine);
  EXPECT_EQ(collectModern(group::kSlot, collectSlot).outcome.status(), OutcomeStatus::kRefused);
}

}  // namespace
}  // namespace quenlor
