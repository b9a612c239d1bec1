#include "readers/mounts/MountInfo.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/ProcessorTime.h"

namespace quenlor {
namespace {

std::vector<Mount> parsed(const std::string& text) {
  bool isConsistent = false;
  std::vector<Mount> mounts = parseMountInfo(text, isConsistent);
  EXPECT_TRUE(isConsistent) << text;
  return mounts;
}

TEST(MountInfo, everyFieldIsTaken) {
  const auto mounts =
      parsed("36 35 98:7 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue\n");
  ASSERT_EQ(mounts.size(), 1u);
  const Mount& mount = mounts[0];
  EXPECT_EQ(mount.id, 36u);
  EXPECT_EQ(mount.parent, 35u);
  EXPECT_EQ(mount.major, 98u);
  EXPECT_EQ(mount.minor, 7u);
  EXPECT_EQ(mount.root, "/mnt1");
  EXPECT_EQ(mount.point, "/mnt2");
  EXPECT_EQ(mount.options, "rw,noatime");
  EXPECT_EQ(mount.type, "ext3");
  EXPECT_EQ(mount.source, "/dev/root");
  EXPECT_EQ(mount.superOptions, "rw,errors=continue");
  EXPECT_FALSE(mount.isDeleted);
}

TEST(MountInfo, anyNumberOfOptionalFieldsIsSkipped) {
  for (const char* fields : {"", "shared:1 ", "master:2 propagate_from:3 ", "unbindable ",
                             "shared:1 master:2 propagate_from:3 future:4 "}) {
    const auto mounts =
        parsed(std::string("1 0 8:1 / / rw ") + fields + "- xfs /dev/sda1 rw,attr2\n");
    ASSERT_EQ(mounts.size(), 1u) << fields;
    EXPECT_EQ(mounts[0].type, "xfs") << fields;
    EXPECT_EQ(mounts[0].source, "/dev/sda1") << fields;
  }
}

TEST(MountInfo, escapesOfEveryTextAreDecoded) {
  const auto mounts = parsed(
      "1 0 8:1 /a\\040b /c\\011d\\012e\\134f\\043g rw - fuse.my\\040fs "
      "/dev/x\\040y rw,path=\\040z\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].root, "/a b");
  EXPECT_EQ(mounts[0].point, "/c\td\ne\\f#g");
  EXPECT_EQ(mounts[0].type, "fuse.my fs");
  EXPECT_EQ(mounts[0].source, "/dev/x y");
  EXPECT_EQ(mounts[0].superOptions, "rw,path= z");
}

TEST(MountInfo, whatIsNoEscapeStaysAsItIs) {
  EXPECT_EQ(decodeOctalEscapes("\\"), "\\");
  EXPECT_EQ(decodeOctalEscapes("\\04"), "\\04");
  EXPECT_EQ(decodeOctalEscapes("\\080"), "\\080");
  EXPECT_EQ(decodeOctalEscapes("\\777"), "\\777");     // no byte
  EXPECT_EQ(decodeOctalEscapes("\\134040"), "\\040");  // decoded once only
  EXPECT_EQ(decodeOctalEscapes("\\377\\303\\244"), "\xFF\xC3\xA4");
}

TEST(MountInfo, emptySourceIsAnEmptyField) {
  const auto mounts = parsed("1 0 0:40 / /mnt rw - tmpfs  rw,size=4k\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].source, "");
  EXPECT_EQ(mounts[0].superOptions, "rw,size=4k");
}

TEST(MountInfo, hyphenIsAnyTextBehindTheFirstOne) {
  const auto mounts = parsed("1 0 0:40 / /- - - fuse.- - -\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].point, "/-");
  EXPECT_EQ(mounts[0].type, "fuse.-");
  EXPECT_EQ(mounts[0].source, "-");
}

TEST(MountInfo, removedDirectoryIsMarked) {
  const auto mounts = parsed("1 0 8:1 /gone//deleted /mnt rw - ext4 /dev/sda1 rw\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].root, "/gone");
  EXPECT_TRUE(mounts[0].isDeleted);
}

TEST(MountInfo, linesLongerThanPageAreWhole) {
  const std::string layers(70000, 'x');
  const auto mounts = parsed("1 0 0:50 / / rw - overlay overlay rw,lowerdir=" + layers + "\n" +
                             "2 1 8:1 / /data rw - ext4 /dev/sda1 rw\n");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0].superOptions.size(), layers.size() + 12);
  EXPECT_EQ(mounts[1].point, "/data");
}

TEST(MountInfo, linesThatAreNoMountsAreLeftOutAndSaidSo) {
  for (const char* line :
       {"\n", "x 0 8:1 / / rw - ext4 /dev/sda1 rw\n", "1 0 8 / / rw - ext4 /dev/sda1 rw\n",
        "1 0 8:x / / rw - ext4 /dev/sda1 rw\n", "1 0 8:1 / / rw ext4 /dev/sda1 rw\n",
        "1 0 8:1 / / rw -\n", "1 0 8:1 / / rw - ext4\n", "1 0 8:1 / relative rw - ext4 x rw\n",
        "99999999999 0 8:1 / / rw - ext4 x rw\n", "-1 0 8:1 / / rw - ext4 x rw\n", "1 0 8:1 /",
        " 1 0 8:1 / / rw - ext4 x rw\n"}) {
    bool isConsistent = true;
    EXPECT_TRUE(parseMountInfo(line, isConsistent).empty()) << line;
    EXPECT_FALSE(isConsistent) << line;
  }
}

TEST(MountInfo, repeatedIdCountsOnce) {
  bool isConsistent = true;
  const auto mounts = parseMountInfo(
      "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n1 0 8:1 / / rw - ext4 /dev/sda1 rw\n", isConsistent);
  EXPECT_EQ(mounts.size(), 1u);
  EXPECT_FALSE(isConsistent);
}

// --- hidden mounts ---

std::string hiddenPoints(std::vector<Mount> mounts) {
  markHidden(mounts);
  std::string points;
  for (const Mount& mount : mounts) {
    if (mount.isHidden) points += std::to_string(mount.id) + " ";
  }
  return points;
}

std::string line(int id, int parent, const std::string& point) {
  return std::to_string(id) + " " + std::to_string(parent) + " 8:" + std::to_string(id) + " / " +
         point + " rw - ext4 /dev/x rw\n";
}

TEST(MountInfo, mountsSideBySideAreAllSeen) {
  EXPECT_EQ(hiddenPoints(parsed(line(20, 1, "/") + line(21, 20, "/a") + line(22, 21, "/a/b") +
                                line(23, 20, "/ab"))),
            "");
}

TEST(MountInfo, mountOverTheSamePointHidesTheFirst) {
  EXPECT_EQ(hiddenPoints(parsed(line(20, 1, "/") + line(21, 20, "/a") + line(22, 21, "/a"))),
            "21 ");
  EXPECT_EQ(hiddenPoints(parsed(line(20, 1, "/") + line(21, 20, "/"))), "20 ");
}

TEST(MountInfo, mountOnParentDirectoryHidesAllBelow) {
  EXPECT_EQ(hiddenPoints(parsed(line(20, 1, "/") + line(21, 20, "/a/b") + line(22, 20, "/a") +
                                line(23, 22, "/a/c"))),
            "21 ");
}

TEST(MountInfo, mountBesideHiddenNameIsNotHidden) {
  EXPECT_EQ(hiddenPoints(parsed(line(20, 1, "/") + line(21, 20, "/abc") + line(22, 20, "/a"))), "");
}

TEST(MountInfo, rootOfChrootNeedsNoMountOfItsOwn) {
  EXPECT_EQ(hiddenPoints(parsed(line(31, 9, "/proc") + line(32, 9, "/data"))), "");
}

TEST(MountInfo, ringsOfParentsEnd) {
  EXPECT_EQ(hiddenPoints(parsed(line(20, 20, "/") + line(21, 22, "/a") + line(22, 21, "/a"))),
            "21 22 ");
}

// --- reading ---

TEST(MountInfo, tableIsReadOnceWhereItIsConsistent) {
  test::FakeHost machine;
  machine.files["/proc/self/mountinfo"] = line(20, 1, "/") + line(21, 20, "/");
  const MountTable table = readMounts();
  ASSERT_EQ(table.mounts.size(), 2u);
  EXPECT_TRUE(table.mounts[0].isHidden);
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_EQ(machine.opened, std::vector<std::string>{"/proc/self/mountinfo"});
}

TEST(MountInfo, tableThatChangedIsReadOnceMoreAndSaidToBePartial) {
  test::FakeHost machine;
  machine.files["/proc/self/mountinfo"] = line(20, 1, "/") + line(20, 1, "/");
  const MountTable table = readMounts();
  EXPECT_EQ(table.mounts.size(), 1u);
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(table.outcome.reason(), "mounts: table changed");
  EXPECT_EQ(machine.opened.size(), 2u);
}

TEST(MountInfo, machineWithoutTableSaysSo) {
  test::FakeHost machine;
  EXPECT_EQ(readMounts().outcome.status(), OutcomeStatus::kNoSource);
  machine.openErrors["/proc/self/mountinfo"] = EACCES;
  EXPECT_EQ(readMounts().outcome.status(), OutcomeStatus::kRefused);
}

TEST(MountInfo, optionsMatchAsWholeWords) {
  EXPECT_TRUE(hasOption("ro", "ro"));
  EXPECT_TRUE(hasOption("noatime,ro", "ro"));
  EXPECT_FALSE(hasOption("rw,errors=remount-ro,rox", "ro"));
  EXPECT_FALSE(hasOption("", "ro"));
}

TEST(MountInfo, timeGrowsWithTheNumberOfMounts) {
  const auto secondsFor = [](int count) {
    std::string text = line(1, 0, "/");
    for (int id = 2; id <= count; ++id) text += line(id, 1, "/srv/data/" + std::to_string(id));
    const auto start = test::processorTime();
    bool isConsistent = false;
    std::vector<Mount> mounts = parseMountInfo(text, isConsistent);
    markHidden(mounts);
    EXPECT_EQ(mounts.size(), static_cast<size_t>(count));
    return std::chrono::duration<double>(test::processorTime() - start).count();
  };
  secondsFor(100);
  // Ten times the mounts: a square law would take a hundred times as long.
  EXPECT_LT(secondsFor(10000), 40 * secondsFor(1000) + 0.05);
}

}  // namespace
}  // namespace quenlor
