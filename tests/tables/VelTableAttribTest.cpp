#include <gmock/gmock.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tables/ValueBlock.h"
#include "tables/VelTable.h"
#include "tests/support/TestLocale.h"

namespace quenlor {
namespace {

using test::CompiledLocale;
using test::ScopedLocale;

// The characters of a stored string, its terminator included.
std::vector<uint32_t> characters(const VelTableAttrib& attrib) {
  const unsigned char* value = blockValue(attrib.getAttribPtr());
  std::vector<uint32_t> all(readNumber<uint32_t>(value));
  std::memcpy(all.data(), value + 4, all.size() * 4);
  return all;
}

std::string dateTime(time_t seconds) {
  const VelTableAttrib attrib(1, static_cast<long>(seconds));
  return {reinterpret_cast<const char*>(blockValue(attrib.getAttribPtr())), kDateTimeSize};
}

class TimeZoneSetting {
 public:
  explicit TimeZoneSetting(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  ~TimeZoneSetting() {
    unsetenv("TZ");
    tzset();
  }
};

void expectBlock(const VelTableAttrib& attrib, uint32_t length, uint32_t type) {
  EXPECT_EQ(blockLength(attrib.getAttribPtr()), length);
  EXPECT_EQ(attrib.getId(), 77u);
  EXPECT_EQ(attrib.getType(), type);
}

template <class Number>
Number valueOf(const VelTableAttrib& attrib) {
  return readNumber<Number>(blockValue(attrib.getAttribPtr()));
}

TEST(VelTableAttribTest, ucharTakes13Bytes) {
  const VelTableAttrib attrib(77, static_cast<unsigned char>(0xFE));
  expectBlock(attrib, 13, VEL_UCHAR);
  EXPECT_EQ(valueOf<unsigned char>(attrib), 0xFE);
}

TEST(VelTableAttribTest, ushortTakes14Bytes) {
  const VelTableAttrib attrib(77, static_cast<unsigned short>(0xFEDC));
  expectBlock(attrib, 14, VEL_USHORT);
  EXPECT_EQ(valueOf<uint16_t>(attrib), 0xFEDC);
}

TEST(VelTableAttribTest, ulongTakes16BytesAndHas32Bits) {
  const VelTableAttrib attrib(77, uint32_t{0xFFFFFFFF});
  expectBlock(attrib, 16, VEL_ULONG);
  EXPECT_EQ(valueOf<uint32_t>(attrib), 0xFFFFFFFFu);
}

TEST(VelTableAttribTest, uquadTakes20BytesAndKeepsTheOrderOfItsWords) {
  const VelTableAttrib attrib(77, _uquad{1, 2});
  expectBlock(attrib, 20, VEL_UQUAD);
  EXPECT_EQ(valueOf<uint32_t>(attrib), 1u);
  EXPECT_EQ(readNumber<uint32_t>(attrib.getAttribPtr() + 16), 2u);
}

TEST(VelTableAttribTest, floatTakes16Bytes) {
  const VelTableAttrib attrib(77, 1.5f);
  expectBlock(attrib, 16, VEL_FLOAT);
  EXPECT_EQ(valueOf<float>(attrib), 1.5f);
}

TEST(VelTableAttribTest, doubleTakes20Bytes) {
  const VelTableAttrib attrib(77, 2.5);
  expectBlock(attrib, 20, VEL_DOUBLE);
  EXPECT_EQ(valueOf<double>(attrib), 2.5);
}

TEST(VelTableAttribTest, ulonglongTakes20Bytes) {
  const VelTableAttrib attrib(77, ULLONG_MAX);
  expectBlock(attrib, 20, VEL_ULONGLONG);
  EXPECT_EQ(valueOf<uint64_t>(attrib), ULLONG_MAX);
}

TEST(VelTableAttribTest, longlongTakes20Bytes) {
  const VelTableAttrib attrib(77, LLONG_MIN);
  expectBlock(attrib, 20, VEL_LONGLONG);
  EXPECT_EQ(valueOf<int64_t>(attrib), LLONG_MIN);
}

TEST(VelTableAttribTest, dateTimeTakes38Bytes) {
  expectBlock(VelTableAttrib(77, 0L), 38, VEL_DATETIME);
}

TEST(VelTableAttribTest, octetStringTakes16BytesAndItsOctets) {
  const unsigned char bytes[] = {0, 1, 0xFF};
  const VelTableAttrib attrib(77, bytes, 3);
  expectBlock(attrib, 19, VEL_OCTETSTRING);
  EXPECT_EQ(valueOf<uint32_t>(attrib), 3u);
  EXPECT_EQ(std::memcmp(attrib.getAttribPtr() + 16, bytes, 3), 0);
}

TEST(VelTableAttribTest, octetStringOfOneByteHoldsIt) {
  const unsigned char byte = 0xA5;
  const VelTableAttrib attrib(77, &byte, 1);
  expectBlock(attrib, 17, VEL_OCTETSTRING);
  EXPECT_EQ(attrib.getAttribPtr()[16], byte);
}

TEST(VelTableAttribTest, emptyOctetStringTakes16Bytes) {
  expectBlock(VelTableAttrib(77, reinterpret_cast<const unsigned char*>(""), 0), 16,
              VEL_OCTETSTRING);
}

TEST(VelTableAttribTest, octetStringWithoutBytesIsEmpty) {
  const VelTableAttrib attrib(77, static_cast<const unsigned char*>(nullptr), 5);
  expectBlock(attrib, 16, VEL_OCTETSTRING);
  EXPECT_EQ(valueOf<uint32_t>(attrib), 0u);
}

// Each of these would pick another type, or lose bits, if it compiled.
TEST(VelTableAttribTest, ambiguousWidthsDoNotCompile) {
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, int>));
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, bool>));
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, char>));
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, short>));
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, size_t>));
  EXPECT_FALSE((std::is_constructible_v<VelTableAttrib, uint32_t, std::nullptr_t>));
}

