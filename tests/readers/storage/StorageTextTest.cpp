#include "readers/storage/StorageText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint64_t kLargest = std::numeric_limits<uint64_t>::max();

TEST(StorageTextTest, trim2TakesBlanksAndControlCharactersFromBothEnds) {
  char text[] = " \t ST318406LC \r\n";
  trim2(text);
  EXPECT_STREQ(text, "ST318406LC");
  char blanks[] = "   ";
  trim2(blanks);
  EXPECT_STREQ(blanks, "");
  trim2(nullptr);
}

TEST(StorageTextTest, innerBlanksStay) { EXPECT_EQ(trimmed(" A B "), "A B"); }

TEST(StorageTextTest, trimmedTextEndsAtANulByte) {
  EXPECT_EQ(trimmed(std::string("AB \0CD", 6)), "AB");
}

TEST(StorageTextTest, runsOfDelimitersCountOnce) {
  EXPECT_THAT(splitTokens("  a, b,,c\n", " ,\n"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(splitTokens(" \n", " \n"), IsEmpty());
  EXPECT_THAT(splitTokens("", " "), IsEmpty());
  EXPECT_EQ(tokenAt(splitTokens("a b", " "), 2), "");
}

TEST(StorageTextTest, numbersEndAtTheFirstOtherCharacter) {
  EXPECT_EQ(leadingNumber("39102336\n"), 39102336U);
  EXPECT_EQ(leadingNumber("  17+"), 17U);
  EXPECT_EQ(leadingNumber("36.4"), 36U);
  EXPECT_EQ(leadingNumber("-5"), 0U);
  EXPECT_EQ(leadingNumber(""), 0U);
  EXPECT_EQ(leadingNumber("18446744073709551615"), kLargest);
  EXPECT_EQ(leadingNumber("18446744073709551616"), kLargest);
  EXPECT_EQ(leadingNumber(std::string(400, '9')), kLargest);
}

TEST(StorageTextTest, productsSaturate) {
  EXPECT_EQ(saturatingProduct({2434, 16065, 512}), 20020331520U);
  EXPECT_EQ(saturatingProduct({kLargest, 2}), kLargest);
  EXPECT_EQ(saturatingProduct({kLargest, 2, 0}), 0U);
}

}  // namespace
}  // namespace quenlor
