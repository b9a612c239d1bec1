#include "quenlorctl/text/CleanText.h"

#include <gtest/gtest.h>

namespace quenlor::ctl {
namespace {

constexpr const char* kReplaced = "\xEF\xBF\xBD";

std::string repeated(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += kReplaced;
  return text;
}

TEST(CleanText, whatIsHarmlessStays) {
  const std::string text = "WDC \"Blue\" 1 TB, M\xC3\xBCnchen \xE2\x82\xAC \xF0\x9F\x98\x80";
  EXPECT_EQ(text, cleanText(text));
  EXPECT_EQ("", cleanText(""));
}

TEST(CleanText, eachCharacterThatSteersATerminalIsReplaced) {
  const std::string hostile[] = {
      "\x1B",         "\n",           "\r",           "\t",           std::string(1, '\0'),
      "\x7F",         "\xC2\x80",     "\xC2\x9B",     "\xC2\x9F",  // C1; 9B introduces sequences
      "\xE2\x80\xAA", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9",  // embeddings, isolates
      "\xD8\x9C",     "\xE2\x80\x8E", "\xE2\x80\x8F",                  // marks
      "\xE2\x80\xA8", "\xE2\x80\xA9",                                  // line, paragraph
      "\xE2\x80\x8B", "\xE2\x80\x8D", "\xE2\x81\xA0", "\xEF\xBB\xBF",  // without width
  };
  for (const std::string& character : hostile) {
    EXPECT_EQ("a" + repeated(1) + "b", cleanText("a" + character + "b"));
  }
}

TEST(CleanText, bytesThatAreNoUtf8AreReplacedOneByOne) {
  EXPECT_EQ(repeated(2) + "x", cleanText("\xC3\xFFx"));
  EXPECT_EQ(repeated(3), cleanText("\xED\xA0\x80"));  // a surrogate
  EXPECT_EQ(repeated(2), cleanText("\xC0\x9B"));      // an overlong escape
}

TEST(ValidUtf8, onlyWhatIsNoUtf8IsReplaced) {
  EXPECT_EQ("a\n\x1B" + repeated(1), validUtf8("a\n\x1B\xFF"));
}

}  // namespace
}  // namespace quenlor::ctl
