#include "groups/storage/PartitionGroup.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "base/Event.h"
#include "limits/GetTableThread.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/ConfiguredProgram.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using test::collect;
using test::FakeHost;
using test::RowValues;
using test::valueOf;

constexpr const char* kMtab = "/etc/mtab";
constexpr const char* kSwaps = "/proc/swaps";
constexpr const char* kSwapHeader = "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n";

// Making a thread is what costs, and sanitizers make it ten times as dear.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr auto kTimeFor200Mounts = 1000ms;
#else
constexpr auto kTimeFor200Mounts = 100ms;
#endif

class PartitionGroupTest : public ::testing::Test {
 protected:
  // A file system of 4-kilobyte blocks.
  void addFileSystem(const char* mountDir, uint64_t blocks, uint64_t available) {
    struct statvfs& status = machine.fileSystems[mountDir];
    status.f_bsize = 1 << 20;  // preferred, not counted in
    status.f_frsize = 4096;
    status.f_blocks = blocks;
    status.f_bfree = available + 1000;  // with what is reserved for root
    status.f_bavail = available;
  }

  void TearDown() override {
    EXPECT_EQ(machine.openDescriptors(), 0);
    EXPECT_EQ(machine.openStreams(), 0);
  }

  FakeHost machine;
};

TEST_F(PartitionGroupTest, fileSystemIsRowWithAllItsAttributes) {
  machine.files[kMtab] = "/dev/hda1 / ext3 rw,errors=remount-ro 0 1\n";
  addFileSystem("/", 250000, 100000);
  EXPECT_EQ(collect<PartitionGroup>(), (std::vector<RowValues>{{{1, "1"},
                                                                {2, "1"},
                                                                {3, "3"},
                                                                {4, "/dev/hda1"},
                                                                {5, "1000000"},
                                                                {6, "131"},
                                                                {7, "/dev/hda1"},
                                                                {8, "/"},
                                                                {9, "1000000"},
                                                                {10, "400000"}}}));
}

TEST_F(PartitionGroupTest, swapAreaIsRowWithAllItsAttributes) {
  machine.files[kMtab] = "";
  machine.files[kSwaps] = std::string(kSwapHeader) + "/dev/hda3  partition\t530136\t12044\t-1\n";
  EXPECT_EQ(collect<PartitionGroup>(), (std::vector<RowValues>{{{1, "1"},
                                                                {2, "1"},
                                                                {3, "3"},
                                                                {4, "/dev/hda3"},
                                                                {5, "530136"},
                                                                {6, "130"},
                                                                {7, "/dev/hda3"},
                                                                {8, "swap"},
                                                                {9, "530136"},
                                                                {10, "518092"}}}));
}

uint32_t typeOf(VelTableRow& row, uint32_t id) {
  row.reset();
  while (VelTableAttrib* attrib = row.getNext()) {
    if (attrib->getId() == id) return attrib->getType();
  }
  return 0;
}

TEST_F(PartitionGroupTest, sizesOfFileSystemsAre64BitAndThoseOfSwapsAre32Bit) {
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n";
  machine.files[kSwaps] = std::string(kSwapHeader) + "/dev/hda3 partition 10 4 -1\n";
  PartitionGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getGroupId(), 27u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
  table->reset();
  VelTableRow* mounted = table->getNext();
  VelTableRow* swap = table->getNext();
  ASSERT_NE(swap, nullptr);
  for (const uint32_t id : {5u, 9u, 10u}) {
    EXPECT_EQ(typeOf(*mounted, id), VEL_ULONGLONG) << id;
    EXPECT_EQ(typeOf(*swap, id), VEL_ULONG) << id;
  }
  for (const uint32_t id : {1u, 2u, 3u, 6u}) {
    EXPECT_EQ(typeOf(*mounted, id), VEL_ULONG) << id;
    EXPECT_EQ(typeOf(*swap, id), VEL_ULONG) << id;
  }
}

