#include "writers/xmlUtil.h"

#include <gmock/gmock.h>

#include <climits>
#include <memory>
#include <string>

#include "tables/ValueBlock.h"
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

std::string xml(VelTable& table) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(printXML("stdout", &table), 0);
  return testing::internal::GetCapturedStdout();
}

// What stands for the value in a document: everything between the attribute's tags.
template <class... Value>
std::string valueXml(uint32_t id, Value... value) {
  const std::string all = xml(*oneValue(kKeyless, id, value...));
  const size_t start = all.find('>', all.find("\n\t\t<")) + 1;
  return all.substr(start, all.find("</", start) - start);
}

std::string elementName(const char* name) {
  const std::unique_ptr<char, decltype(&std::free)> element(spaceOut(name), &std::free);
  return element.get();
}

TEST(XmlUtilTest, keyedGroupWritesEveryRowAndMarksItsKeys) {
  EXPECT_EQ(xml(*namedRows(kKeyed, {"one", "two"})),
            "\n\n\t<KeyedGroup version=\"7\">"
            "\n\t\t<Index IsKey=\"1\">1</Index>"
            "\n\t\t<FullName IsKey=\"1\">one</FullName>"
            "\n\t</KeyedGroup>"
            "\n\n\t<KeyedGroup version=\"7\">"
            "\n\t\t<Index IsKey=\"1\">2</Index>"
            "\n\t\t<FullName IsKey=\"1\">two</FullName>"
            "\n\t</KeyedGroup>");
}

TEST(XmlUtilTest, keylessGroupWritesOnlyItsFirstRowOfThree_itIsASingleInstance) {
  EXPECT_EQ(xml(*namedRows(kKeyless, {"one", "two", "three"})),
            "\n\n\t<KeylessGroup version=\"7\">"
            "\n\t\t<Index>1</Index>"
            "\n\t\t<FullName>one</FullName>"
            "\n\t</KeylessGroup>");
}

TEST(XmlUtilTest, attributesThatAreNoKeysAreNotMarked) {
  EXPECT_THAT(xml(*oneValue(kKeyed, 3, uint32_t{9})), HasSubstr("\n\t\t<Colour>9</Colour>"));
}

TEST(XmlUtilTest, keyThatTheRowLacksIsNotWritten) {
  EXPECT_THAT(xml(*oneValue(kKeyed, 1, uint32_t{1})), Not(HasSubstr("FullName")));
}

TEST(XmlUtilTest, keyListOfNoKeysIsStillAKeyedGroup) {
  const std::string all = xml(*namedRows(test::kNoKeysListed, {"one", "two"}));
  EXPECT_THAT(all, HasSubstr("two"));
  EXPECT_THAT(all, Not(HasSubstr("IsKey")));
}

TEST(XmlUtilTest, emptyTableWritesNothing) {
  EXPECT_EQ(xml(*namedRows(kKeyed, {})), "");
  EXPECT_EQ(xml(*namedRows(kKeyless, {})), "");
}

TEST(XmlUtilTest, rowWithoutAttributesIsAnEmptyElement) {
  VelTable table(kWriterGroups, kKeyed, 1);
  table.addRow(new VelTableRow);
  EXPECT_EQ(xml(table), "\n\n\t<KeyedGroup version=\"1\">\n\t</KeyedGroup>");
}

TEST(XmlUtilTest, groupOutsideTheCatalogueIsUnknownAndWritesItsFirstRow) {
  EXPECT_EQ(xml(*namedRows(test::kUnlisted, {"one", "two"})),
            "\n\n\t<Unknown version=\"7\">\n\t\t<>1</>\n\t\t<>one</>\n\t</Unknown>");
}

TEST(XmlUtilTest, attributeOutsideTheCatalogueHasNoElementName) {
  EXPECT_THAT(xml(*oneValue(kKeyed, 99, uint32_t{5})), HasSubstr("\n\t\t<>5</>"));
  EXPECT_THAT(xml(*oneValue(kKeyless, 99, uint32_t{5})), HasSubstr("\n\t\t<>5</>"));
}

