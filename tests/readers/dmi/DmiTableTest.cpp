#include "readers/dmi/DmiTable.h"

#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

Structure system(const std::string& serial) {
  return Structure(1).byte(0).byte(0).byte(0).text(serial);
}

TEST(DmiTableTest, tellsVersionAndSource) {
  const DmiTable table = test::decoded({Structure(127)}, {3, 5});
  EXPECT_EQ(table.source, DmiSource::kTable);
  EXPECT_EQ(table.version, (DmiVersion{3, 5}));
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
}

TEST(DmiTableTest, entryPointThatIsNoneIsNoSource) {
  const DmiTable table = decodeDmi("_SM4_", test::tableOf({system("S")}));
  EXPECT_EQ(table.source, DmiSource::kNone);
  EXPECT_FALSE(table.system);
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(table.outcome.reason(), "firmware table: no entry point");
}

TEST(DmiTableTest, firstOfASingleTypeWins) {
  const Structure bios = Structure(0).text("First").raw(std::string(13, '\0'));
  const Structure other = Structure(0).text("Second").raw(std::string(13, '\0'));
  const DmiTable table = test::decoded({system("first"), bios, system("second"), other});
  EXPECT_EQ(table.system->serial, "first");
  EXPECT_EQ(table.bios->vendor, "First");
}

TEST(DmiTableTest, typesThatAreMissingAreAbsent) {
  const DmiTable table = test::decoded({Structure(127)});
  EXPECT_FALSE(table.bios);
  EXPECT_FALSE(table.system);
  EXPECT_TRUE(table.boards.empty());
  EXPECT_FALSE(table.enclosure);
  EXPECT_FALSE(table.tpm);
  EXPECT_FALSE(table.management);
  EXPECT_FALSE(table.hardwareSecurity);
}

TEST(DmiTableTest, structuresComeInAnyOrder) {
  const DmiTable table = test::decoded({Structure(24).byte(0x40), system("S")});
  EXPECT_EQ(table.hardwareSecurity, 0x40);
  EXPECT_EQ(table.system->serial, "S");
}

TEST(DmiTableTest, listsAreComplete) {
  std::vector<Structure> structures(1500, Structure(17).raw(std::string(17, '\0')));
  structures.insert(structures.end(), 200, Structure(4).raw(std::string(22, '\0')));
  structures.insert(structures.end(), 30, Structure(9).raw(std::string(8, '\0')));
  const DmiTable table = test::decoded(structures);
  EXPECT_EQ(table.memoryDevices.size(), 1500u);
  EXPECT_EQ(table.processors.size(), 200u);
  EXPECT_EQ(table.slots.size(), 30u);
}

TEST(DmiTableTest, structuresBehindTheEndCountInOldTablesOnly) {
  const std::string table = test::tableOf({Structure(127), system("S")});
  const auto size = static_cast<uint16_t>(table.size());
  EXPECT_EQ(decodeDmi(test::entryPoint32({2, 4}, size, 2), table).system->serial, "S");
  EXPECT_EQ(decodeDmi(test::entryPointOld(0x20, size, 2), table).system->serial, "S");
  EXPECT_FALSE(decodeDmi(test::entryPoint64({3, 0}, size), table).system);
}

TEST(DmiTableTest, damageLeavesWhatCameBeforeAndIsTold) {
  const std::string table = test::tableOf({system("S")}) + std::string("\x11\x02\x01\x00", 4);
  const DmiTable decoded = test::decoded(table);
  EXPECT_EQ(decoded.system->serial, "S");
  EXPECT_EQ(decoded.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(decoded.outcome.reason(), "firmware table: damaged");
}

struct ShortestLength {
  uint8_t type;
  size_t length;
};

class DmiShortestLength : public testing::TestWithParam<ShortestLength> {};

size_t recordsIn(const DmiTable& table) {
  const size_t single = table.bios.has_value() + table.system.has_value() +
                        table.enclosure.has_value() + table.memoryController.has_value() +
                        table.hardwareSecurity.has_value() + table.management.has_value() +
                        table.tpm.has_value();
  return single + table.boards.size() + table.processors.size() + table.memoryModules.size() +
         table.caches.size() + table.slots.size() + table.memoryArrays.size() +
         table.memoryDevices.size() + table.powerSupplies.size();
}

// Shorter ones are what a derailed walk meets.
TEST_P(DmiShortestLength, isTheOneOfTheFirstVersion) {
  const auto count = [](size_t length) {
    return recordsIn(
        test::decoded({Structure(GetParam().type).raw(std::string(length - 4, '\1'))}));
  };
  EXPECT_EQ(count(GetParam().length), 1u);
  EXPECT_EQ(count(GetParam().length - 1), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    DmiTableTest, DmiShortestLength,
    testing::Values(ShortestLength{0, 0x12}, ShortestLength{1, 0x08}, ShortestLength{2, 0x08},
                    ShortestLength{3, 0x09}, ShortestLength{4, 0x1A}, ShortestLength{5, 0x0F},
                    ShortestLength{6, 0x0C}, ShortestLength{7, 0x0F}, ShortestLength{9, 0x0C},
                    ShortestLength{16, 0x0F}, ShortestLength{17, 0x15}, ShortestLength{24, 0x05},
                    ShortestLength{38, 0x10}, ShortestLength{39, 0x10}, ShortestLength{43, 0x1B}));

}  // namespace
}  // namespace quenlor
