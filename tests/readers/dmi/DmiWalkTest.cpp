#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "readers/dmi/DmiStructure.h"
#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DmiEntryPoint k64{.version = {3, 2},
                            .tableAddress = 0,
                            .tableLength = 0xFFFFFFFF,
                            .structureCount = {},
                            .endsAtEndStructure = true};

DmiEntryPoint counted(uint32_t count) {
  return {.version = {2, 4},
          .tableAddress = 0,
          .tableLength = 0xFFFF,
          .structureCount = count,
          .endsAtEndStructure = false};
}

std::vector<int> typesIn(const DmiWalk& walk) {
  std::vector<int> types;
  for (const DmiStructure& structure : walk.structures) types.push_back(structure.type());
  return types;
}

Structure named(uint8_t type, const std::string& name) { return Structure(type).text(name); }

TEST(DmiWalkTest, structuresAreSplitAtTheirStrings) {
  const std::string table =
      test::tableOf({Structure(200).dword(5), named(201, "one"),
                     Structure(202).text("one").text("two").word(7), Structure(127)});
  const DmiWalk walk = walkDmiTable(table, k64);
  ASSERT_EQ(walk.structures.size(), 4u);
  EXPECT_FALSE(walk.isDamaged);
  EXPECT_THAT(typesIn(walk), ElementsAre(200, 201, 202, 127));
  EXPECT_EQ(walk.structures[0].dword(4), 5u);
  EXPECT_EQ(walk.structures[1].text(4), "one");
  EXPECT_EQ(walk.structures[2].text(5), "two");
  EXPECT_EQ(walk.structures[2].word(6), 7u);
  EXPECT_EQ(walk.structures[2].handle(), 2u);
}

TEST(DmiWalkTest, fieldIsThereOnlyWhenTheLengthCoversAllOfIt) {
  const std::string table = test::tableOf({Structure(200).byte(1).byte(2).byte(3)});
  const DmiWalk walk = walkDmiTable(table, k64);
  const DmiStructure& structure = walk.structures.at(0);
  EXPECT_EQ(structure.byte(6), 3u);
  EXPECT_EQ(structure.word(5), 0x0302u);
  EXPECT_FALSE(structure.byte(7));
  EXPECT_FALSE(structure.word(6));
  EXPECT_FALSE(structure.dword(4));
  EXPECT_FALSE(structure.qword(0));
  EXPECT_FALSE(structure.bytes(4, 4));
  EXPECT_FALSE(structure.byte(SIZE_MAX));
  EXPECT_FALSE(structure.qword(SIZE_MAX - 3));
}

TEST(DmiWalkTest, stringNumberBeyondTheStringsIsNone) {
  const std::string table =
      test::tableOf({Structure(200).byte(1).byte(2).byte(0).byte(255).strings({"x"})});
  const DmiWalk walk = walkDmiTable(table, k64);
  const DmiStructure& structure = walk.structures.at(0);
  EXPECT_EQ(structure.text(4), "x");
  EXPECT_FALSE(structure.text(5));
  EXPECT_FALSE(structure.text(6));
  EXPECT_FALSE(structure.text(7));
}

TEST(DmiWalkTest, allStringsOfALargeSetAreFound) {
  std::vector<std::string> texts;
  for (int i = 1; i <= 255; ++i) texts.push_back("string " + std::to_string(i));
  const std::string table = test::tableOf({Structure(200).byte(255).byte(16).strings(texts)});
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_EQ(walk.structures.at(0).text(4), "string 255");
  EXPECT_EQ(walk.structures.at(0).text(5), "string 16");
}

TEST(DmiWalkTest, endOfTableEndsOnlyTablesWithoutCount) {
  const std::string table = test::tableOf({named(200, "a"), Structure(127), named(201, "b")});
  EXPECT_THAT(typesIn(walkDmiTable(table, k64)), ElementsAre(200, 127));
  EXPECT_THAT(typesIn(walkDmiTable(table, counted(3))), ElementsAre(200, 127, 201));
  EXPECT_THAT(typesIn(walkDmiTable(table, counted(2))), ElementsAre(200, 127));
}

TEST(DmiWalkTest, countThatIsTooLargeIsNoDamage) {
  const std::string table = test::tableOf({named(200, "a"), Structure(127)});
  const DmiWalk walk = walkDmiTable(table, counted(9));
  EXPECT_THAT(typesIn(walk), ElementsAre(200, 127));
  EXPECT_FALSE(walk.isDamaged);
}

TEST(DmiWalkTest, missingEndOfTableIsNoDamage) {
  const std::string table = test::tableOf({named(200, "a"), named(201, "b")});
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), ElementsAre(200, 201));
  EXPECT_FALSE(walk.isDamaged);
}

TEST(DmiWalkTest, announcedLengthCutsTheTable) {
  const std::string table = test::tableOf({named(200, "a"), named(201, "b")});
  DmiEntryPoint entry = k64;
  entry.tableLength = static_cast<uint32_t>(table.size() / 2);
  EXPECT_THAT(typesIn(walkDmiTable(table, entry)), ElementsAre(200));
}

TEST(DmiWalkTest, zerosBehindTheLastStructureAreNoDamage) {
  const std::string table = test::tableOf({named(200, "a")}) + std::string(64, '\0');
  const DmiWalk walk = walkDmiTable(table, counted(5));
  EXPECT_THAT(typesIn(walk), ElementsAre(200));
  EXPECT_FALSE(walk.isDamaged);
}