TEST(XmlUtilTest, versionIsSigned) {
  VelTable table(kWriterGroups, kKeyed, 0xFFFFFFFF);
  table.addRow(new VelTableRow);
  EXPECT_THAT(xml(table), HasSubstr("version=\"-1\""));
}

TEST(XmlUtilTest, writingATableTwiceGivesTheSameTwice) {
  const auto table = namedRows(kKeyed, {"one", "two"});
  const std::string first = xml(*table);
  EXPECT_EQ(xml(*table), first);
}

TEST(XmlUtilTest, enumeratedNumberIsWrittenAsItsTextUnescaped) {
  EXPECT_EQ(valueXml(3, uint32_t{1}), "Red");
  EXPECT_EQ(valueXml(3, uint32_t{2}), "Green > blue");
}

TEST(XmlUtilTest, numberOutsideItsEnumerationIsDecimal) {
  EXPECT_EQ(valueXml(3, uint32_t{3}), "3");
  EXPECT_EQ(valueXml(3, uint32_t{0xFFFFFFFF}), "4294967295");
}

TEST(XmlUtilTest, onlyUlongValuesAreEnumerated) {
  EXPECT_EQ(valueXml(3, static_cast<unsigned short>(1)), "1");
  EXPECT_EQ(valueXml(3, 1ull), "1");
  EXPECT_EQ(valueXml(13, "1"), "1");
}

// The type of the value decides, not that of the record.
TEST(XmlUtilTest, ulongOfATextAttributeWithATableIsEnumerated) {
  EXPECT_EQ(valueXml(13, uint32_t{1}), "Red");
}

TEST(XmlUtilTest, processorInterfaceNumberIsWrittenAsItsText) {
  VelTable table(group::kProcessor, 1);
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, 9, 4);
  table.addRow(row.release());
  EXPECT_THAT(xml(table), HasSubstr("<Interface>ZIF Socket</Interface>"));
}

TEST(XmlUtilTest, valuesByType) {
  setenv("TZ", "UTC", 1);
  tzset();
  const unsigned char bytes[] = {0x01, 0xAF};
  const unsigned char* octets = bytes;
  EXPECT_EQ(valueXml(4, static_cast<unsigned char>(10)), "0x0A");
  EXPECT_EQ(valueXml(5, static_cast<unsigned short>(65535)), "65535");
  EXPECT_EQ(valueXml(1, uint32_t{0xFFFFFFFF}), "4294967295");
  EXPECT_EQ(valueXml(6, _uquad{0xFFFFFFFF, 2}), "-1");
  EXPECT_EQ(valueXml(7, 1.5f), "1.500000");
  EXPECT_EQ(valueXml(8, 0.25), "0.250000");
  EXPECT_EQ(valueXml(9, octets, 2u), "\"01AF\"");
  EXPECT_EQ(valueXml(10, 0L), "1970-01-01-00.00.00.000000");
  EXPECT_EQ(valueXml(11, ULLONG_MAX), "18446744073709551615");
  EXPECT_EQ(valueXml(12, LLONG_MIN), "-9223372036854775808");
}

TEST(XmlUtilTest, emptyStringsWriteEmptyElements) {
  const unsigned char* octets = reinterpret_cast<const unsigned char*>("");
  EXPECT_EQ(valueXml(2, ""), "");
  EXPECT_EQ(valueXml(9, octets, 0u), "");
}

