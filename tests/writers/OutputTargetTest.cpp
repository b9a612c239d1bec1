#include "writers/OutputTarget.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

#include "base/ExitStatus.h"
#include "host/ScanState.h"
#include "tests/writers/WriterTest.h"

namespace quenlor {
namespace {

using test::contentOf;
using test::writeFile;

class OutputTargetTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return m_folder.path(name); }

  // Names in the folder.
  size_t fileCount() const {
    const std::filesystem::directory_iterator entries(path(""));
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
  }

  static mode_t modeOf(const std::string& file) {
    struct stat facts {};
    EXPECT_EQ(::stat(file.c_str(), &facts), 0);
    return facts.st_mode & 07777;
  }

 private:
  test::DocumentFolder m_folder;
};

TEST_F(OutputTargetTest, aNewDocumentAppearsWhenItIsComplete) {
  OutputTarget target(path("out"), true);
  EXPECT_NE(target.file(), path("out"));
  writeFile(target.file(), "document");
  EXPECT_FALSE(std::filesystem::exists(path("out")));
  EXPECT_EQ(target.commit(), kExitSuccess);
  EXPECT_EQ(contentOf(path("out")), "document");
  EXPECT_EQ(modeOf(path("out")), 0600u);
  EXPECT_EQ(fileCount(), 1u);
}

TEST_F(OutputTargetTest, anIncompleteDocumentLeavesTheOldOneAndNothingElse) {
  writeFile(path("out"), "old");
  {
    const OutputTarget target(path("out"), true);
    writeFile(target.file(), "half");
  }
  EXPECT_EQ(contentOf(path("out")), "old");
  EXPECT_EQ(fileCount(), 1u);
}

TEST_F(OutputTargetTest, anIncompleteDocumentIsKnownToWhoeverCleansUp_aCompleteOneIsNot) {
  ScanState state;
  useScanState(&state);
  {
    OutputTarget target(path("out"), true);
    EXPECT_EQ(state.incompleteDocument.name(), target.file());
    EXPECT_EQ(target.commit(), kExitSuccess);
    EXPECT_EQ(state.incompleteDocument.name(), "");
  }
  {
    const OutputTarget target(path("out"), true);
    EXPECT_EQ(state.incompleteDocument.name(), target.file());
  }
  EXPECT_EQ(state.incompleteDocument.name(), "") << "it has been removed already";
  const OutputTarget inPlace(path("out"), false);
  EXPECT_EQ(state.incompleteDocument.name(), "") << "what is written in place stays";
  useScanState(nullptr);
}

TEST_F(OutputTargetTest, anOldFileKeepsItsMode) {
  writeFile(path("out"), "old");
  ASSERT_EQ(::chmod(path("out").c_str(), 0644), 0);
  OutputTarget target(path("out"), true);
  writeFile(target.file(), "new");
  EXPECT_EQ(target.commit(), kExitSuccess);
  EXPECT_EQ(contentOf(path("out")), "new");
  EXPECT_EQ(modeOf(path("out")), 0644u);
}

TEST_F(OutputTargetTest, anOldFileKeepsItsOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  writeFile(path("out"), "old");
  ASSERT_EQ(::chown(path("out").c_str(), 1234, 4321), 0);
  OutputTarget target(path("out"), true);
  EXPECT_EQ(target.commit(), kExitSuccess);
  struct stat facts {};
  ASSERT_EQ(::stat(path("out").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_uid, 1234u);
  EXPECT_EQ(facts.st_gid, 4321u);
}

TEST_F(OutputTargetTest, aFileWithASecondNameIsWrittenInPlace) {
  writeFile(path("out"), "old");
  ASSERT_EQ(::link(path("out").c_str(), path("second").c_str()), 0);
  EXPECT_EQ(OutputTarget(path("out"), true).file(), path("out"));
}

TEST_F(OutputTargetTest, aLinkAFifoAndADeviceAreWrittenInPlace) {
  writeFile(path("file"), "old");
  ASSERT_EQ(::symlink("file", path("link").c_str()), 0);
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(OutputTarget(path("link"), true).file(), path("link"));
  EXPECT_EQ(OutputTarget(path("fifo"), true).file(), path("fifo"));
  EXPECT_STREQ(OutputTarget("/dev/full", true).file(), "/dev/full");
}

TEST_F(OutputTargetTest, standardOutputAndClassicScansAreNotTouched) {
  EXPECT_STREQ(OutputTarget("stdout", true).file(), "stdout");
  OutputTarget classic(path("out"), false);
  EXPECT_EQ(classic.file(), path("out"));
  EXPECT_EQ(classic.commit(), kExitSuccess);
  EXPECT_EQ(fileCount(), 0u);
}

TEST_F(OutputTargetTest, aFolderThatIsNotThereIsLeftToTheWriter) {
  EXPECT_EQ(OutputTarget(path("none") + "/out", true).file(), path("none") + "/out");
}

TEST_F(OutputTargetTest, aPlaceThatCannotBeTakenIsAFailedWrite) {
  OutputTarget target(path("out"), true);
  ASSERT_EQ(::mkdir(path("out").c_str(), 0700), 0);
  EXPECT_EQ(target.commit(), kExitOutputClose);
}

}  // namespace
}  // namespace quenlor
