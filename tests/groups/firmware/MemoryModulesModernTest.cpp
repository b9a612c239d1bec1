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

constexpr char kAbsent[] = "(absent)";

Structure array(uint64_t mebibytes, uint16_t slots, uint8_t use = 3) {
  Structure out(16);
  out.byte(3).byte(use).byte(6).dword(0x80000000).word(0xFFFE).word(slots);
  return out.qword(mebibytes << 20);
}

struct Module {
  std::string locator = "DIMM A1", maker = "Maker", serial = "S-1";
  uint16_t array = 0;
  uint32_t mebibytes = 32768;
  uint8_t formFactor = 9, type = 0x22, technology = 3;

  Structure encoded() const {
    const bool isLarge = mebibytes >= 0x7FFF;
    Structure out(17);
    out.word(array).word(0xFFFE).word(80).word(64).word(isLarge ? 0x7FFFu : mebibytes);
    out.byte(formFactor)
        .byte(0)
        .text(locator)
        .text("P0 CHANNEL A")
        .byte(type)
        .word(0x80)
        .word(4800);
    out.text(maker).text(serial).text("Tag").text("Part  ").byte(2).dword(isLarge ? mebibytes : 0);
    return out.word(4400).word(1100).word(1100).word(1100).byte(technology);
  }
};

test::ModernRows collected(const std::vector<Structure>& structures,
                           test::Version version = {3, 6}) {
  FakeHost machine;
  installFirmware(machine, structures, version);
  return collectModern(group::kMemoryModules, collectMemoryModules);
}

TEST(MemoryModulesModernTest, moduleOf32GBIsToldInFull) {
  const auto rows = collected({array(1 << 20, 16), Module{}.encoded()}).rows;
  ASSERT_EQ(rows.size(), 1u);
  const test::RowValues expected = {{1, "1"},         {2, "32768"},
                                    {3, "65536"},     {4, "DIMM A1/P0 CHANNEL A"},
                                    {5, "DIMM"},      {6, "Synchronous DDR5"},
                                    {101, "Maker"},   {102, "S-1"},
                                    {103, "Part"},    {104, "Tag"},
                                    {105, "DDR5"},    {106, "dram"},
                                    {107, "4800"},    {108, "4400"},
                                    {109, "64"},      {110, "80"},
                                    {111, "2"},       {112, "1100"},
                                    {113, "DIMM A1"}, {114, "P0 CHANNEL A"},
                                    {115, "1"}};
  EXPECT_EQ(rows[0], expected);
}

TEST(MemoryModulesModernTest, emptySlotHasOnlyItsPlace) {
  const auto rows = collected({array(1024, 2), Module{.mebibytes = 0, .type = 2}.encoded()}).rows;
  const test::RowValues expected = {
      {1, "1"},    {2, "0"},           {3, "512"},       {4, "DIMM A1/P0 CHANNEL A"},
      {5, "DIMM"}, {6, "Synchronous"}, {113, "DIMM A1"}, {114, "P0 CHANNEL A"},
      {115, "1"}};
  EXPECT_EQ(rows.at(0), expected);
}

TEST(MemoryModulesModernTest, modulesNameTheirArray) {
  const auto rows = collected({array(1024, 1), array(1024, 1), Module{.array = 1}.encoded(),
                               Module{.array = 0}.encoded(), Module{.array = 9}.encoded()})
                        .rows;
  EXPECT_EQ(valueOf(rows.at(0), 115), "2");
  EXPECT_EQ(valueOf(rows.at(1), 115), "1");
  EXPECT_EQ(valueOf(rows.at(2), 115), kAbsent);
  EXPECT_EQ(valueOf(rows.at(2), 1), "3");
}

TEST(MemoryModulesModernTest, placeholdersAreUnknown) {
  const auto rows =
      collected({array(1024, 1), Module{.maker = "Undefined", .serial = "00000000"}.encoded()})
          .rows;
  EXPECT_EQ(valueOf(rows.at(0), 101), kAbsent);
  EXPECT_EQ(valueOf(rows.at(0), 102), kAbsent);
  EXPECT_EQ(valueOf(rows.at(0), 103), "Part");
}

TEST(MemoryModulesModernTest, typesThatAreUnknownHaveNoGeneration) {
  const auto rows = collected({array(1024, 1), Module{.type = 2, .technology = 2}.encoded()}).rows;
  EXPECT_EQ(valueOf(rows.at(0), 105), kAbsent);
  EXPECT_EQ(valueOf(rows.at(0), 106), kAbsent);
  EXPECT_EQ(valueOf(rows.at(0), 6), "Synchronous");
}

TEST(MemoryModulesModernTest, oldTablesHaveModulesInstead) {
  const auto rows =
      collected({Structure(6)
                     .text("J1")
                     .byte(0)
                     .byte(10)
                     .word(1 << 8 | 1 << 6 | 1 << 10)
                     .byte(8)
                     .byte(8)
                     .byte(0),
                 Structure(6).text("J2").byte(0).byte(10).word(0).byte(0x7F).byte(0x7F).byte(0)},
                {2, 0})
          .rows;
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(
      rows[0],
      (test::RowValues{{1, "1"}, {2, "256"}, {3, "0"}, {4, "J1"}, {5, "DIMM"}, {6, "ECC SDRAM"}}));
  EXPECT_EQ(rows[1], (test::RowValues{{1, "2"}, {2, "0"}, {3, "0"}, {4, "J2"}, {5, ""}, {6, ""}}));
}

TEST(MemoryModulesModernTest, userIsRefused) {
  FakeHost machine;
  refuseFirmware(machine);
  const auto refused = collectModern(group::kMemoryModules, collectMemoryModules);
  EXPECT_TRUE(refused.rows.empty());
  EXPECT_EQ(refused.outcome.status(), OutcomeStatus::kRefused);
  EXPECT_EQ(refused.outcome.reason(), "firmware table: not root");
}

TEST(MemoryModulesModernTest, machineWithoutFirmwareIsNoSource) {
  const FakeHost machine;
  EXPECT_EQ(collectModern(group::kMemoryModules, collectMemoryModules).outcome.status(),
            OutcomeStatus::kNoSource);
}

}  // namespace
}  // namespace quenlor