TEST_F(PartitionGroupTest, nfsMountIsRemote_itsDeviceStandsInTheAccessPoint) {
  machine.files[kMtab] = "server:/export/home /home nfs rw,addr=10.0.0.1 0 0\n";
  addFileSystem("/home", 1024, 512);
  EXPECT_EQ(collect<PartitionGroup>()[0], (RowValues{{1, "1"},
                                                     {2, "2"},
                                                     {3, "4"},
                                                     {4, "remote"},
                                                     {5, "4096"},
                                                     {6, "260"},
                                                     {7, "server:/export/home"},
                                                     {8, "/home"},
                                                     {9, "4096"},
                                                     {10, "2048"}}));
}

TEST_F(PartitionGroupTest, afsAndSmbfsAreRemoteToo_nfs4IsNot) {
  machine.files[kMtab] =
      "AFS /afs afs rw 0 0\n//pc/share /mnt/pc smbfs rw 0 0\nserver:/x /x nfs4 rw 0 0\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(valueOf(rows[0], 4), "remote");
  EXPECT_EQ(valueOf(rows[0], 6), "261");
  EXPECT_EQ(valueOf(rows[1], 4), "remote");
  EXPECT_EQ(valueOf(rows[1], 6), "282");
  EXPECT_EQ(valueOf(rows[1], 7), "//pc/share");
  EXPECT_EQ(valueOf(rows[2], 2), "1");
  EXPECT_EQ(valueOf(rows[2], 3), "0");
  EXPECT_EQ(valueOf(rows[2], 4), "server:/x");
  EXPECT_EQ(valueOf(rows[2], 6), "65535");
}

TEST_F(PartitionGroupTest, cdFloppyAndMinixHaveTheirMedia) {
  machine.files[kMtab] =
      "/dev/hdc /media/cdrom iso9660 ro 0 0\n/dev/fd0 /media/floppy vfat rw 0 0\n"
      "/dev/hda5 /old minix rw 0 0\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(valueOf(rows[0], 3), "5");
  EXPECT_EQ(valueOf(rows[0], 6), "264");
  EXPECT_EQ(valueOf(rows[1], 3), "2");
  EXPECT_EQ(valueOf(rows[1], 6), "11");
  EXPECT_EQ(valueOf(rows[2], 3), "0");
  EXPECT_EQ(valueOf(rows[2], 6), "65535");
}

TEST_F(PartitionGroupTest, whatTheKernelMountsForItselfIsLeftOut_indexStaysDense) {
  machine.files[kMtab] =
      "/dev/hda1 / ext3 rw 0 1\n"
      "proc /proc proc rw 0 0\n"
      "sysfs /sys sysfs rw 0 0\n"
      "devpts /dev/pts devpts rw 0 0\n"
      "sunrpc /var/lib/nfs/rpc_pipefs rpc_pipefs rw 0 0\n"
      "none /dev/shm shm rw 0 0\n"
      "none /proc/bus/usb usbfs rw 0 0\n"
      "box:(pid1234) /net nfs rw 0 0\n"
      "amd /.amd_mnt/box nfs rw 0 0\n"
      "tmpfs /dev/shm tmpfs rw 0 0\n";
  machine.files[kSwaps] = std::string(kSwapHeader) + "/dev/hda3 partition 10 4 -1\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(valueOf(rows[0], 8), "/");
  EXPECT_EQ(valueOf(rows[1], 8), "/dev/shm");
  EXPECT_EQ(valueOf(rows[1], 6), "267");
  EXPECT_EQ(valueOf(rows[2], 8), "swap");
  EXPECT_EQ(valueOf(rows[0], 1), "1");
  EXPECT_EQ(valueOf(rows[1], 1), "2");
  EXPECT_EQ(valueOf(rows[2], 1), "3");
  std::sort(machine.measured.begin(), machine.measured.end());  // on a busy machine by two workers
  EXPECT_EQ(machine.measured, (std::vector<std::string>{"/", "/dev/shm"}));
}

