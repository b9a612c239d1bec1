#include "config/DovCfg.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// An installation: PREFIX/bin/quenlor and what belongs to it.
class DovCfgTest : public testing::Test {
 protected:
  DovCfgTest() {
    fs::create_directories(m_prefix + "/bin");
    fs::create_directories(m_prefix + "/etc/quenlor");
    make("bin/quenlor", "");
  }
  ~DovCfgTest() override { DovCfg::initialize(nullptr); }

  void make(const std::string& name, const std::string& content) const {
    m_directory.write(name, content);
  }

  // Initialises as the installed program; what it wrote to standard error.
  std::string initialize() const {
    testing::internal::CaptureStderr();
    DovCfg::initialize((m_prefix + "/bin/quenlor").c_str());
    return testing::internal::GetCapturedStderr();
  }

  std::string configDir() const { return DovCfg::getKey("config_dir").str(); }

  test::TemporaryDirectory m_directory;
  const std::string m_prefix = m_directory.path().string();
};

TEST_F(DovCfgTest, readsTheFileBesideTheProgram) {
  make("bin/quenlor.conf", "# comment\nconfig_dir = /somewhere\nhwscanner.timeout=5000000\n");
  make("etc/quenlor/quenlor.conf", "config_dir = /elsewhere\n");
  EXPECT_EQ(initialize(), "");
  EXPECT_EQ(DovCfg::getError(), 0);
  EXPECT_EQ(configDir(), "/somewhere");
  EXPECT_EQ(DovCfg::getKey("hwscanner.timeout"), "5000000");
}

TEST_F(DovCfgTest, thenTheOneInEtcOfTheInstallation) {
  make("etc/quenlor/quenlor.conf", "hwscanner.config_file = Mine.xml\n");
  initialize();
  EXPECT_EQ(DovCfg::getKey("hwscanner.config_file"), "Mine.xml");
}

TEST_F(DovCfgTest, onlyTheFirstFileThatExistsCounts) {
  make("bin/quenlor.conf", "");
  make("etc/quenlor/quenlor.conf", "a = 1\n");
  initialize();
  EXPECT_EQ(DovCfg::getKey("a"), "");
}

TEST_F(DovCfgTest, withoutAFileTheDefaultsHold) {
  if (fs::exists("/etc/quenlor/quenlor.conf")) GTEST_SKIP() << "this machine is configured";
  EXPECT_EQ(initialize(), "");
  EXPECT_EQ(DovCfg::getError(), DovCfg::kSuccess);
  EXPECT_EQ(DovCfg::getKey("hwscanner.timeout"), "");
  EXPECT_EQ(configDir(), m_prefix + "/bin");
}

TEST_F(DovCfgTest, aFileInPlaceOfTheConfigurationDirectoryMeansThatThereIsNone) {
  fs::remove_all(m_prefix + "/etc");
  make("etc", "no directory");
  EXPECT_EQ(initialize(), "");
  EXPECT_EQ(DovCfg::getError(), DovCfg::kSuccess);
}

TEST_F(DovCfgTest, sharedDataOfTheInstallationIsTheDefaultDirectory) {
  fs::create_directories(m_prefix + "/share/quenlor");
  initialize();
  EXPECT_EQ(fs::canonical(configDir()), m_prefix + "/share/quenlor");
}

TEST_F(DovCfgTest, aFileNamedLikeTheSharedDirectoryIsNotOne) {
  fs::create_directories(m_prefix + "/share");
  make("share/quenlor", "");
  initialize();
  EXPECT_EQ(configDir(), m_prefix + "/bin");
}

TEST_F(DovCfgTest, anEmptyConfigDirGivesTheDefault) {
  make("bin/quenlor.conf", "config_dir =\n");
  initialize();
  EXPECT_EQ(configDir(), m_prefix + "/bin");
}

TEST_F(DovCfgTest, aLinkToTheProgramLeadsToItsOwnDirectory) {
  fs::create_directories(m_prefix + "/links");
  fs::create_symlink("../bin/quenlor", m_prefix + "/links/scan");
  make("links/quenlor.conf", "a = wrong\n");
  make("bin/quenlor.conf", "a = right\n");
  DovCfg::initialize((m_prefix + "/links/scan").c_str());
  EXPECT_EQ(DovCfg::getKey("a"), "right");
}

TEST_F(DovCfgTest, aNameWithoutSlashIsNotTakenFromTheCurrentDirectory) {
  make("bin/quenlor.conf", "a = wrong\n");
  const fs::path before = fs::current_path();
  fs::current_path(m_prefix + "/bin");
  DovCfg::initialize("quenlor");
  fs::current_path(before);
  EXPECT_EQ(DovCfg::getKey("a"), "");
  EXPECT_EQ(configDir(), fs::read_symlink("/proc/self/exe").parent_path());
}

