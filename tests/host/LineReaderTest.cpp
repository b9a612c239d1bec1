#include "host/LineReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/Handles.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

std::vector<std::string> piecesOf(const std::string& content, size_t bufferSize) {
  test::FakeHost machine;
  machine.files["/file"] = content;
  const FileStream stream = openFile("/file");
  LineReader reader(stream.get(), bufferSize);
  std::vector<std::string> pieces;
  while (reader.next()) pieces.emplace_back(reader.line());
  return pieces;
}

using Pieces = std::vector<std::string>;

TEST(LineReader, linesKeepTheirNewline) {
  EXPECT_EQ(piecesOf("one\ntwo\n", 256), (Pieces{"one\n", "two\n"}));
}

TEST(LineReader, lastLineMayLackItsNewline) {
  EXPECT_EQ(piecesOf("one\ntwo", 256), (Pieces{"one\n", "two"}));
}

TEST(LineReader, lineLongerThanTheBufferArrivesInPieces) {
  EXPECT_EQ(piecesOf("abcdefghij\nk\n", 5), (Pieces{"abcd", "efgh", "ij\n", "k\n"}));
}

TEST(LineReader, lineThatJustFillsTheBufferLeavesItsNewlineForTheNextPiece) {
  EXPECT_EQ(piecesOf("abcd\nk\n", 5), (Pieces{"abcd", "\n", "k\n"}));
}

TEST(LineReader, textBehindNulIsNotSeen_linesBehindItAre) {
  EXPECT_EQ(piecesOf(std::string("ab\0cd\nef\n", 9), 256), (Pieces{"ab", "ef\n"}));
}

TEST(LineReader, emptyFileAndNullStreamHaveNoLines) {
  EXPECT_TRUE(piecesOf("", 256).empty());
  LineReader reader(nullptr, 256);
  EXPECT_FALSE(reader.next());
  EXPECT_STREQ(reader.line(), "");
}

TEST(LineReader, directoryHasNoLines) {
  test::FakeHost machine;
  machine.directories["/dir"] = {"a"};
  const FileStream stream = openFile("/dir");
  ASSERT_TRUE(stream);
  LineReader reader(stream.get(), 256);
  EXPECT_FALSE(reader.next());
}

TEST(LineReader, uselessBufferSizesStillMakeProgress) {
  EXPECT_EQ(piecesOf("ab", 0), (Pieces{"a", "b"}));
  EXPECT_EQ(piecesOf("ab", 1), (Pieces{"a", "b"}));
}

TEST(LineReader, everySizeGivesTheWholeText) {
  std::string text;
  for (int line = 0; line < 40; ++line) text += std::string(static_cast<size_t>(line), 'x') + '\n';
  for (size_t size = 2; size < 50; ++size) {
    std::string joined;
    for (const std::string& piece : piecesOf(text, size)) {
      EXPECT_LT(piece.size(), size);
      joined += piece;
    }
    EXPECT_EQ(joined, text);
  }
}

TEST(LineReader, pieceMaySplitInPlace) {
  test::FakeHost machine;
  machine.files["/file"] = "a b\nc\n";
  const FileStream stream = openFile("/file");
  LineReader reader(stream.get(), 256);
  ASSERT_TRUE(reader.next());
  reader.line()[1] = '\0';
  EXPECT_STREQ(reader.line(), "a");
  ASSERT_TRUE(reader.next());
  EXPECT_STREQ(reader.line(), "c\n");
}

std::string cut(const std::string& content) {
  test::FakeHost machine;
  machine.files["/file"] = content;
  const FileStream stream = openFile("/file");
  LineReader reader(stream.get(), 256);
  reader.next();
  reader.cutTrailingControl();
  return reader.line();
}

TEST(LineReader, oneTrailingControlCharacterIsCut) {
  EXPECT_EQ(cut("text\n"), "text");
  EXPECT_EQ(cut("text\r\n"), "text\r");
  EXPECT_EQ(cut("text\x7f"), "text");
  EXPECT_EQ(cut("text "), "text ");
  EXPECT_EQ(cut("text\xc3\xa9"), "text\xc3\xa9");
  EXPECT_EQ(cut("\n"), "");
  EXPECT_EQ(cut(""), "");
}

}  // namespace
}  // namespace quenlor