TEST_F(PartitionGroupTest, secondCollectionCountsAfresh) {
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n";
  PartitionGroup group;
  for (int round = 0; round < 2; ++round) {
    const std::unique_ptr<VelTable> table(group.getTable());
    const auto rows = test::rowsOf(table.get());
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(valueOf(rows[0], 1), "1");
  }
}

TEST_F(PartitionGroupTest, withoutMountTableThereIsNoTable_swapsAreNotLookedAt) {
  machine.files[kSwaps] = std::string(kSwapHeader) + "/dev/hda3 partition 10 4 -1\n";
  PartitionGroup group;
  EXPECT_EQ(group.getTable(), nullptr);
  EXPECT_EQ(machine.opened, std::vector<std::string>{kMtab});
}

TEST_F(PartitionGroupTest, mountTableThatMayNotBeReadGivesNoTable) {
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n";
  machine.openErrors[kMtab] = EACCES;
  PartitionGroup group;
  EXPECT_EQ(group.getTable(), nullptr);
}

TEST_F(PartitionGroupTest, emptyMountTableIsTableWithoutRows) {
  machine.files[kMtab] = "";
  PartitionGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getNumRows(), 0u);
}

TEST_F(PartitionGroupTest, octalEscapesAreTextAgain) {
  machine.files[kMtab] = R"(/dev/hda\0401 /mnt/my\040disk\011tab\012line\134slash vfat rw 0 0)"
                         "\n";
  addFileSystem("/mnt/my disk\ttab\nline\\slash", 256, 0);
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 4), "/dev/hda 1");
  EXPECT_EQ(machine.measured, std::vector<std::string>{"/mnt/my disk\ttab\nline\\slash"});
  EXPECT_EQ(valueOf(rows[0], 8), R"(/mnt/my disk\x09tab\x0aline\\slash)");  // as values are printed
  EXPECT_EQ(valueOf(rows[0], 9), "1024");
}

TEST_F(PartitionGroupTest, commentsAndBlankLinesOfTheMountTableAreSkipped) {
  machine.files[kMtab] = "# written by mount\n\n   \n/dev/hda1 / ext3 rw 0 1\n";
  EXPECT_EQ(collect<PartitionGroup>().size(), 1u);
}

TEST_F(PartitionGroupTest, lastMountNeedsNoNewlineAndNoOptions) {
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n/dev/hda2\t/usr\text2";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[1], 8), "/usr");
  EXPECT_EQ(valueOf(rows[1], 6), "131");
}

TEST_F(PartitionGroupTest, mountWithMissingFieldsIsRowOfWhatThereIs) {
  machine.files[kMtab] = "/dev/hda1\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 4), "/dev/hda1");
  EXPECT_EQ(valueOf(rows[0], 6), "65535");
  EXPECT_EQ(valueOf(rows[0], 8), "");
  EXPECT_EQ(valueOf(rows[0], 9), "0");
}

TEST_F(PartitionGroupTest, longestNamesAreKeptWhole) {
  const std::string device = "/dev/" + std::string(4000, 'd');
  const std::string directory = "/" + std::string(4000, 'm');
  machine.files[kMtab] = device + " " + directory + " ext2 rw 0 0\n/dev/b /b ext2 rw 0 0\n";
  addFileSystem(directory.c_str(), 256, 0);
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 4), device);
  EXPECT_EQ(valueOf(rows[0], 7), device);
  EXPECT_EQ(valueOf(rows[0], 8), directory);
  EXPECT_EQ(valueOf(rows[0], 9), "1024");
}

TEST_F(PartitionGroupTest, longestNamesAreKeptWholeAlsoWhenEveryCharacterIsEscaped) {
  std::string escaped;
  for (int i = 0; i < 4095; ++i) escaped += "\\040";
  machine.files[kMtab] = escaped + " " + escaped + " ext2 rw 0 0\n";
  const std::string blanks(4095, ' ');
  addFileSystem(blanks.c_str(), 256, 0);
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 4), blanks);
  EXPECT_EQ(valueOf(rows[0], 6), "131");
  EXPECT_EQ(valueOf(rows[0], 8), blanks);
  EXPECT_EQ(valueOf(rows[0], 9), "1024");
}