TEST(DmiWalkTest, endOfTableThatIsCutIsNoDamage) {
  const std::string table =
      test::tableOf({named(200, "a")}) + std::string("\x7F\x1B\x02\x00\x00", 5);
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), ElementsAre(200));
  EXPECT_TRUE(walk.isDamaged);  // a header of which the fields are missing is no structure
  const std::string unterminated =
      test::tableOf({named(200, "a")}) + std::string("\x7F\x04\x02\x00\x00", 5);
  EXPECT_FALSE(walkDmiTable(unterminated, k64).isDamaged);
}

TEST(DmiWalkTest, lengthBelowAHeaderEndsTheWalk) {
  const std::string table =
      test::tableOf({named(200, "a"), Structure(201).claimLength(3), named(202, "b")});
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), ElementsAre(200));
  EXPECT_TRUE(walk.isDamaged);
}

TEST(DmiWalkTest, lengthBeyondTheTableEndsTheWalk) {
  const std::string table = test::tableOf({named(200, "a"), Structure(201).claimLength(200)});
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), ElementsAre(200));
  EXPECT_TRUE(walk.isDamaged);
}

TEST(DmiWalkTest, stringSetThatTheTableCutsIsKept) {
  std::string table = test::tableOf({Structure(200).text("first").text("second")});
  table.resize(table.size() - 4);
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_EQ(walk.structures.at(0).text(4), "first");
  EXPECT_EQ(walk.structures.at(0).text(5), "seco");
  EXPECT_TRUE(walk.isDamaged);
}

TEST(DmiWalkTest, stringsAreNotReadIntoTheNextStructure) {
  const std::string table =
      test::tableOf({Structure(200).byte(2).strings({"only"}), named(201, "b")});
  EXPECT_FALSE(walkDmiTable(table, k64).structures.at(0).text(4));
}

// One zero instead of two: the walk takes the next structure for strings and lands inside it.
TEST(DmiWalkTest, derailedWalkEndsAndIsDamaged) {
  std::string first = Structure(200).dword(0xFFFFFFFF).encode(1);
  first.pop_back();
  const std::string second = Structure(201).byte(1).word(0).byte(2).strings({"text"}).encode(2);
  const std::string table = first + second;
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), testing::Not(testing::Contains(201)));
  EXPECT_TRUE(walk.isDamaged);
}

TEST(DmiWalkTest, otherTablesWrittenOverTheEndEndTheWalk) {
  const std::string start = test::tableOf({named(200, "a"), named(201, "b")});
  for (const char* anchor : {"_MP_", "PCMP"}) {
    const std::string table = start + anchor + std::string(300, '\x11');
    const DmiWalk walk = walkDmiTable(table, k64);
    EXPECT_THAT(typesIn(walk), ElementsAre(200, 201));
    EXPECT_TRUE(walk.isDamaged);
  }
}

TEST(DmiWalkTest, inactiveStructuresAreSkippedButCounted) {
  const std::string table = test::tableOf({named(126, "x"), named(200, "a"), named(201, "b")});
  EXPECT_THAT(typesIn(walkDmiTable(table, counted(2))), ElementsAre(200));
}

TEST(DmiWalkTest, unknownTypesAreSkippedByLengthAndStrings) {
  const std::string table = test::tableOf({named(77, "x"), named(125, "y"), named(200, "a")});
  EXPECT_THAT(typesIn(walkDmiTable(table, k64)), ElementsAre(77, 125, 200));
}

TEST(DmiWalkTest, managementDeviceWithFiveCharactersInItsLengthIsMended) {
  const std::string fields("\x01\x03\x00\x00\x00\x00\x00", 7);
  const Structure device = Structure(34).raw(fields).strings({"LM78"});
  const std::string right = device.encode(1);
  Structure wrong = Structure(34).raw(fields).strings({"LM78-A-1"});
  wrong.claimLength(0x10);
  const std::string table = wrong.encode(1) + named(200, "a").encode(2);
  const DmiWalk walk = walkDmiTable(table, k64);
  EXPECT_THAT(typesIn(walk), ElementsAre(34, 200));
  EXPECT_EQ(walk.structures[0].length(), 0x0B);
  EXPECT_EQ(walk.structures[0].text(4), "LM78-A-1");
  EXPECT_EQ(walkDmiTable(right, k64).structures.at(0).text(4), "LM78");
}

TEST(DmiWalkTest, managementDeviceThatIsReallySoLongIsLeftAlone) {
  const std::string table =
      Structure(34)
          .raw(std::string("\x01\x03\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00", 12))
          .strings({"LM78"})
          .encode(1);
  EXPECT_EQ(walkDmiTable(table, k64).structures.at(0).length(), 0x10);
}

TEST(DmiWalkTest, emptyTableHasNoStructures) {
  EXPECT_THAT(walkDmiTable("", k64).structures, IsEmpty());
  EXPECT_FALSE(walkDmiTable("", k64).isDamaged);
  EXPECT_THAT(walkDmiTable("\x01", k64).structures, IsEmpty());
}

TEST(DmiWalkTest, tableAbove64KiBIsWalkedToItsEnd) {
  std::vector<Structure> structures(2000, Structure(200).raw(std::string(60, 'x')));
  structures.push_back(named(201, "last"));
  const std::string table = test::tableOf(structures);
  ASSERT_GT(table.size(), 0x10000u);
  const DmiWalk walk = walkDmiTable(table, k64);
  ASSERT_EQ(walk.structures.size(), 2001u);
  EXPECT_EQ(walk.structures.back().text(4), "last");
}

}  // namespace
}  // namespace quenlor