TEST(XmlUtilTest, storedStringOfNoCharactersWritesNothing) {
  const unsigned char block[20] = {20, 0, 0, 0, 2, 0, 0, 0, VEL_STRING};
  testing::internal::CaptureStdout();
  PrintVelAttribStringToXMLFile(stdout, block);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(XmlUtilTest, markupInTextsIsEscaped) {
  EXPECT_EQ(valueXml(2, "<a & b>"), "&lt;a &amp; b&gt;");
}

TEST(XmlUtilTest, timeWithoutACalendarDayIsAnEmptyElement) {
  EXPECT_EQ(valueXml(10, LONG_MAX), "");
}

TEST(XmlUtilTest, enumTextIsFoundByTheRecord) {
  const VelTableAttrib red(3, uint32_t{1});
  const velGroupDef noTable = {1, "G", nullptr, nullptr, 0, 1, 0};
  testing::internal::CaptureStdout();
  EXPECT_EQ(PrintEnumActual(stdout, &kWriterGroups[0], 3, red.getAttribPtr()), 1);
  EXPECT_EQ(PrintEnumActual(stdout, &kWriterGroups[0], 1, red.getAttribPtr()), 0);
  EXPECT_EQ(PrintEnumActual(stdout, &kWriterGroups[0], 99, red.getAttribPtr()), 0);
  EXPECT_EQ(PrintEnumActual(stdout, &noTable, 3, red.getAttribPtr()), 0);
  EXPECT_EQ(PrintEnumActual(stdout, nullptr, 3, red.getAttribPtr()), 0);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Red");
}

TEST(XmlUtilTest, keysAreLookedUpInTheGroup) {
  EXPECT_EQ(isKey(&kWriterGroups[0], 1), 1);
  EXPECT_EQ(isKey(&kWriterGroups[0], 2), 1);
  EXPECT_EQ(isKey(&kWriterGroups[0], 3), 0);
  EXPECT_EQ(isKey(&kWriterGroups[1], 1), 0);
  EXPECT_EQ(isKey(&kWriterGroups[2], 1), 0);
  EXPECT_EQ(isKey(nullptr, 1), 0);
}

TEST(XmlUtilTest, spaceOutKeepsPlainNames) { EXPECT_EQ(elementName("Processor"), "Processor"); }

TEST(XmlUtilTest, spaceOutDropsBlanksAndPunctuation) {
  EXPECT_EQ(elementName("Permanent Mac Address"), "PermanentMacAddress");
  EXPECT_EQ(elementName("Fast Floating Point Save/Restore"), "FastFloatingPointSaveRestore");
  EXPECT_EQ(elementName("AMD 3DNow!(tm) Technology"), "AMD3DNowtmTechnology");
}

TEST(XmlUtilTest, spaceOutPutsAnUnderscoreBeforeALeadingDigit) {
  EXPECT_EQ(elementName("1394 Adapter"), "_1394Adapter");
  EXPECT_EQ(elementName("36-bit Page Size Extension"), "_36-bitPageSizeExtension");
  EXPECT_EQ(elementName(" -.9"), "_9");
}

TEST(XmlUtilTest, spaceOutDropsWhatCannotStartAName) {
  EXPECT_EQ(elementName(".-a.b-c:d_e"), "a.b-c:d_e");
  EXPECT_EQ(elementName("_:x"), "_:x");
}

TEST(XmlUtilTest, spaceOutJudgesEveryByteFirstAndLater) {
  const std::string first = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_:";
  const std::string digits = "0123456789";
  const std::string later = first + digits + ".-";
  for (int byte = 1; byte < 256; ++byte) {
    const std::string c(1, static_cast<char>(byte));
    const bool isDigit = digits.find(c) != std::string::npos;
    const bool mayBeFirst = isDigit || first.find(c) != std::string::npos;
    EXPECT_EQ(elementName(c.c_str()), mayBeFirst ? (isDigit ? "_" : "") + c : "") << byte;
    const bool mayBeLater = later.find(c) != std::string::npos;
    EXPECT_EQ(elementName(("x" + c).c_str()), mayBeLater ? "x" + c : "x") << byte;
  }
}

TEST(XmlUtilTest, spaceOutDropsOtherBytesThanAscii) {
  EXPECT_EQ(elementName("\xC3\xA9t\xE9"), "t");
}

TEST(XmlUtilTest, spaceOutOfNothingIsEmpty) {
  EXPECT_EQ(elementName(nullptr), "");
  EXPECT_EQ(elementName(""), "");
  EXPECT_EQ(elementName(" ()/"), "");
}

TEST(XmlUtilTest, everyCatalogueNameMakesAnElementName) {
  for (const velGroupDef* group = GROUPS_DEF; group->id != kCatalogueEnd; ++group) {
    EXPECT_NE(elementName(group->name), "");
    for (const velAttribDef* attrib = group->attribs; attrib->id != kCatalogueEnd; ++attrib) {
      EXPECT_NE(elementName(attrib->name), "") << attrib->name;
    }
  }
}

}  // namespace
}  // namespace quenlor