// Container hosts list every layer of an overlay in its options.
TEST_F(PartitionGroupTest, optionsLongerThanAnyBufferDoNotSplitTheLine) {
  machine.files[kMtab] =
      "overlay / overlay rw,lowerdir=" + std::string(600000, 'l') + " 0 0\n/dev/b /b ext2 rw 0 0\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 8), "/");
  EXPECT_EQ(valueOf(rows[1], 8), "/b");
}

TEST_F(PartitionGroupTest, binaryMountTableIsHarmless) {
  std::string content;
  for (int byte = 0; byte < 4096; ++byte) content += static_cast<char>(byte * 7);
  machine.files[kMtab] = content;
  PartitionGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_NE(table, nullptr);
}

TEST_F(PartitionGroupTest, directoryAsMountTableIsTableWithoutRows) {
  machine.directories[kMtab] = {};
  EXPECT_TRUE(collect<PartitionGroup>().empty());
}

struct SizeCase {
  unsigned long blockSize;
  uint64_t blocks;
  const char* kilobytes;
};

TEST_F(PartitionGroupTest, sizesAreKilobytesWithoutOverflow) {
  const SizeCase cases[] = {
      {4096, 1, "4"},
      {512, 1, "0"},  // half a kilobyte is cut off
      {512, 3, "1"},
      {512, 1023, "511"},
      {512, 1025, "512"},
      {1024, 5000000000, "5000000000"},                 // more than 32 bits
      {65536, uint64_t{1} << 50, "72057594037927936"},  // the product itself has 67 bits
      {1000, 1500, "1464"},
      {0, 1000, "0"},
      {4096, 0, "0"},
  };
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n";
  for (const SizeCase& size : cases) {
    struct statvfs& status = machine.fileSystems["/"];
    status.f_frsize = size.blockSize;
    status.f_blocks = size.blocks;
    status.f_bavail = size.blocks;
    const auto rows = collect<PartitionGroup>();
    EXPECT_EQ(valueOf(rows[0], 5), size.kilobytes);
    EXPECT_EQ(valueOf(rows[0], 9), size.kilobytes);
    EXPECT_EQ(valueOf(rows[0], 10), size.kilobytes);
  }
}

TEST_F(PartitionGroupTest, fileSystemThatCannotBeMeasuredIsRowOfSizeZero) {
  machine.files[kMtab] = "/dev/hda1 /gone ext3 rw 0 1\n";
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 5), "0");
  EXPECT_EQ(valueOf(rows[0], 9), "0");
  EXPECT_EQ(valueOf(rows[0], 10), "0");
}

TEST_F(PartitionGroupTest, hungServerCostsItsLimitOnceAndIsRowOfSizeZero) {
  const test::ConfiguredProgram program("hwscanner.timeout = 100000\n");
  struct State {
    Event release;
    Event left;
  };
  const auto state = std::make_shared<State>();
  machine.files[kMtab] = "dead:/x /x nfs rw 0 0\n/dev/hda1 / ext3 rw 0 1\n";
  machine.onStatvfs = [state](const char* path, struct statvfs* out) {
    if (std::string(path) == "/x") {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
      state->release.wait(60000);
      state->left.signal();
      return -1;
    }
    out->f_frsize = 1024;
    out->f_blocks = 7;
    return 0;
  };
  const auto before = std::chrono::steady_clock::now();
  ::testing::internal::CaptureStderr();
  const auto rows = collect<PartitionGroup>();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /x did not answer within 100 ms, its sizes are 0\n");
  const auto waited = std::chrono::steady_clock::now() - before;
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 4), "remote");
  EXPECT_EQ(valueOf(rows[0], 5), "0");
  EXPECT_EQ(valueOf(rows[0], 10), "0");
  EXPECT_EQ(valueOf(rows[1], 5), "7");
  EXPECT_GE(waited, 100ms);
  EXPECT_LT(waited, 5s);
  EXPECT_TRUE(hasAbandonedWorkers());
  state->release.signal();
  EXPECT_EQ(state->left.wait(60000), 0);
}

