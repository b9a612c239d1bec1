#include "base/Text.h"

#include <gtest/gtest.h>

#include <clocale>

namespace quenlor {
namespace {

TEST(Text, doublesAreReadWithADecimalPointInEveryLocale) {
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "this machine has no locale with a decimal comma";
  }
  EXPECT_DOUBLE_EQ(parseDouble("0.52 0.58"), 0.52);
  std::setlocale(LC_NUMERIC, "C");
}

TEST(Text, doublesEndWhereTheNumberEnds) {
  const char text[] = " 1.5x";
  char* end = nullptr;
  EXPECT_DOUBLE_EQ(parseDouble(text, &end), 1.5);
  EXPECT_EQ(end, text + 4);
  EXPECT_DOUBLE_EQ(parseDouble("", &end), 0.0);
  EXPECT_DOUBLE_EQ(parseDouble("1,5"), 1.0);
}

TEST(Text, trimsBlanksAtBothEndsOnly) {
  EXPECT_EQ(trimmed(" \t a b\r\n"), "a b");
  EXPECT_EQ(trimmed(" \t\r\n"), "");
  EXPECT_EQ(trimmed(""), "");
}

}  // namespace
}  // namespace quenlor