TEST(VelTableAttribTest, emptyAndNullTextsStoreOneZeroCharacter) {
  for (const char* text : {"", static_cast<const char*>(nullptr)}) {
    const VelTableAttrib attrib(77, text);
    expectBlock(attrib, 20, VEL_STRING);
    EXPECT_THAT(characters(attrib), testing::ElementsAre(0));
  }
}

TEST(VelTableAttribTest, textOfKCharactersTakes20Plus4kBytes) {
  const VelTableAttrib attrib(77, "abc");
  expectBlock(attrib, 32, VEL_STRING);
  EXPECT_THAT(characters(attrib), testing::ElementsAre('a', 'b', 'c', 0));
  EXPECT_EQ(SizeofVelString(blockValue(attrib.getAttribPtr())), 20u);
}

TEST(VelTableAttribTest, sizeOfATextIsReservedByItsBytes) {
  EXPECT_EQ(SizeAsVelString(nullptr), 8u);
  EXPECT_EQ(SizeAsVelString(""), 8u);
  EXPECT_EQ(SizeAsVelString("abc"), 20u);
  EXPECT_EQ(SizeAsVelString("\xC3\xA9"), 16u);
}

TEST(VelTableAttribTest, multibyteTextUsesLessThanItsReservedSize) {
  const ScopedLocale locale("C.UTF-8");
  ASSERT_TRUE(locale);
  const VelTableAttrib attrib(77, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  expectBlock(attrib, 12 + 4 * 10 + 8, VEL_STRING);
  EXPECT_THAT(characters(attrib), testing::ElementsAre('a', 0xE9, 0x20AC, 0x1F600, 0));
}

TEST(VelTableAttribTest, eachByteThatIsNoTextBecomesAReplacementCharacter) {
  const ScopedLocale locale("C.UTF-8");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1,
                                        "a\xFF\xFE"
                                        "b")),
              testing::ElementsAre('a', 0xFFFD, 0xFFFD, 'b', 0));
}

TEST(VelTableAttribTest, sequenceCutOffAtTheEndIsReplacedByteByByte) {
  const ScopedLocale locale("C.UTF-8");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "a\xE2\x82")),
              testing::ElementsAre('a', 0xFFFD, 0xFFFD, 0));
}

TEST(VelTableAttribTest, sequenceCutOffInTheMiddleLosesNothingBehindIt) {
  const ScopedLocale locale("C.UTF-8");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "\xE2\x82xyz")),
              testing::ElementsAre(0xFFFD, 0xFFFD, 'x', 'y', 'z', 0));
}

TEST(VelTableAttribTest, withoutALocaleForeignBytesBecomeQuestionMarks_textIsNotLost) {
  const ScopedLocale locale("C");
  EXPECT_THAT(characters(VelTableAttrib(1, "M\xC3\xBCller")),
              testing::ElementsAre('M', '?', '?', 'l', 'l', 'e', 'r', 0));
}

TEST(VelTableAttribTest, latin1TextIsConvertedInALatin1Locale) {
  const CompiledLocale compiled("en_US.ISO-8859-1", "en_US", "ISO-8859-1");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("en_US.ISO-8859-1");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "M\xFCller")),
              testing::ElementsAre('M', 0xFC, 'l', 'l', 'e', 'r', 0));
}

