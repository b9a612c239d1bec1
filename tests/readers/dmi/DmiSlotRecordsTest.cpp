#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

Structure slot(uint16_t segment, uint8_t bus, uint8_t deviceAndFunction) {
  Structure out(9);
  out.text("PCIe 1").byte(0xB6).byte(0x0D).byte(4).byte(4).word(7).byte(0x0C).byte(1);
  return out.word(segment).byte(bus).byte(deviceAndFunction);
}

DmiSlot decodedSlot(const Structure& structure) { return test::decoded({structure}).slots.at(0); }

TEST(DmiSlotRecordsTest, slot) {
  const DmiSlot found = decodedSlot(slot(1, 0x3B, 0x1A));
  EXPECT_EQ(found.designation, "PCIe 1");
  EXPECT_EQ(found.kind, 0xB6);
  EXPECT_EQ(found.width, 0x0D);
  EXPECT_EQ(found.usage, 4);
  EXPECT_EQ(found.length, 4);
  EXPECT_EQ(found.id, 7);
  ASSERT_TRUE(found.address);
  EXPECT_EQ(found.address->segment, 1);
  EXPECT_EQ(found.address->bus, 0x3B);
  EXPECT_EQ(found.address->device, 3);
  EXPECT_EQ(found.address->function, 2);
}

TEST(DmiSlotRecordsTest, slotHasNoAddressOnlyWhenAllIsOnes) {
  EXPECT_FALSE(decodedSlot(slot(0xFFFF, 0xFF, 0xFF)).address);
  EXPECT_TRUE(decodedSlot(slot(0, 0xFF, 0xFF)).address);
  EXPECT_TRUE(decodedSlot(slot(0xFFFF, 0, 0)).address);
}

TEST(DmiSlotRecordsTest, slotOf20HasNoAddress) {
  Structure old(9);
  old.text("PCI 1").byte(6).byte(5).byte(3).byte(4).word(1).byte(4);
  EXPECT_EQ(decodedSlot(old).designation, "PCI 1");
  EXPECT_FALSE(decodedSlot(old).address);
}

}  // namespace
}  // namespace quenlor
