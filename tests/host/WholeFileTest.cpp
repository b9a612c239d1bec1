#include "host/WholeFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>

#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

class WholeFileTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return m_directory.path(name); }
  std::string write(const char* name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }

 private:
  test::TemporaryDirectory m_directory;
};

TEST_F(WholeFileTest, aFileIsReadWithEveryByte) {
  const std::string text = std::string("a\0b\n", 4) + std::string(40000, 'x');
  const WholeFile file = readWholeFile(write("file", text));
  EXPECT_EQ(file.status, FileStatus::kRead);
  EXPECT_EQ(file.bytes, text);
}

TEST_F(WholeFileTest, anEmptyFileIsReadAndEmpty) {
  const WholeFile file = readWholeFile(write("file", ""));
  EXPECT_EQ(file.status, FileStatus::kRead);
  EXPECT_EQ(file.bytes, "");
}

TEST_F(WholeFileTest, aFileOfTheLimitIsReadAndOneByteMoreIsTooLarge) {
  EXPECT_EQ(readWholeFile(write("fits", std::string(100, 'x')), 100).bytes.size(), 100u);
  const WholeFile file = readWholeFile(write("longer", std::string(101, 'x')), 100);
  EXPECT_EQ(file.status, FileStatus::kTooLarge);
  EXPECT_EQ(file.bytes, "");
}

TEST_F(WholeFileTest, aLongFileComesInPiecesFromFrontToBack) {
  std::string text;
  for (int i = 0; i < 20000; ++i) text += std::to_string(i) + '\n';
  std::string pieces;
  size_t count = 0;
  const auto take = [&](std::string_view piece) {
    pieces += piece;
    ++count;
  };
  EXPECT_EQ(readPieces(write("list", text), text.size(), take), FileStatus::kRead);
  EXPECT_EQ(pieces, text);
  EXPECT_GT(count, 2u);
  EXPECT_EQ(readPieces(path("list"), text.size() - 1, take), FileStatus::kTooLarge);
  EXPECT_EQ(readPieces(path("none"), 1, take), FileStatus::kAbsent);
}

TEST_F(WholeFileTest, aFifoWithoutWriterIsNoRegularFileAndNobodyWaits) {
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(readWholeFile(path("fifo")).status, FileStatus::kNotRegular);
  EXPECT_FALSE(readAttribute(path("fifo")));
}

TEST_F(WholeFileTest, aDirectoryIsNoRegularFile) {
  EXPECT_EQ(readWholeFile(path("")).status, FileStatus::kNotRegular);
}

TEST_F(WholeFileTest, aMissingFileIsAbsent) {
  EXPECT_EQ(readWholeFile(path("none")).status, FileStatus::kAbsent);
  EXPECT_FALSE(readAttribute(path("none")));
}

TEST_F(WholeFileTest, errnosOfTheKernelHaveAMeaning) {
  EXPECT_EQ(fileStatusOf(0), FileStatus::kRead);
  EXPECT_EQ(fileStatusOf(ENOENT), FileStatus::kAbsent);
  EXPECT_EQ(fileStatusOf(ENOTDIR), FileStatus::kAbsent);
  EXPECT_EQ(fileStatusOf(ENODEV), FileStatus::kAbsent);
  EXPECT_EQ(fileStatusOf(EACCES), FileStatus::kRefused);
  EXPECT_EQ(fileStatusOf(EPERM), FileStatus::kRefused);
  EXPECT_EQ(fileStatusOf(EIO), FileStatus::kFailed);
}

TEST_F(WholeFileTest, whatTheKernelRefusesIsRefused) {
  test::FakeHost machine;
  machine.files["/sys/x"] = "1\n";
  machine.openErrors["/sys/x"] = EACCES;
  EXPECT_EQ(readWholeFile("/sys/x").status, FileStatus::kRefused);
}

TEST_F(WholeFileTest, anAttributeLosesTheBlanksAtItsEndOnly) {
  EXPECT_EQ(readAttribute(write("model", "  Disk 1  \n")), "  Disk 1");
  EXPECT_EQ(readAttribute(write("empty", "\n")), "");
}

TEST_F(WholeFileTest, anAttributeIsAPageAtMost) {
  EXPECT_EQ(readAttribute(write("long", std::string(5000, 'x')))->size(), 4096u);
}

TEST_F(WholeFileTest, nothingStaysOpen) {
  test::FakeHost machine;
  machine.files["/sys/x"] = "1\n";
  readWholeFile("/sys/x");
  readAttribute("/sys/x");
  EXPECT_EQ(machine.openDescriptors(), 0);
}

}  // namespace
}  // namespace quenlor
