#include <gtest/gtest.h>

#include <regex>

#include "tests/support/TestLocale.h"
#include "tests/writers/WriterTest.h"
#include "writers/mifUtil.h"

namespace quenlor {
namespace {

using test::DocumentFolder;

class ModernMifTest : public ::testing::Test {
 protected:
  VelTableRow& addRow(VelTable& table) {
    auto* row = new VelTableRow;
    table.addRow(row);
    return *row;
  }

  std::string printed(VelTable& table) {
    const std::string path = m_folder.path("mif");
    test::writeFile(path, "");
    EXPECT_EQ(printMif(path.c_str(), &table), 0);
    return test::contentOf(path);
  }

 private:
  DocumentFolder m_folder;
};

std::vector<std::string> idsOfBlock(const std::string& mif) {
  std::vector<std::string> ids;
  const std::string block = mif.substr(0, mif.find("\nKey ="));
  const std::regex line("\\n\\t\\tID = (\\d+)");
  for (std::sregex_iterator at(block.begin(), block.end(), line), end; at != end; ++at) {
    ids.push_back((*at)[1]);
  }
  return ids;
}

// The places of a row, quotes and all; the values of these tests hold no comma.
std::vector<std::string> placesOf(const std::string& mif, size_t row) {
  size_t start = 0;
  for (size_t i = 0; i <= row; ++i) start = mif.find("\n{", start) + 2;
  std::string places = mif.substr(start, mif.find('}', start) - start) + ",";
  std::vector<std::string> values;
  for (size_t comma; (comma = places.find(',')) != std::string::npos; places.erase(0, comma + 1)) {
    values.push_back(places.substr(0, comma));
  }
  return values;
}

TEST_F(ModernMifTest, rowsThatDifferAreReadBackByPosition) {
  VelTable table(MODERN_GROUPS_DEF, group::kIpAddress, 1);
  VelTableRow& first = addRow(table);
  addUlong(first, 1, 1);
  addCharacters(first, 2, U"192.0.2.1");
  addCharacters(first, 101, U"eth0");
  VelTableRow& second = addRow(table);
  addUlong(second, 1, 2);
  addCharacters(second, 2, U"2001:db8::1");
  addCharacters(second, 9, U"Y");
  addCharacters(second, 101, U"eth1");
  addUlong(second, 102, 64);

  const std::string mif = printed(table);
  EXPECT_EQ(idsOfBlock(mif), (std::vector<std::string>{"1", "2", "9", "101", "102"}));
  EXPECT_EQ(placesOf(mif, 0), (std::vector<std::string>{"1", "\"192.0.2.1\"", "", "\"eth0\"", ""}));
  EXPECT_EQ(placesOf(mif, 1),
            (std::vector<std::string>{"2", "\"2001:db8::1\"", "\"Y\"", "\"eth1\"", "64"}));
}

TEST_F(ModernMifTest, attributesStandInTheCataloguesOrderWhateverTheRows) {
  VelTable table(MODERN_GROUPS_DEF, group::kIpAddress, 1);
  addCharacters(addRow(table), 101, U"eth0");
  addCharacters(addRow(table), 9, U"N");  // stands before 3 and behind 2 there
  VelTableRow& third = addRow(table);
  addCharacters(third, 3, U"host");
  addCharacters(third, 2, U"192.0.2.1");
  EXPECT_EQ(idsOfBlock(printed(table)), (std::vector<std::string>{"2", "9", "3", "101"}));
}

TEST_F(ModernMifTest, longNumbersAreDeclaredSo) {
  VelTable table(MODERN_GROUPS_DEF, group::kStorage, 1);
  VelTableRow& row = addRow(table);
  addUlong(row, 1, 1);
  addLongLong(row, 103, 6001175126016);
  const std::string mif = printed(table);
  EXPECT_NE(mif.find("Name = \"Size Bytes\"\n\t\tID = 103\n\t\tType = Integer64\n"),
            std::string::npos)
      << mif;
  EXPECT_NE(mif.find("Name = \"Index\"\n\t\tID = 1\n\t\tType = Integer\n"), std::string::npos);
  EXPECT_NE(mif.find("\n{1,6001175126016}"), std::string::npos);
}

TEST_F(ModernMifTest, classicLongNumbersKeepTheirType) {
  VelTable table(group::kCpuMeter, 1);
  addLongLong(addRow(table), 1, 5);
  EXPECT_NE(printed(table).find("ID = 1\n\t\tType = Integer\n"), std::string::npos);
}

TEST_F(ModernMifTest, aTableWithoutRowsListsTheWholeRecord) {
  VelTable table(MODERN_GROUPS_DEF, group::kVolume, 1);
  const std::string mif = printed(table);
  EXPECT_EQ(idsOfBlock(mif).size(), 12u);
  EXPECT_NE(mif.find("Type = Integer64"), std::string::npos);
  EXPECT_EQ(mif.find('{'), std::string::npos);
}

TEST_F(ModernMifTest, textsAreUtf8InEveryLocale) {
  const test::ScopedLocale plain("C");
  VelTable table(MODERN_GROUPS_DEF, group::kVolume, 1);
  addCharacters(addRow(table), 2, U"Größe \"東京\"");
  EXPECT_NE(printed(table).find("{\"Größe \\\"東京\\\"\"}"), std::string::npos);
}

}  // namespace
}  // namespace quenlor
