#include "writers/mifUtil.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>

#include "tests/writers/WriterTest.h"

namespace quenlor {
namespace {

using test::kKeyed;
using test::kKeyless;
using test::kWriterGroups;
using test::namedRows;
using test::oneValue;
using testing::HasSubstr;
using testing::Not;

std::string written(const std::function<void(FILE*)>& write) {
  testing::internal::CaptureStdout();
  write(stdout);
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

std::string mif(VelTable& table) {
  return written([&](FILE*) { EXPECT_EQ(printMif("stdout", &table), 0); });
}

std::string typeText(uint32_t attribId) {
  return written([&](FILE* file) { printDMTFType(file, &kWriterGroups[0], attribId); });
}

std::string defaultText(uint32_t type) {
  return written([&](FILE* file) { printDefaultValue(file, type); });
}

// The value of a one-row table, as it stands between the braces.
template <class... Value>
std::string rowText(uint32_t id, Value... value) {
  const std::string all = mif(*oneValue(kKeyed, id, value...));
  const size_t start = all.find("\n{") + 2;
  return all.substr(start, all.find("}\nEnd Table") - start);
}

constexpr const char* kIndexDefault =
    "\n\tStart Attribute\n\t\tName = \"Index\"\n\t\tID = 1\n\t\tType = Integer"
    "\n\t\tValue = -1\n\tEnd Attribute";
constexpr const char* kNameDefault =
    "\n\tStart Attribute\n\t\tName = \"Full Name\"\n\t\tID = 2\n\t\tType = String(40)"
    "\n\t\tValue = \"\"\n\tEnd Attribute";

TEST(MifUtilTest, keyedGroupIsASchemaAndATable) {
  EXPECT_EQ(mif(*namedRows(kKeyed, {"one", "two"})),
            std::string("\nStart Group\n\tName = \"Keyed Group\"\n\tClass = "
                        "\"MARROW|Keyed Group|7\"") +
                kIndexDefault + kNameDefault +
                "\nKey = 1,2\nEnd Group\n"
                "\nStart Table\n\tName = \"Keyed Group Table\"\n\tID = 1"
                "\n\tClass = \"MARROW|Keyed Group|7\""
                "\n{1,\"one\"}\n{2,\"two\"}\nEnd Table\n");
}

TEST(MifUtilTest, keylessGroupWritesTheFirstRowsValuesOfThree) {
  EXPECT_EQ(mif(*namedRows(kKeyless, {"one", "two", "three"})),
            "\nStart Group\n\tName = \"Keyless Group\"\n\tClass = \"MARROW|Keyless Group|7\""
            "\n\tID = 2"
            "\n\tStart Attribute\n\t\tName = \"Index\"\n\t\tID = 1\n\t\tType = Integer"
            "\n\t\tValue = 1\n\tEnd Attribute"
            "\n\tStart Attribute\n\t\tName = \"Full Name\"\n\t\tID = 2\n\t\tType = String(40)"
            "\n\t\tValue = \"one\"\n\tEnd Attribute"
            "\nEnd Group\n");
}

std::string catalogueBlocks() {
  return written([](FILE* file) { printFromGroupDef(file, &kWriterGroups[0]); });
}

TEST(MifUtilTest, keyedGroupWithoutRowsWritesTheCatalogueAndATableWithoutBraces) {
  EXPECT_EQ(mif(*namedRows(kKeyed, {})),
            "\nStart Group\n\tName = \"Keyed Group\"\n\tClass = \"MARROW|Keyed Group|7\"" +
                catalogueBlocks() +
                "\nKey = 1,2\nEnd Group\n"
                "\nStart Table\n\tName = \"Keyed Group Table\"\n\tID = 1"
                "\n\tClass = \"MARROW|Keyed Group|7\"\nEnd Table\n");
}

TEST(MifUtilTest, keylessGroupWithoutRowsWritesTheCatalogue) {
  EXPECT_EQ(mif(*namedRows(kKeyless, {})),
            "\nStart Group\n\tName = \"Keyless Group\"\n\tClass = \"MARROW|Keyless Group|7\""
            "\n\tID = 2" +
                written([](FILE* file) { printFromGroupDef(file, &kWriterGroups[1]); }) +
                "\nEnd Group\n");
}

TEST(MifUtilTest, catalogueBlocksHaveTheRecordsDefaults) {
  const std::string blocks = catalogueBlocks();
  EXPECT_THAT(blocks, testing::StartsWith(std::string(kIndexDefault) + kNameDefault));
  EXPECT_THAT(blocks, HasSubstr("Name = \"Capacity\"\n\t\tID = 8\n\t\tType = String(64)"
                                "\n\t\tValue = \"6.000000\""));
  EXPECT_THAT(blocks, HasSubstr("Name = \"Text Colour\""));
}

TEST(MifUtilTest, catalogueBlocksOfNothingAreEmpty) {
  const velGroupDef noTable = {1, "G", nullptr, nullptr, 0, 1, 0};
  EXPECT_EQ(written([&](FILE* file) {
              printFromGroupDef(file, nullptr);
              printFromGroupDef(file, &noTable);
            }),
            "");
}

TEST(MifUtilTest, groupOutsideTheCatalogueIsKeylessAndUnknown) {
  EXPECT_EQ(mif(*namedRows(test::kUnlisted, {})),
            "\nStart Group\n\tName = \"Unknown\"\n\tClass = \"MARROW|Unknown|7\"\n\tID = 99"
            "\nEnd Group\n");
}

TEST(MifUtilTest, attributeOutsideTheCatalogueHasANullNameAndNoType) {
  EXPECT_THAT(mif(*oneValue(kKeyless, 99, uint32_t{5})),
              HasSubstr("\n\tStart Attribute\n\t\tName = \"(null)\"\n\t\tID = 99\n\t\tType = "
                        "\n\t\tValue = 5\n\tEnd Attribute"));
}

TEST(MifUtilTest, keyLineOfNoKeysEndsBehindTheSign) {
  EXPECT_THAT(mif(*namedRows(test::kNoKeysListed, {"one"})), HasSubstr("\nKey = \nEnd Group\n"));
}

// Where a row exists, the value's own type decides.
TEST(MifUtilTest, defaultFollowsTheTypeOfTheValueInTheFirstRow) {
  EXPECT_THAT(mif(*oneValue(kKeyed, 1, "text")),
              HasSubstr("Name = \"Index\"\n\t\tID = 1\n\t\tType = Integer\n\t\tValue = \"\""));
}

TEST(MifUtilTest, rowWithoutAttributesIsAPairOfBraces) {
  VelTable table(kWriterGroups, kKeyed, 1);
  table.addRow(new VelTableRow);
  EXPECT_THAT(mif(table), HasSubstr("\n{}\nEnd Table\n"));
}

TEST(MifUtilTest, writingATableTwiceGivesTheSameTwice) {
  const auto table = namedRows(kKeyed, {"one", "two"});
  const std::string first = mif(*table);
  EXPECT_EQ(mif(*table), first);
}

TEST(MifUtilTest, enumeratedAttributeDeclaresItsValuesAndWritesNumbers) {
  const std::string all = mif(*oneValue(kKeyed, 3, uint32_t{2}));
  EXPECT_THAT(all, HasSubstr("Type = Start ENUM\n\t\tName = \"Keyed Group-Colour\""
                             "\n\t\t1 = \"Red\"\n\t\t2 = \"Green > blue\"\n\t\tEnd ENUM"
                             "\n\t\tValue = -1\n\tEnd Attribute"));
  EXPECT_THAT(all, HasSubstr("\n{2}\n"));
}

TEST(MifUtilTest, typesByRecord) {
  EXPECT_EQ(typeText(1), "Integer");
  EXPECT_EQ(typeText(2), "String(40)");
  EXPECT_EQ(typeText(4), "String(64)");
  EXPECT_EQ(typeText(5), "Integer");
  EXPECT_EQ(typeText(6), "String(64)");
  EXPECT_EQ(typeText(7), "String(64)");
  EXPECT_EQ(typeText(8), "String(64)");
  EXPECT_EQ(typeText(9), "String(64)");
  EXPECT_EQ(typeText(10), "String(64)");
  EXPECT_EQ(typeText(11), "Integer");
  EXPECT_EQ(typeText(12), "Integer");
  EXPECT_THAT(typeText(13), testing::StartsWith("Start ENUM"));
  EXPECT_EQ(typeText(99), "");
}

TEST(MifUtilTest, defaultsByType) {
  EXPECT_EQ(defaultText(VEL_UCHAR), "\"\"");
  EXPECT_EQ(defaultText(VEL_USHORT), "-1");
  EXPECT_EQ(defaultText(VEL_ULONG), "-1");
  EXPECT_EQ(defaultText(VEL_UQUAD), "\"\"");
  EXPECT_EQ(defaultText(VEL_STRING), "\"\"");
  EXPECT_EQ(defaultText(VEL_OCTETSTRING), "-1");
  EXPECT_EQ(defaultText(VEL_DATETIME), "\"\"");
  EXPECT_EQ(defaultText(VEL_ULONGLONG), "-1");
  EXPECT_EQ(defaultText(VEL_LONGLONG), "-1");
  EXPECT_EQ(defaultText(0), "-1");
}

TEST(MifUtilTest, defaultOfAFloatIsItsTypeCode_receiversKnowItSo) {
  EXPECT_EQ(defaultText(VEL_FLOAT), "\"5.000000\"");
  EXPECT_EQ(defaultText(VEL_DOUBLE), "\"6.000000\"");
}

TEST(MifUtilTest, quotesStandAroundTextLikeValuesOnly) {
  std::string quoted;
  for (uint32_t type = 0; type <= 12; ++type) {
    quoted += written([&](FILE* file) { printDoubleQuote(file, type); }) == "\"" ? '1' : '0';
  }
  EXPECT_EQ(quoted, "0100111101000");
}

TEST(MifUtilTest, valuesByType) {
  setenv("TZ", "UTC", 1);
  tzset();
  const unsigned char bytes[] = {0x01, 0xAF};
  const unsigned char* octets = bytes;
  EXPECT_EQ(rowText(4, static_cast<unsigned char>(10)), "\"0x0A\"");
  EXPECT_EQ(rowText(5, static_cast<unsigned short>(65535)), "65535");
  EXPECT_EQ(rowText(1, uint32_t{0xFFFFFFFF}), "4294967295");
  EXPECT_EQ(rowText(6, _uquad{0xFFFFFFFF, 2}), "\"-1\"");
  EXPECT_EQ(rowText(7, 1.5f), "\"1.500000\"");
  EXPECT_EQ(rowText(8, 0.25), "\"0.250000\"");
  EXPECT_EQ(rowText(9, octets, 2u), "\"01AF\"");
  EXPECT_EQ(rowText(10, 0L), "\"1970-01-01-00.00.00.000000\"");
  EXPECT_EQ(rowText(11, 1ull), "1");
  EXPECT_EQ(rowText(12, -1ll), "-1");
  EXPECT_EQ(rowText(2, ""), "\"\"");
}

TEST(MifUtilTest, quoteInATextHasABackslashBeforeIt) {
  EXPECT_EQ(rowText(2, "19\" \\ rack\t"), "\"19\\\" \\\\ rack\\x09\"");
}

}  // namespace
}  // namespace quenlor