// Servers that never answer. What their workers touch outlives the test.
class DeadServers {
 public:
  explicit DeadServers(FakeHost& machine) {
    machine.onStatvfs = [state = m_state](const char* path, struct statvfs* out) {
      out->f_frsize = 1024;
      out->f_blocks = 7;
      if (std::string(path).find("/dead") != 0) return 0;
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
      ++state->entered;
      state->release.wait(60000);
      ++state->left;
      return 0;
    };
  }
  ~DeadServers() {
    m_state->release.signal();
    while (m_state->left < m_state->entered) std::this_thread::sleep_for(1ms);
  }

 private:
  struct State {
    Event release;
    std::atomic<int> entered{0};
    std::atomic<int> left{0};
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

TEST_F(PartitionGroupTest, twentyDeadServersCostOneLimit_rowsKeepTheirOrder) {
  const test::ConfiguredProgram program("hwscanner.timeout = 500000\n");
  std::string table;
  for (int i = 0; i < 20; ++i) {
    const std::string number = std::to_string(i);
    table += "dead:/x /dead" + number + " nfs rw 0 0\n/dev/hda" + number + " /live" + number +
             " ext3 rw 0 1\n";
  }
  machine.files[kMtab] = table;
  const DeadServers dead(machine);
  ::testing::internal::CaptureStderr();
  const auto before = std::chrono::steady_clock::now();
  const auto rows = collect<PartitionGroup>();
  const auto waited = std::chrono::steady_clock::now() - before;
  const std::string said = ::testing::internal::GetCapturedStderr();
  ASSERT_EQ(rows.size(), 40u);
  for (size_t i = 0; i < 40; ++i) {
    EXPECT_EQ(valueOf(rows[i], 8), (i % 2 == 0 ? "/dead" : "/live") + std::to_string(i / 2));
    EXPECT_EQ(valueOf(rows[i], 9), i % 2 == 0 ? "0" : "7");
  }
  EXPECT_LT(waited, 2s);
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 20);
}

TEST_F(PartitionGroupTest, localFileSystemsAreMeasuredBeforeRemoteOnes) {
  machine.files[kMtab] =
      "box:/x /x nfs4 rw 0 0\nsshfs /s fuse.sshfs rw 0 0\n/dev/hda1 / ext4 rw 0 1\n";
  // The best of a few rounds: a local one that a busy machine delays is not waited for.
  for (int round = 0; round < 5; ++round) {
    machine.measured.clear();
    collect<PartitionGroup>();
    ASSERT_EQ(machine.measured.size(), 3u);
    if (machine.measured[0] == "/") break;
  }
  EXPECT_EQ(machine.measured[0], "/");
}

TEST_F(PartitionGroupTest, withoutTimeToWaitNobodyIsAsked_oneLineSaysSo) {
  const test::ConfiguredProgram program("hwscanner.timeout = 0\n");
  machine.files[kMtab] = "/dev/hda1 / ext3 rw 0 1\n/dev/hda2 /home ext3 rw 0 1\n";
  addFileSystem("/", 256, 0);
  ::testing::internal::CaptureStderr();
  const auto rows = collect<PartitionGroup>();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: 2 file systems were not measured, their sizes are 0\n");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 9), "0");
  EXPECT_TRUE(machine.measured.empty());
}

TEST_F(PartitionGroupTest, whatIsSaidOfMountPointStaysOneLine) {
  const test::ConfiguredProgram program("hwscanner.timeout = 50000\n");
  machine.files[kMtab] = "dead:/x /dead\\012\\011x nfs rw 0 0\n";
  const DeadServers dead(machine);
  ::testing::internal::CaptureStderr();
  collect<PartitionGroup>();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dead??x did not answer within 50 ms, its sizes are 0\n");
}

TEST(PartitionGroupAutofs, automountPointIsNotMountedByAsking_itsRowIsKept) {
  struct Recorder : FakeHost {
    int open(const char* path, int flags, mode_t mode) override {
      if (std::string(path) == "/net") openFlags = flags;
      return FakeHost::open(path, flags, mode);
    }
    std::atomic<int> openFlags{0};
  } machine;
  machine.files[kMtab] =
      "/etc/auto.net /net autofs rw,fd=6,pgrp=1,indirect 0 0\n/dev/hda1 / ext3 rw 0 1\n";
  machine.fileSystems["/net"].f_frsize = 4096;
  machine.fileSystems["/"];
  const auto rows = collect<PartitionGroup>();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 4), "/etc/auto.net");
  EXPECT_EQ(valueOf(rows[0], 6), "65535");
  EXPECT_EQ(valueOf(rows[0], 8), "/net");
  EXPECT_EQ(valueOf(rows[0], 9), "0");
  EXPECT_EQ(machine.measured, std::vector<std::string>{"/"});
  EXPECT_EQ(machine.openFlags & (O_PATH | O_DIRECTORY), O_PATH);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(PartitionGroupTest, twoHundredMountsTakeUnderATenthOfASecond) {
  for (int mount = 0; mount < 200; ++mount) {
    const std::string directory = "/mnt/" + std::to_string(mount);
    machine.files[kMtab] += "/dev/sda" + std::to_string(mount) + " " + directory + " ext3 rw 0 0\n";
    addFileSystem(directory.c_str(), 1000, 500);
  }
  // The best of a few rounds: a busy test machine is not what is measured.
  auto best = std::chrono::steady_clock::duration::max();
  for (int round = 0; round < 5; ++round) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(collect<PartitionGroup>().size(), 200u);
    best = std::min(best, std::chrono::steady_clock::now() - before);
  }
  EXPECT_LT(best, kTimeFor200Mounts);
}

