#include "base/Properties.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace quenlor {
namespace {

using namespace std::string_literals;

TEST(Properties, readsKeysAndValuesWithoutTheBlanksAroundThem) {
  StringMap values;
  EXPECT_EQ(parseProperties("a=1\n  b\t =  two words  \nc = x=y\n", values), 0);
  EXPECT_EQ(values.get("a"), "1");
  EXPECT_EQ(values.get("b"), "two words");
  EXPECT_EQ(values.get("c"), "x=y");
  EXPECT_EQ(values.size(), 3u);
}

TEST(Properties, commentsAndBlankLinesAreSkipped) {
  StringMap values;
  EXPECT_EQ(parseProperties("# a = 1\n\n \t\n   # b\n", values), 0);
  EXPECT_TRUE(values.empty());
}

TEST(Properties, aHashInsideAValueBelongsToIt) {
  StringMap values;
  EXPECT_EQ(parseProperties("a = 1 # one", values), 0);
  EXPECT_EQ(values.get("a"), "1 # one");
}

TEST(Properties, byteOrderMarkCrlfAndMissingFinalNewlineAreTolerated) {
  StringMap values;
  EXPECT_EQ(parseProperties("\xEF\xBB\xBF"
                            "a = 1\r\nb = 2",
                            values),
            0);
  EXPECT_EQ(values.get("a"), "1");
  EXPECT_EQ(values.get("b"), "2");
}

TEST(Properties, lastOfEqualKeysWinsAndAValueMayBeEmpty) {
  StringMap values;
  EXPECT_EQ(parseProperties("a = 1\na = 2\nb =\n", values), 0);
  EXPECT_EQ(values.get("a"), "2");
  ASSERT_NE(values.find("b"), nullptr);
  EXPECT_EQ(values.get("b"), "");
}

TEST(Properties, reportsTheNumberOfTheFirstMalformedLine) {
  StringMap values;
  EXPECT_EQ(parseProperties("nonsense", values), 1);
  EXPECT_EQ(parseProperties("a = 1\n\n= 2\nnonsense\n", values), 3);
  EXPECT_EQ(parseProperties("a = 1\nb = \0\n"s, values), 2);
  EXPECT_EQ(parseProperties("# \0\n"s, values), 1);
  EXPECT_EQ(parseProperties("\0"s, values), 1);
}

TEST(Properties, emptyTextHoldsNothing) {
  StringMap values;
  EXPECT_EQ(parseProperties("", values), 0);
  EXPECT_EQ(parseProperties("\xEF\xBB\xBF", values), 0);
  EXPECT_TRUE(values.empty());
}

TEST(Properties, arbitraryBytesGiveAResultWithinTheText) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string text(random() % 64, '\0');
    for (char& byte : text) byte = "ab=# \t\r\n\0\xEF\xBB\xBF"[random() % 12];
    StringMap values;
    const int line = parseProperties(text, values);
    EXPECT_GE(line, 0);
    EXPECT_LE(line, static_cast<int>(text.size()));
    for (const auto& [key, value] : values) EXPECT_FALSE(key.empty());
  }
}

}  // namespace
}  // namespace quenlor
