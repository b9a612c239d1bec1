#include "base/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

class FileTest : public testing::Test {
 protected:
  std::string path(const char* name) const {
    return m_directory.path().string() + File::pathSeparator + name;
  }
  std::string make(const char* name, const std::string& content) const {
    return m_directory.write(name, content);
  }

  test::TemporaryDirectory m_directory;
};

TEST_F(FileTest, readsEveryByteOfAFile) {
  const std::string content("line\r\n\0binary\xFF", 14);
  std::string text;
  EXPECT_EQ(File::readText(make("f", content).c_str(), text), 0);
  EXPECT_EQ(text, content);
  EXPECT_EQ(File::readText(make("empty", "").c_str(), text), 0);
  EXPECT_EQ(text, "");
}

TEST_F(FileTest, whatIsMissingOrNoFileGivesItsErrorAndNoText) {
  std::string text = "old";
  EXPECT_EQ(File::readText(path("missing").c_str(), text), ENOENT);
  EXPECT_EQ(text, "");
  EXPECT_EQ(File::readText((make("f", "x") + "/below").c_str(), text), ENOTDIR);
  EXPECT_EQ(File::readText(m_directory.path().c_str(), text), EISDIR);
  EXPECT_EQ(File::readText("/dev/zero", text), EINVAL);
}

TEST_F(FileTest, aPipeIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  std::string text;
  EXPECT_EQ(File::readText(path("pipe").c_str(), text), EINVAL);
}

TEST_F(FileTest, sizeIsLimited) {
  std::string text;
  EXPECT_EQ(File::readText(make("full", std::string(File::kMaxTextSize, 'x')).c_str(), text), 0);
  EXPECT_EQ(text.size(), File::kMaxTextSize);
  EXPECT_EQ(File::readText(make("over", std::string(File::kMaxTextSize + 1, 'x')).c_str(), text),
            EFBIG);
  EXPECT_EQ(text, "");
}

TEST_F(FileTest, leavesNoDescriptorOpen) {
  std::string text;
  const auto openDescriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const std::string file = make("f", "x");
  const auto before = openDescriptors();
  EXPECT_EQ(File::readText(file.c_str(), text), 0);
  EXPECT_EQ(File::readText(m_directory.path().c_str(), text), EISDIR);
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace quenlor
