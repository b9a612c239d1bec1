#include "base/String.h"

#include <gtest/gtest.h>

#include <string>

#include "base/File.h"

namespace quenlor {
namespace {

TEST(String, nullPointersGiveTheEmptyText) {
  EXPECT_TRUE(String(static_cast<const char*>(nullptr)).empty());
  EXPECT_TRUE(String(static_cast<const wchar_t*>(nullptr)).empty());
  EXPECT_STREQ(String().c_str(), "");
}

TEST(String, wideTextBecomesUtf8OfEveryLength) {
  EXPECT_EQ(String(L"a\u00E9\u20AC\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(String, limitsOfEachUtf8LengthAreKept) {
  EXPECT_EQ(String(L"\x7F\x80\x7FF\x800\xFFFF\x10000\x10FFFF"),
            "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(String, invalidCodePointsBecomeTheReplacementCharacter) {
  const wchar_t invalid[] = {0xD800, 0xDFFF, 0x110000, static_cast<wchar_t>(-1), L'x', 0};
  EXPECT_EQ(String(invalid), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDx");
}

TEST(String, concatenatesAPathWithTheSeparator) {
  const String directory = "/etc";
  EXPECT_EQ(directory + File::pathSeparator + "file", "/etc/file");
  EXPECT_EQ(directory, "/etc");
}

TEST(String, comparesByteForByte) {
  EXPECT_NE(String("Group"), "group");
  EXPECT_LT(String("a"), String("b"));
  EXPECT_EQ(String("abc").length(), 3u);
}

}  // namespace
}  // namespace quenlor
