#include "limits/EarlierScan.h"

#include <gtest/gtest.h>
#include <linux/magic.h>

#include <optional>
#include <thread>

#include "host/FileLock.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;

class EarlierScanTest : public ::testing::Test {
 protected:
  ~EarlierScanTest() override { EarlierScan::forgetMark(); }

  test::TemporaryDirectory directory;
  const std::string program = directory.write("quenlor", "");
  const EarlierScan earlier{program.c_str()};
};

TEST_F(EarlierScanTest, markIsSeenUntilItsProcessHasGone) {
  EXPECT_FALSE(earlier.isStillWaiting());
  earlier.mark();
  EXPECT_TRUE(earlier.isStillWaiting());
  EXPECT_GE(EarlierScan::markDescriptor(), 0);
  EarlierScan::forgetMark();  // as the end of the process does
  EXPECT_FALSE(earlier.isStillWaiting());
  EXPECT_EQ(EarlierScan::markDescriptor(), -1);
}

TEST_F(EarlierScanTest, secondMountThatIsGivenUpChangesNothing) {
  earlier.mark();
  const int descriptor = EarlierScan::markDescriptor();
  earlier.mark();
  EXPECT_EQ(EarlierScan::markDescriptor(), descriptor);
}

TEST_F(EarlierScanTest, severalProcessesCanWaitAtOnce) {
  FileLock another(program.c_str());
  ASSERT_TRUE(another.share());
  earlier.mark();
  EXPECT_GE(EarlierScan::markDescriptor(), 0);
}

TEST_F(EarlierScanTest, scanThatStartsAtTheSameMomentIsNotTakenForStuckOne) {
  std::optional<FileLock> another(program.c_str());
  ASSERT_TRUE(another->takeAlone());
  std::thread looksOnly([&another] {
    std::this_thread::sleep_for(10ms);
    another.reset();
  });
  EXPECT_FALSE(earlier.isStillWaiting());
  looksOnly.join();
}

TEST_F(EarlierScanTest, lockingMakesNoFile_andAsksForNoRightToWrite) {
  const EarlierScan none(directory.path("none").c_str());
  none.mark();
  EXPECT_EQ(EarlierScan::markDescriptor(), -1);
  EXPECT_FALSE(none.isStillWaiting());
  EXPECT_FALSE(std::filesystem::exists(directory.path("none")));
  std::filesystem::permissions(program, std::filesystem::perms::owner_read);
  earlier.mark();
  EXPECT_TRUE(earlier.isStillWaiting());
}

TEST(EarlierScan, programOnRemoteFileSystemIsNotLocked_itsServerMayBeTheDeadOne) {
  for (const auto type : {NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, AFS_SUPER_MAGIC, CODA_SUPER_MAGIC,
                          V9FS_MAGIC, NCP_SUPER_MAGIC, OCFS2_SUPER_MAGIC}) {
    EXPECT_TRUE(EarlierScan::mayHang(static_cast<uint32_t>(type))) << std::hex << type;
  }
  EXPECT_TRUE(EarlierScan::mayHang(0x65735546)) << "FUSE";
  EXPECT_TRUE(EarlierScan::mayHang(0xFF534D42)) << "CIFS";
  for (const auto type :
       {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC, TMPFS_MAGIC, SQUASHFS_MAGIC}) {
    EXPECT_FALSE(EarlierScan::mayHang(static_cast<uint32_t>(type))) << std::hex << type;
  }
  EXPECT_FALSE(EarlierScan::mayHang(BTRFS_SUPER_MAGIC));
}

}  // namespace
}  // namespace quenlor