class PartitionTraceTest : public PartitionGroupTest {
 protected:
  // The records of one collection.
  std::vector<std::string> traced() {
    const test::CapturedTraces traces;
    collect<PartitionGroup>();
    return traces.texts();
  }
};

TEST_F(PartitionTraceTest, collectionIsFollowedFromMountsToSwapAreas) {
  machine.files[kMtab] = "proc /proc proc rw 0 0\n/dev/hda1 / ext3 rw 0 1\n";
  machine.files[kSwaps] = std::string(kSwapHeader) + "/dev/hda3 partition 530136 12044 -1\n";
  addFileSystem("/", 250000, 100000);
  EXPECT_EQ(traced(), (std::vector<std::string>{
                          "MID entry linux/PartitionGroup.cpp getTable() hardware PartitionGroup",
                          "MAX linux/PartitionGroup.cpp doEntry() hardware left out : /proc",
                          "MAX linux/PartitionGroup.cpp doEntry() hardware f_frsize : 4096",
                          "MAX linux/PartitionGroup.cpp doEntry() hardware f_blocks : 250000",
                          "MAX linux/PartitionGroup.cpp doEntry() hardware totalsize :  1000000",
                          "MAX linux/PartitionGroup.cpp doEntry() hardware freesize : 400000",
                          "MAX linux/PartitionGroup.cpp getTable() hardware ..Adding swap "
                          "partitions...",
                          "MAX linux/PartitionGroup.cpp addSwapPartitions() hardware path: "
                          "/dev/hda3",
                          "MAX linux/PartitionGroup.cpp addSwapPartitions() hardware used: 12044",
                          "MID exit linux/PartitionGroup.cpp getTable() hardware PartitionGroup",
                      }));
}

TEST_F(PartitionTraceTest, swapListThatCannotBeUnderstoodIsTold) {
  machine.files[kMtab] = "";
  machine.files[kSwaps] = "";
  EXPECT_EQ(traced().at(2),
            "MIN linux/PartitionGroup.cpp addSwapPartitions() hardware Unexpected end of file");
  machine.files[kSwaps] = "nonsense\n";
  EXPECT_EQ(traced().at(2),
            "MIN linux/PartitionGroup.cpp addSwapPartitions() hardware Unexpected file format");
}

