#include "base/Utf8.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

constexpr char kReplaced[] = "\xEF\xBF\xBD";

TEST(Utf8Test, plainTextStays) {
  EXPECT_EQ(cleanUtf8("Example Disk 1.5 TB"), "Example Disk 1.5 TB");
  EXPECT_EQ(cleanUtf8("Zürich 東京 \U0001F4BE"), "Zürich 東京 \U0001F4BE");
}

TEST(Utf8Test, blanksAtBothEndsGoAndThoseInsideStay) {
  EXPECT_EQ(cleanUtf8(" \t a  b \r\n"), "a  b");
  EXPECT_EQ(cleanUtf8("   "), "");
  EXPECT_EQ(cleanUtf8(""), "");
}

TEST(Utf8Test, eachByteThatIsNoUtf8IsReplaced) {
  const std::string r = kReplaced;
  EXPECT_EQ(cleanUtf8("Z\xFCrich"), "Z" + r + "rich");             // Latin-1
  EXPECT_EQ(cleanUtf8("a\xE2\x82"), "a" + r + r);                  // cut off
  EXPECT_EQ(cleanUtf8("\xC0\x80z"), r + r + "z");                  // longer than needed
  EXPECT_EQ(cleanUtf8("\xED\xA0\x80z"), r + r + r + "z");          // a surrogate
  EXPECT_EQ(cleanUtf8("\xF4\x90\x80\x80z"), r + r + r + r + "z");  // above U+10FFFF
  EXPECT_EQ(cleanUtf8("\x80\xFFz"), r + r + "z");                  // no lead byte at all
}

TEST(Utf8Test, controlsAreReplacedByOneCharacterEach) {
  const std::string r = kReplaced;
  EXPECT_EQ(cleanUtf8(std::string_view("a\0b\x1b[31m\x7f", 9)), "a" + r + "b" + r + "[31m" + r);
  EXPECT_EQ(cleanUtf8("a\nb\tc"), "a" + r + "b" + r + "c");
  EXPECT_EQ(cleanUtf8("a\u0085b\u009fc"), "a" + r + "b" + r + "c");
  EXPECT_EQ(cleanUtf8("a\u00a0b"), "a\u00a0b");
}

TEST(Utf8Test, bidirectionalControlsAreReplaced) {
  const std::string r = kReplaced;
  EXPECT_EQ(cleanUtf8("a\u202ab\u202ec\u2066d\u2069e"),
            "a" + r + "b" + r + "c" + r + "d" + r + "e");
  EXPECT_EQ(cleanUtf8("a\u2029b\u202fc\u2065d\u206ae"), "a\u2029b\u202fc\u2065d\u206ae");
}

TEST(Utf8Test, charactersAreCountedNotBytes) {
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "ü";
  EXPECT_EQ(cleanCharacters(umlauts).size(), 255u);
  EXPECT_EQ(cleanUtf8("abcdef", 3), "abc");
  EXPECT_EQ(cleanUtf8("ab cdef", 3), "ab");
}

TEST(Utf8Test, partsAreJoinedByCommasAndEscaped) {
  EXPECT_EQ(joinParts({}), "");
  EXPECT_EQ(joinParts({"/dev/sda"}), "/dev/sda");
  EXPECT_EQ(joinParts({"/dev/sda", "/dev/sdb"}), "/dev/sda,/dev/sdb");
  EXPECT_EQ(joinParts({"a,b", "c\\d"}), "a\\,b,c\\\\d");
}

}  // namespace
}  // namespace quenlor
