#include "groups/modern/ModernTable.h"

#include <gtest/gtest.h>

#include "identity/Identity.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::rowsOf;
using test::RowValues;
using test::valueOf;

const velGroupDef& recordOf(uint32_t id) { return *findGroup(MODERN_GROUPS_DEF, id); }

std::vector<RowValues> built(const ModernTable& table) { return rowsOf(table.build().get()); }

TEST(ModernTableTest, valuesStandInTheCataloguesOrderWhateverTheOrderOfSetting) {
  ModernTable table(recordOf(group::kIpAddress));
  table.addRow().text(101, "eth0").text(3, "host").text(9, "Y").textAlways(2, "192.0.2.1");
  EXPECT_EQ(built(table)[0], (RowValues{{2, "192.0.2.1"}, {9, "Y"}, {3, "host"}, {101, "eth0"}}));
}

TEST(ModernTableTest, whatIsNotKnownIsLeftOut) {
  ModernTable table(recordOf(group::kStorage));
  table.addRow()
      .text(4, std::nullopt)
      .text(5, "  ")
      .text(6, "")
      .ulong(107, std::nullopt)
      .longlong(103, std::nullopt)
      .yesNo(109, std::nullopt)
      .ulong(108, 512);
  EXPECT_EQ(built(table)[0], (RowValues{{108, "512"}}));
}

TEST(ModernTableTest, whatIsAlwaysThereStaysEmptyOrGetsItsPlaceholder) {
  ModernTable table(recordOf(group::kUnixSystemParams));
  table.addRow().textAlways(3, std::nullopt).ulongAlways(2, std::nullopt, 7);
  EXPECT_EQ(built(table)[0], (RowValues{{2, "7"}, {3, ""}}));
}

TEST(ModernTableTest, numbersSaturateInTheirWidth) {
  ModernTable table(recordOf(group::kStorage));
  table.addRow().ulong(107, 1ull << 40).longlong(103, ~0ull).longlong(103, ~0ull);
  EXPECT_EQ(built(table)[0], (RowValues{{103, "9223372036854775807"}, {107, "4294967295"}}));
}

TEST(ModernTableTest, textsAreCleanedAndCut) {
  ModernTable table(recordOf(group::kStorage));
  table.addRow().text(4, " Disk\x1b[1m ").text(5, std::string(300, 'x'));
  EXPECT_EQ(valueOf(built(table)[0], 5), std::string(255, 'x'));
  EXPECT_EQ(table.addRow().text(4, " Disk\x1b ").textOf(4), "Disk\xEF\xBF\xBD");
}

TEST(ModernTableTest, rowsAreNumberedFromOne) {
  ModernTable table(recordOf(group::kVolume));
  table.addNumberedRow().textAlways(2, "a");
  table.addNumberedRow().textAlways(2, "b");
  const auto rows = built(table);
  EXPECT_EQ(valueOf(rows[0], 1), "1");
  EXPECT_EQ(valueOf(rows[1], 1), "2");
}

TEST(ModernTableTest, equalDigestsAreToldApartByTheirRow) {
  ModernTable table(recordOf(group::kStorage));
  for (int i = 0; i < 3; ++i) table.addNumberedRow().text(2, "d41d8cd98f00b204e9800998ecf8427e");
  table.makeDigestsUnique(2);
  const auto rows = built(table);
  EXPECT_EQ(valueOf(rows[0], 2), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(valueOf(rows[1], 2), md5Text("d41d8cd98f00b204e9800998ecf8427e2"));
  EXPECT_NE(valueOf(rows[1], 2), valueOf(rows[2], 2));
}

TEST(ModernTableTest, theTableIsOneOfTheModernCatalogue) {
  const ModernTable table(recordOf(group::kMachine));
  EXPECT_TRUE(table.build()->isModern());
  EXPECT_STREQ(table.build()->getGroupName(), "Machine");
  EXPECT_EQ(table.build()->getGroupVersion(), 1u);
}

}  // namespace
}  // namespace quenlor
