#include "base/Text.h"

#include <gtest/gtest.h>

#include "tests/support/TestLocale.h"

namespace quenlor {
namespace {

TEST(Text, doublesAreReadWithADecimalPointInEveryLocale) {
  const test::CompiledLocale compiled("de_DE.UTF-8", "de_DE", "UTF-8");
  if (!compiled) GTEST_SKIP() << "no localedef";
  const test::ScopedLocale locale("de_DE.UTF-8");
  ASSERT_DOUBLE_EQ(std::strtod("0,52", nullptr), 0.52);
  EXPECT_DOUBLE_EQ(parseDouble("0.52 0.58"), 0.52);
}

TEST(Text, doublesEndWhereTheNumberEnds) {
  const char text[] = " 1.5x";
  char* end = nullptr;
  EXPECT_DOUBLE_EQ(parseDouble(text, &end), 1.5);
  EXPECT_EQ(end, text + 4);
  EXPECT_DOUBLE_EQ(parseDouble("", &end), 0.0);
  EXPECT_DOUBLE_EQ(parseDouble("1,5"), 1.0);
}

TEST(Text, decimalValueReadsTheLeadingIntegerAndStaysWithinAnInt) {
  EXPECT_EQ(decimalValue("42"), 42);
  EXPECT_EQ(decimalValue("  -7 MHz"), -7);
  EXPECT_EQ(decimalValue("2933.437"), 2933);
  EXPECT_EQ(decimalValue(""), 0);
  EXPECT_EQ(decimalValue("x1"), 0);
  EXPECT_EQ(decimalValue("2147483648"), 2147483647);
  EXPECT_EQ(decimalValue("-99999999999999999999"), -2147483647 - 1);
}

TEST(Text, controlCharactersMakeNoSecondLine) {
  EXPECT_EQ(onOneLine("/a b\n\x1b[2J\x7f"), "/a b??[2J?");
  EXPECT_EQ(onOneLine("/\xc3\xa9"), "/\xc3\xa9");
  EXPECT_EQ(onOneLine(""), "");
}

TEST(Text, trimsBlanksAtBothEndsOnly) {
  EXPECT_EQ(trimmed(" \t a b\r\n"), "a b");
  EXPECT_EQ(trimmed(" \t\r\n"), "");
  EXPECT_EQ(trimmed(""), "");
}

}  // namespace
}  // namespace quenlor
