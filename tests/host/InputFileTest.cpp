#include "host/InputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string contentOf(FILE* stream) {
  std::string text;
  for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) text += static_cast<char>(c);
  return text;
}

class InputFileTest : public ::testing::Test {
 protected:
  // Path of a new pipe, and of its reading end as a program's standard input has it.
  std::string makePipe() {
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    return "/proc/self/fd/" + std::to_string(ends[0]);
  }
  void put(const std::string& text) const {
    EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void closeWriter() { ::close(std::exchange(ends[1], -1)); }
  ~InputFileTest() override {
    for (const int end : ends) {
      if (end >= 0) ::close(end);
    }
  }

  test::TemporaryDirectory directory;
  int ends[2] = {-1, -1};
  const Clock::time_point started = Clock::now();
};

TEST_F(InputFileTest, regularFileIsRead) {
  const std::string text(200000, 'x');
  const FileStream stream = openInputFile(directory.write("file", text).c_str());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(contentOf(stream.get()), text);
}

TEST_F(InputFileTest, emptyFileIsStreamThatEndsAtOnce) {
  const FileStream stream = openInputFile(directory.write("file", "").c_str());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(contentOf(stream.get()), "");
}

TEST_F(InputFileTest, fifoWithoutWriterIsRefusedAtOnce) {
  const std::string path = directory.path("fifo");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(openInputFile(path.c_str()), nullptr);
  EXPECT_EQ(errno, ENXIO);
  EXPECT_LT(Clock::now() - started, 5s);
}

TEST_F(InputFileTest, whatIsNeitherFileNorPipeIsRefused) {
  EXPECT_EQ(openInputFile(directory.path().c_str()), nullptr);
  EXPECT_EQ(openInputFile("/dev/null"), nullptr);
  EXPECT_EQ(openInputFile("/dev/zero"), nullptr);
  EXPECT_EQ(openInputFile(directory.path("missing").c_str()), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(InputFileTest, pipeIsReadAlsoWhenItsWriterHasGone) {
  const std::string path = makePipe();
  put("<a/>");
  closeWriter();
  const FileStream stream = openInputFile(path.c_str());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(contentOf(stream.get()), "<a/>");
}

TEST_F(InputFileTest, slowWriterIsWaitedFor) {
  const std::string path = makePipe();
  std::thread writer([this] {
    for (const char* part : {"<a", "/>"}) {
      std::this_thread::sleep_for(50ms);
      put(part);
    }
    closeWriter();
  });
  const FileStream stream = openInputFile(path.c_str());
  writer.join();
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(contentOf(stream.get()), "<a/>");
}

TEST_F(InputFileTest, writerThatDoesNotEndIsRefusedAfterTheLimit) {
  const std::string path = makePipe();
  put("<a/>");
  EXPECT_EQ(openInputFile(path.c_str(), {200ms, 1000}), nullptr);
  EXPECT_EQ(errno, ETIMEDOUT);
  EXPECT_GE(Clock::now() - started, 200ms);
  EXPECT_LT(Clock::now() - started, 5s);
}

TEST_F(InputFileTest, moreThanTheLimitIsRefused) {
  const std::string path = makePipe();
  put(std::string(1001, 'x'));
  EXPECT_EQ(openInputFile(path.c_str(), {10s, 1000}), nullptr);
  EXPECT_EQ(errno, EFBIG);
}

TEST_F(InputFileTest, pipeThatNobodyWroteToIsRefused) {
  const std::string path = makePipe();
  closeWriter();
  EXPECT_EQ(openInputFile(path.c_str()), nullptr);
}

TEST_F(InputFileTest, fileIsFoundOnTheMachineInUse_noDescriptorIsLeft) {
  test::FakeHost machine;
  machine.files["/etc/scan.xml"] = "<a/>";
  {
    const FileStream stream = openInputFile("/etc/scan.xml");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(contentOf(stream.get()), "<a/>");
  }
  EXPECT_EQ(machine.openDescriptors(), 0);
}

}  // namespace
}  // namespace quenlor