// 0x8862 stands for two characters; the second comes without a byte of its own.
TEST(VelTableAttribTest, sequenceThatMakesTwoCharactersKeepsBoth) {
  const CompiledLocale compiled("zh_HK.BIG5-HKSCS", "zh_HK", "BIG5-HKSCS");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("zh_HK.BIG5-HKSCS");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "\x88\x62\x41\x88\x62")),
              testing::ElementsAre(0xCA, 0x304, 'A', 0xCA, 0x304, 0));
}

// 0x8399 stands for two characters, of which the library gives the second over and over; 0xFD is no
// text.
TEST(VelTableAttribTest, sequenceThatMakesTwoCharactersKeepsWhatIsBehindIt) {
  const CompiledLocale compiled("ja_JP.SHIFT_JISX0213", "ja_JP", "SHIFT_JISX0213");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("ja_JP.SHIFT_JISX0213");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "a\x83\x99>=")),
              testing::ElementsAre('a', 0x30AF, 0x309A, '>', '=', 0));
  EXPECT_THAT(characters(VelTableAttrib(1, "a\x83\x99>\xFD=")),
              testing::ElementsAre('a', 0x30AF, 0x309A, '>', '?', '=', 0));
}

// A Tamil byte that stands for two characters: the block has room for one per byte.
TEST(VelTableAttribTest, encodingWithMoreCharactersThanBytesStaysWithinTheReservedSize) {
  const CompiledLocale compiled("ta_IN.TSCII", "ta_IN", "TSCII");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const ScopedLocale locale("ta_IN.TSCII");
  ASSERT_TRUE(locale);
  EXPECT_THAT(characters(VelTableAttrib(1, "\xE1")), testing::ElementsAre(0xBA8, 0));
  EXPECT_THAT(characters(VelTableAttrib(1, "\xE1\xE1")), testing::ElementsAre(0xBA8, 0xBC2, 0));
}

// Property: whatever the bytes, the count fits the reserved size, and the last character is the
// zero.
TEST(VelTableAttribTest, anyBytesStayWithinTheirReservedSize) {
  std::mt19937 random(1);
  for (const char* name : {"C", "C.UTF-8"}) {
    const ScopedLocale locale(name);
    for (int round = 0; round < 2000; ++round) {
      std::string text(random() % 40, ' ');
      for (char& byte : text) byte = static_cast<char>(random() % 255 + 1);
      const VelTableAttrib attrib(77, text.c_str());
      const std::vector<uint32_t> stored = characters(attrib);
      EXPECT_EQ(blockLength(attrib.getAttribPtr()), 20 + 4 * text.size());
      EXPECT_LE(stored.size(), text.size() + 1);
      EXPECT_EQ(std::count(stored.begin(), stored.end(), 0u), 1);
      EXPECT_EQ(stored.back(), 0u);
    }
  }
}

TEST(VelTableAttribTest, longTextIsKeptWhole) {
  const std::string text(1 << 20, 'x');
  const VelTableAttrib attrib(1, text.c_str());
  EXPECT_EQ(characters(attrib).size(), text.size() + 1);
}

TEST(VelTableAttribTest, epochInUtc) {
  const TimeZoneSetting utc("UTC");
  EXPECT_EQ(dateTime(0), "1970-01-01-00.00.00.000000");
}

TEST(VelTableAttribTest, timesAreLocal) {
  const TimeZoneSetting berlin("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(dateTime(1182177321), "2007-06-18-16.35.21.000000");
}

TEST(VelTableAttribTest, timeBeforeTheEpoch) {
  const TimeZoneSetting utc("UTC");
  EXPECT_EQ(dateTime(-1), "1969-12-31-23.59.59.000000");
}

TEST(VelTableAttribTest, fourDigitYearsAreWritten) {
  const TimeZoneSetting utc("UTC");
  EXPECT_EQ(dateTime(253402300799), "9999-12-31-23.59.59.000000");
}

TEST(VelTableAttribTest, firstYearOfFourDigitsIsZero) {
  const TimeZoneSetting utc("UTC");
  EXPECT_EQ(dateTime(-62167219200), "0000-01-01-00.00.00.000000");
  EXPECT_EQ(dateTime(-62167219201), std::string(kDateTimeSize, '\0'));
}

TEST(VelTableAttribTest, timesThatTheCalendarCannotExpressAreZeros) {
  const TimeZoneSetting utc("UTC");
  const std::string zeros(kDateTimeSize, '\0');
  EXPECT_EQ(dateTime(LONG_MAX), zeros);
  EXPECT_EQ(dateTime(LONG_MIN), zeros);
  EXPECT_EQ(dateTime(253402300800), zeros);
}

}  // namespace
}  // namespace quenlor