TEST_F(DovCfgTest, aRelativePathWithSlashCountsFromTheCurrentDirectory) {
  make("bin/quenlor.conf", "a = right\n");
  const fs::path before = fs::current_path();
  fs::current_path(m_prefix);
  DovCfg::initialize("bin/quenlor");
  fs::current_path(before);
  EXPECT_EQ(DovCfg::getKey("a"), "right");
}

TEST_F(DovCfgTest, aMissingOrEmptyOrNullPathMeansTheRunningProgram) {
  const std::string own = fs::read_symlink("/proc/self/exe").parent_path();
  for (const char* path : {"/missing/quenlor", "", static_cast<const char*>(nullptr)}) {
    DovCfg::initialize(path);
    EXPECT_EQ(configDir(), own);
  }
}

TEST_F(DovCfgTest, unknownKeysAreKeptAndTheLastOfEqualKeysWins) {
  make("bin/quenlor.conf", "other = 1\nother = 2\nempty =\n");
  initialize();
  EXPECT_EQ(DovCfg::getKey("other"), "2");
  EXPECT_EQ(DovCfg::getKey("empty"), "");
  EXPECT_EQ(DovCfg::getKey("Other"), "");
}

TEST_F(DovCfgTest, byteOrderMarkAndCrlfAreTolerated) {
  make("bin/quenlor.conf",
       "\xEF\xBB\xBF"
       "a = 1\r\nb = 2\r\n");
  EXPECT_EQ(initialize(), "");
  EXPECT_EQ(DovCfg::getKey("a"), "1");
  EXPECT_EQ(DovCfg::getKey("b"), "2");
}

TEST_F(DovCfgTest, aMalformedLineIsReportedOnOneLineWithItsNumber) {
  make("bin/quenlor.conf", "a = 1\n\nnonsense\nmore nonsense\n");
  const std::string message = initialize();
  EXPECT_EQ(DovCfg::getError(), DovCfg::kMalformed);
  EXPECT_TRUE(message.starts_with("quenlor: " + m_prefix + "/bin/quenlor.conf:3: ")) << message;
  EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 1);
  EXPECT_EQ(DovCfg::getKey("a"), "");
}

TEST_F(DovCfgTest, binaryContentIsMalformed) {
  for (const std::string& content : {"\0"s, "a = 1\nb = \0\n"s,
                                     "\x7F"
                                     "ELF\2\1\1\0"s,
                                     "= 1\n"s}) {
    make("bin/quenlor.conf", content);
    EXPECT_NE(initialize(), "");
    EXPECT_EQ(DovCfg::getError(), DovCfg::kMalformed);
  }
}

TEST_F(DovCfgTest, whatIsNoReadableFileIsUnreadable) {
  const std::string file = m_prefix + "/bin/quenlor.conf";
  const auto expectUnreadable = [&] {
    const std::string message = initialize();
    EXPECT_EQ(DovCfg::getError(), DovCfg::kUnreadable);
    EXPECT_TRUE(message.starts_with("quenlor: " + file + ": ")) << message;
    EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 1);
  };
  fs::create_directory(file);
  expectUnreadable();
  fs::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  expectUnreadable();
  fs::remove(file);
  fs::create_symlink("quenlor.conf", file);
  expectUnreadable();
  fs::remove(file);
  make("bin/quenlor.conf", std::string(2 * 1024 * 1024, '\n'));
  expectUnreadable();
}

TEST_F(DovCfgTest, aFileWithoutReadPermissionIsUnreadable) {
  make("bin/quenlor.conf", "a = 1\n");
  fs::permissions(m_prefix + "/bin/quenlor.conf", fs::perms::none);
  for (const std::string& directory : {m_prefix, m_prefix + "/bin"}) {
    fs::permissions(directory, fs::perms{0755});
  }
  const bool isRoot = geteuid() == 0;  // root may read everything
  if (isRoot) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  EXPECT_NE(initialize(), "");
  if (isRoot) {
    ASSERT_EQ(seteuid(0), 0);
  }
  EXPECT_EQ(DovCfg::getError(), DovCfg::kUnreadable);
}

TEST_F(DovCfgTest, initialisingAgainStartsAfresh) {
  make("bin/quenlor.conf", "a = 1\nnonsense\n");
  initialize();
  EXPECT_NE(DovCfg::getError(), 0);
  make("bin/quenlor.conf", "b = 2\n");
  initialize();
  EXPECT_EQ(DovCfg::getError(), 0);
  EXPECT_EQ(DovCfg::getKey("a"), "");
  EXPECT_EQ(DovCfg::getKey("b"), "2");
}

TEST_F(DovCfgTest, errorCodesAreNoExitStatusOfTheScanner) {
  for (const int status : {0, 1, 2, 4, 5, 8, 11, 18}) {
    EXPECT_NE(DovCfg::kUnreadable, status);
    EXPECT_NE(DovCfg::kMalformed, status);
  }
}

}  // namespace
}  // namespace quenlor
