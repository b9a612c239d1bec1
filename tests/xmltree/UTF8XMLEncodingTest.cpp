#include "xmltree/UTF8XMLEncoding.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "tests/xmltree/Documents.h"

namespace quenlor {
namespace {

std::string printed(const wchar_t* text) {
  char* bytes = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&bytes, &size);
  UTF8XMLEncoding(text).printx(stream);
  // A stream that once was wide would refuse bytes from now on.
  EXPECT_LE(std::fwide(stream, 0), 0);
  std::fclose(stream);
  const std::string result(bytes, size);
  std::free(bytes);
  return result;
}

TEST(UTF8XMLEncoding, nullAndEmptyTextPrintNothing) {
  EXPECT_EQ(printed(nullptr), "");
  EXPECT_EQ(printed(L""), "");
}

TEST(UTF8XMLEncoding, markupCharactersAreEscaped) {
  EXPECT_EQ(printed(L"<a & b>]]>\"'"), "&lt;a &amp; b&gt;]]&gt;\"'");
}

TEST(UTF8XMLEncoding, textIsUtf8InTheCLocaleToo) {
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(printed(L"\u00E9\u20AC\U0001F600"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(UTF8XMLEncoding, forbiddenCharactersBecomeTheReplacementCharacter) {
  const std::string replacement = "\xEF\xBF\xBD";
  for (const wchar_t forbidden : {0x1, 0x8, 0xB, 0xC, 0xE, 0x1F, 0xD800, 0xDBFF, 0xDC00, 0xDFFF,
                                  0xFFFE, 0xFFFF, 0x110000, -1}) {
    const wchar_t text[] = {L'a', forbidden, L'b', 0};
    EXPECT_EQ(printed(text), "a" + replacement + "b") << static_cast<unsigned>(forbidden);
  }
}

TEST(UTF8XMLEncoding, tabAndNewlineStayAndACarriageReturnIsAReference) {
  EXPECT_EQ(printed(L"a\tb\nc\rd"), "a\tb\nc&#13;d");
}

TEST(UTF8XMLEncoding, everyCharacterGivesAWellFormedDocument) {
  std::wstring all;
  for (wchar_t character = 1; character < 0x3000; ++character) all += character;
  for (wchar_t character = 0xD700; character < 0x10100; ++character) all += character;
  for (const wchar_t character : {0x1FFFE, 0x10FFFF, 0x110000, -1}) all += character;
  RecordingSink sink;
  EXPECT_EQ(readDocument("<a>" + printed(all.c_str()) + "</a>", sink), 0);
}

TEST(UTF8XMLEncoding, textNeedNotOutliveTheConstructor) {
  std::wstring text = L"abc";
  const UTF8XMLEncoding encoding(text.c_str());
  text.assign(L"xyz");
  char buffer[8] = {};
  FILE* stream = fmemopen(buffer, sizeof buffer, "w");
  encoding.printx(stream);
  std::fclose(stream);
  EXPECT_STREQ(buffer, "abc");
}

TEST(UTF8XMLEncoding, isReleasedThroughAPointer) {
  const UTF8XMLEncoding* encoding = new UTF8XMLEncoding(L"x");
  delete encoding;
  EXPECT_TRUE(std::has_virtual_destructor_v<UTF8XMLEncoding>);
}

}  // namespace
}  // namespace quenlor