TEST_F(PartitionTraceTest, missingMountTableIsTold) {
  EXPECT_EQ(traced().back(),
            "MIN linux/PartitionGroup.cpp getTable() hardware cannot open /etc/mtab");
}

class SwapListTest : public PartitionGroupTest {
 protected:
  SwapListTest() { machine.files[kMtab] = ""; }

  std::vector<RowValues> rowsWith(const std::string& swaps) {
    machine.files[kSwaps] = swaps;
    return collect<PartitionGroup>();
  }
};

TEST_F(SwapListTest, severalAreasAreCountedOn) {
  const auto rows = rowsWith(
      "Filename\t\t\tType\t\tSize\tUsed\tPriority\n"
      "/dev/hda3                               partition\t530136\t12044\t-1\n"
      "/var/swapfile                           file\t\t262136\t0\t-2\n");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[1], 1), "2");
  EXPECT_EQ(valueOf(rows[1], 4), "/var/swapfile");
  EXPECT_EQ(valueOf(rows[1], 7), "/var/swapfile");
  EXPECT_EQ(valueOf(rows[1], 10), "262136");
}

TEST_F(SwapListTest, headerAloneIsNoRow) { EXPECT_TRUE(rowsWith(kSwapHeader).empty()); }

TEST_F(SwapListTest, missingListIsNoRow) {
  EXPECT_TRUE(collect<PartitionGroup>().empty());
  EXPECT_EQ(machine.opened, (std::vector<std::string>{kMtab, kSwaps}));
}

TEST_F(SwapListTest, emptyListIsNoRow) { EXPECT_TRUE(rowsWith("").empty()); }

TEST_F(SwapListTest, listWithoutHeaderIsNotRead) {
  EXPECT_TRUE(rowsWith("nonsense\n/dev/hda3 partition 530136 12044 -1\n").empty());
}

TEST_F(SwapListTest, oneColumnNameMakesTheHeader) {
  EXPECT_EQ(rowsWith("Used\n/dev/hda3 partition 530136 12044 -1\n").size(), 1u);
}

TEST_F(SwapListTest, commentsAndShortLinesAreSkipped) {
  const auto rows = rowsWith(std::string(kSwapHeader) +
                             "# /dev/a partition 1 1 -1\n\n/dev/b partition\n"
                             "/dev/c partition 10 4 -1");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 1), "1");
  EXPECT_EQ(valueOf(rows[0], 4), "/dev/c");
}

TEST_F(SwapListTest, moreUsedThanThereIsLeavesNothingFree) {
  EXPECT_EQ(valueOf(rowsWith(std::string(kSwapHeader) + "/dev/a partition 10 11 -1\n")[0], 10),
            "0");
}

TEST_F(SwapListTest, areaBeyondFourTerabytesSaturates) {
  const auto rows =
      rowsWith(std::string(kSwapHeader) + "/dev/a partition 5000000000 1000000000 -1\n");
  EXPECT_EQ(valueOf(rows[0], 5), "4294967295");
  EXPECT_EQ(valueOf(rows[0], 9), "4294967295");
  EXPECT_EQ(valueOf(rows[0], 10), "4000000000");
}

// The rest of a name that fills the buffer arrives as a line of its own.
TEST_F(SwapListTest, nameLongerThanTheBufferLosesItsBeginningOnly) {
  const std::string name = "/" + std::string(299, 's');
  const auto rows =
      rowsWith(std::string(kSwapHeader) + name + " file 10 4 -1\n/dev/b partition 20 0 -2\n");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(valueOf(rows[0], 4), std::string(45, 's'));
  EXPECT_EQ(valueOf(rows[0], 5), "10");
  EXPECT_EQ(valueOf(rows[1], 4), "/dev/b");
}

TEST_F(SwapListTest, binaryListIsHarmless) {
  std::string content = kSwapHeader;
  for (int byte = 0; byte < 4096; ++byte) content += static_cast<char>(byte * 7);
  machine.files[kSwaps] = content;
  PartitionGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_NE(table, nullptr);
}

}  // namespace
}  // namespace quenlor
