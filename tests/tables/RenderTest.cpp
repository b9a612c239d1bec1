#include "tables/Render.h"

#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <cwchar>
#include <functional>
#include <limits>
#include <memory>
#include <regex>
#include <string>

#include "tables/ValueBlock.h"
#include "tables/VelTable.h"
#include "tests/support/TestLocale.h"

namespace quenlor {
namespace {

using test::CompiledLocale;
using test::ScopedLocale;

// What the function writes to a stream; also that the stream did not become wide.
std::string written(const std::function<void(FILE*)>& write) {
  FILE* stream = std::tmpfile();
  write(stream);
  EXPECT_LE(std::fwide(stream, 0), 0);
  std::rewind(stream);
  std::string text;
  for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) text += static_cast<char>(c);
  std::fclose(stream);
  return text;
}

template <class... Value>
std::string fileText(Value... value) {
  const VelTableAttrib attrib(1, value...);
  return written([&](FILE* file) { PrintVelAttribValueToFile(file, attrib.getAttribPtr()); });
}

// The value part of a debug dump.
template <class... Value>
std::string dumpText(Value... value) {
  const VelTableAttrib attrib(1, value...);
  testing::internal::CaptureStdout();
  attrib.toString();
  const std::string all = testing::internal::GetCapturedStdout();
  const std::string label = "\n\t\t   value    : ";
  return all.substr(all.find(label) + label.size());
}

std::wstring escape(const wchar_t* text) {
  const wchar_t* escaped = dmtf_escape(text);
  std::wstring copy(escaped);
  if (escaped != text) delete[] escaped;
  return copy;
}

constexpr unsigned char kBytes[] = {0x00, 0xAB, 0x0F};

TEST(RenderTest, everyTypeHasItsTag) {
  EXPECT_STREQ(getVelAttribTypeAsString(1), "VEL_UCHAR");
  EXPECT_STREQ(getVelAttribTypeAsString(2), "VEL_USHORT");
  EXPECT_STREQ(getVelAttribTypeAsString(3), "VEL_ULONG");
  EXPECT_STREQ(getVelAttribTypeAsString(4), "VEL_UQUAD");
  EXPECT_STREQ(getVelAttribTypeAsString(5), "VEL_FLOAT");
  EXPECT_STREQ(getVelAttribTypeAsString(6), "VEL_DOUBLE");
  EXPECT_STREQ(getVelAttribTypeAsString(7), "VEL_STRING");
  EXPECT_STREQ(getVelAttribTypeAsString(8), "VEL_OCTETSTRING");
  EXPECT_STREQ(getVelAttribTypeAsString(9), "VEL_DATETIME");
  EXPECT_STREQ(getVelAttribTypeAsString(10), "VEL_ULONGLONG");
  EXPECT_STREQ(getVelAttribTypeAsString(11), "VEL_LONGLONG");
}

TEST(RenderTest, otherCodesAreUndefined) {
  for (const uint32_t code : {0u, 12u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(getVelAttribTypeAsString(code), "Undefined Attrib Type");
  }
}

TEST(RenderTest, valuesAsWritersPrintThem) {
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ(fileText(static_cast<unsigned char>(7)), "0x07");
  EXPECT_EQ(fileText(static_cast<unsigned short>(65535)), "65535");
  EXPECT_EQ(fileText(uint32_t{0xFFFFFFFF}), "4294967295");
  EXPECT_EQ(fileText(1.5f), "1.500000");
  EXPECT_EQ(fileText(-2.25), "-2.250000");
  EXPECT_EQ(fileText("text"), "text");
  EXPECT_EQ(fileText(kBytes, 3u), "\"00AB0F\"");
  EXPECT_EQ(fileText(0L), "1970-01-01-00.00.00.000000");
  EXPECT_EQ(fileText(ULLONG_MAX), "18446744073709551615");
  EXPECT_EQ(fileText(LLONG_MIN), "-9223372036854775808");
}

TEST(RenderTest, uquadPrintsItsFirstWordSigned_receiversKnowItSo) {
  EXPECT_EQ(fileText(_uquad{0xFFFFFFFF, 5}), "-1");
  EXPECT_EQ(dumpText(_uquad{0x80000000, 5}), "-2147483648");
}

TEST(RenderTest, emptyStringsPrintNothing) {
  EXPECT_EQ(fileText(""), "");
  EXPECT_EQ(fileText(kBytes, 0u), "");
  EXPECT_EQ(dumpText(""), "");
  EXPECT_EQ(dumpText(kBytes, 0u), "");
}

TEST(RenderTest, unknownTypePrintsNothingToAFile) {
  unsigned char block[16] = {16, 0, 0, 0, 1, 0, 0, 0, 99, 0, 0, 0, 1, 2, 3, 4};
  EXPECT_EQ(written([&](FILE* file) { PrintVelAttribValueToFile(file, block); }), "");
}

TEST(RenderTest, unknownTypeIsNamedInTheDump) {
  unsigned char block[16] = {16, 0, 0, 0, 0xAB, 0, 0, 0, 99, 0, 0, 0, 1, 2, 3, 4};
  testing::internal::CaptureStdout();
  PrintVelAttribValue(block);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\n\t\t---len      : 16\n\t\t   attribId : x000000AB"
            "\n\t\t   vel_type : 99 (Undefined Attrib Type)"
            "\n\t\t   value    : Unknown attrib value type");
}

TEST(RenderTest, valuesAsTheDumpPrintsThem) {
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ(dumpText(static_cast<unsigned char>(0xAB)), "0xAB");
  EXPECT_EQ(dumpText(static_cast<unsigned short>(10)), "10 (0x000A)");
  EXPECT_EQ(dumpText(uint32_t{0xFFFFFFFF}), "4294967295 (0xFFFFFFFF)");
  EXPECT_EQ(dumpText(1.5f), "1.500000");
  EXPECT_EQ(dumpText(2.5), "2.500000");
  EXPECT_EQ(dumpText("t\"x"), "t\\\"x");
  EXPECT_EQ(dumpText(kBytes, 3u), "\"00AB0F\"");
  EXPECT_EQ(dumpText(0L), "1970-01-01-00.00.00.000000");
}

TEST(RenderTest, eightByteDumpShowsTheLow32BitsPaddedWithBlanks) {
  EXPECT_EQ(dumpText(0x1234567890ull), "78187493520 (0x        34567890)");
  EXPECT_EQ(dumpText(-1ll), "-1 (0x        FFFFFFFF)");
  EXPECT_EQ(dumpText(255ull), "255 (0x              FF)");
}

TEST(RenderTest, floatIsWidenedToDouble) { EXPECT_EQ(fileText(0.1f), "0.100000"); }

TEST(RenderTest, floatsThatAreNoNumbersArePrintedAsWords) {
  EXPECT_EQ(fileText(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(fileText(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_EQ(fileText(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(RenderTest, floatGoesToStandardOutputWithoutAFile) {
  testing::internal::CaptureStdout();
  PrintVelFloat(nullptr, 1.5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "1.500000");
}

TEST(RenderTest, floatHasADecimalPointInADecimalCommaLocale) {
  const CompiledLocale compiled("de_DE.ISO-8859-1", "de_DE", "ISO-8859-1");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("de_DE.ISO-8859-1");
  ASSERT_TRUE(locale);
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  ASSERT_STREQ(text, "1,5");
  EXPECT_EQ(fileText(1.5), "1.500000");
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5") << "the caller's locale is back";
}

TEST(RenderTest, timeWithoutACalendarDayPrintsNothing_documentsHoldNoZeroBytes) {
  EXPECT_EQ(fileText(LONG_MAX), "");
}

TEST(RenderTest, octetsAreTwoUpperCaseDigitsEach) {
  EXPECT_EQ(written([](FILE* file) { PrintOctetStringToFile(file, kBytes, 3); }), "\"00AB0F\"");
  EXPECT_EQ(written([](FILE* file) { PrintOctetStringToFile(file, kBytes, 0); }), "\"\"");
}

TEST(RenderTest, escapePutsABackslashBeforeQuotesAndBackslashes) {
  EXPECT_EQ(escape(L"a\"b\\c"), L"a\\\"b\\\\c");
}

TEST(RenderTest, escapeWritesControlCharactersAsHexadecimal) {
  EXPECT_EQ(escape(L"\t\n\x01\x1F"), L"\\x09\\x0a\\x01\\x1f");
}

TEST(RenderTest, escapeCopiesEverythingElse) {
  EXPECT_EQ(escape(L" ~\x7F\x80\xE9\x20AC\x1F600"), L" ~\x7F\x80\xE9\x20AC\x1F600");
}

TEST(RenderTest, escapeGivesBackAnEmptyTextItself) {
  const wchar_t* empty = L"";
  EXPECT_EQ(dmtf_escape(empty), empty);
}

TEST(RenderTest, stringsAreWrittenInTheLocalesEncoding) {
  const ScopedLocale locale("C.UTF-8");
  ASSERT_TRUE(locale);
  EXPECT_EQ(fileText("M\xC3\xBCller \"\xE2\x82\xAC\""), "M\xC3\xBCller \\\"\xE2\x82\xAC\\\"");
}

// The text was stored under a locale that could express it; the rest of it must not be lost.
TEST(RenderTest, charactersThatTheLocaleLacksBecomeQuestionMarks) {
  std::unique_ptr<VelTableAttrib> attrib;
  {
    const ScopedLocale locale("C.UTF-8");
    ASSERT_TRUE(locale);
    attrib = std::make_unique<VelTableAttrib>(1, "M\xC3\xBCller\xE2\x82\xAC!");
  }
  const ScopedLocale locale("C");
  EXPECT_EQ(written([&](FILE* file) { PrintVelAttribValueToFile(file, attrib->getAttribPtr()); }),
            "M?ller?!");
}

// 0x8866 alone, and 0x8862 for two characters: the first one waits for what follows it.
TEST(RenderTest, characterThatAnEncodingHoldsBackIsNotLost) {
  const CompiledLocale compiled("zh_HK.BIG5-HKSCS", "zh_HK", "BIG5-HKSCS");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("zh_HK.BIG5-HKSCS");
  ASSERT_TRUE(locale);
  EXPECT_EQ(fileText("a\x88\x66"), "a\x88\x66");
  EXPECT_EQ(fileText("\x88\x62z"), "\x88\x62z");
  EXPECT_EQ(toLocale(L"\xCA\x1F600z"), "\x88\x66?z");
}

TEST(RenderTest, storedCountOfZeroPrintsNothing) {
  const unsigned char velString[8] = {};
  EXPECT_EQ(written([&](FILE* file) { PrintVelStringToFile(file, velString); }), "");
}

TEST(RenderTest, enumerationListsEveryPair) {
  const velEnumDef pairs[] = {{0, ""}, {2, "Two "}, {kCatalogueEnd, nullptr}};
  const velAttribDef attrib = {1, "A", VEL_ULONG, 0, pairs};
  EXPECT_EQ(written([&](FILE* file) { PrintVelEnumToFile(file, &attrib); }),
            "\n\t\t0 = \"\"\n\t\t2 = \"Two \"");
}

TEST(RenderTest, enumerationOfAPlainAttributeIsEmpty) {
  const velAttribDef plain = {1, "A", VEL_ULONG, 0, nullptr};
  EXPECT_EQ(written([&](FILE* file) { PrintVelEnumToFile(file, &plain); }), "");
  EXPECT_EQ(written([&](FILE* file) { PrintVelEnumToFile(file, nullptr); }), "");
}

TEST(RenderTest, buildDateIsADateTimeAndAlwaysTheSame) {
  const std::string date = getBuildDate();
  EXPECT_TRUE(std::regex_match(
      date, std::regex("20\\d\\d-[01]\\d-[0-3]\\d-[0-2]\\d\\.[0-5]\\d\\.[0-5]\\d\\.000000")))
      << date;
  EXPECT_EQ(getBuildDate(), getBuildDate());
}

}  // namespace
}  // namespace quenlor
