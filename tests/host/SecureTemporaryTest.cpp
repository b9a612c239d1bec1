#include "host/SecureTemporary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "host/SystemHost.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

constexpr char kName[] = "/tmp/report";

class SecureTemporary : public ::testing::Test {
 protected:
  SecureTemporary() {
    machine.directories["/tmp"] = {};
    machine.permissions["/tmp"] = 01777;
  }

  test::FakeHost machine;
};

TEST_F(SecureTemporary, newFileIsEmptyAndOurs) {
  EXPECT_TRUE(secureTemporaryFile(kName));
  EXPECT_EQ(machine.files.at(kName), "");
  EXPECT_EQ(machine.permissions.at(kName), 0600u);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(SecureTemporary, plantedFileIsRemovedFirst) {
  machine.files[kName] = "planted";
  machine.permissions[kName] = 0666;
  EXPECT_TRUE(secureTemporaryFile(kName));
  EXPECT_EQ(machine.unlinked, std::vector<std::string>{kName});
  EXPECT_EQ(machine.files.at(kName), "");
  EXPECT_EQ(machine.permissions.at(kName), 0600u);
}

TEST_F(SecureTemporary, directoryWhereOthersMayReplaceFilesIsRefused) {
  for (const mode_t mode : {0777U, 0775U, 0757U}) {
    machine.permissions["/tmp"] = mode;
    EXPECT_FALSE(secureTemporaryFile(kName)) << std::oct << mode;
  }
  EXPECT_TRUE(machine.unlinked.empty());
  EXPECT_TRUE(machine.files.empty());
}

TEST_F(SecureTemporary, privateDirectoryNeedsNoStickyBit) {
  machine.permissions["/tmp"] = 0755;
  EXPECT_TRUE(secureTemporaryFile(kName));
}

TEST_F(SecureTemporary, missingDirectoryIsRefused) {
  machine.directories.clear();
  EXPECT_FALSE(secureTemporaryFile(kName));
}

TEST_F(SecureTemporary, directoryAtTheNameIsRefused) {
  machine.directories[kName] = {};
  EXPECT_FALSE(secureTemporaryFile(kName));
}

TEST_F(SecureTemporary, readOnlyFileSystemIsRefused) {
  machine.openErrors[kName] = EROFS;
  EXPECT_FALSE(secureTemporaryFile(kName));
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(SecureTemporary, onlyAbsoluteNamesAreTaken) {
  machine.directories["."] = {};
  EXPECT_FALSE(secureTemporaryFile("report"));
  EXPECT_FALSE(secureTemporaryFile(""));
  EXPECT_FALSE(secureTemporaryFile(nullptr));
}

TEST_F(SecureTemporary, fileInTheRootDirectoryIsJudgedByTheRootDirectory) {
  machine.directories["/"] = {};
  EXPECT_TRUE(secureTemporaryFile("/report"));
}

TEST(SecureTemporaryOnDisk, plantedLinkIsReplaced_itsTargetIsNotTouched) {
  const test::TemporaryDirectory directory;
  const std::string target = directory.write("target", "precious");
  const std::string name = directory.path("report");
  ASSERT_EQ(::symlink(target.c_str(), name.c_str()), 0);

  EXPECT_TRUE(secureTemporaryFile(name.c_str()));
  struct stat status {};
  ASSERT_EQ(::lstat(name.c_str(), &status), 0);
  EXPECT_TRUE(S_ISREG(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777u, 0600u);
  EXPECT_EQ(std::filesystem::file_size(target), 8u);
}

// Whoever may write to the directory can be quicker than the program between its two steps.
TEST(SecureTemporaryOnDisk, nameThatIsPlantedAgainAtOnceIsRefused_itsTargetIsNotTouched) {
  struct QuickAttacker : SystemHost {
    int unlink(const char* path) override {
      SystemHost::unlink(path);
      return plant(path);
    }
    std::function<int(const char*)> plant;
  } attacker;
  const ScopedHost scope(attacker);
  const test::TemporaryDirectory directory;
  const std::string target = directory.write("target", "precious");
  const std::string name = directory.path("report");

  attacker.plant = [&](const char* path) { return ::symlink(target.c_str(), path); };
  EXPECT_FALSE(secureTemporaryFile(name.c_str()));
  EXPECT_EQ(directory.read("target"), "precious");
  attacker.plant = [&](const char* path) { return ::link(target.c_str(), path); };
  EXPECT_FALSE(secureTemporaryFile(name.c_str()));
  attacker.plant = [&](const char* path) {
    return ::symlink(directory.path("missing").c_str(), path);
  };
  EXPECT_FALSE(secureTemporaryFile(name.c_str()));
  EXPECT_FALSE(std::filesystem::exists(directory.path("missing")));
}

}  // namespace
}  // namespace quenlor
