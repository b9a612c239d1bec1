#include "readers/storage/SgEnumeration.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;

class SgEnumerationTest : public ::testing::Test {
 protected:
  std::string next(const char* prefix, int letters) {
    const DrivePath path(getNextDrive(counter, prefix, letters));
    return path ? path.get() : "(null)";
  }
  int omit(const char* device) { return omitSGdevice(map, getCcLogHw(), device); }

  FakeHost machine;
  DriveCounter counter;
  SgMap map;
};

TEST_F(SgEnumerationTest, namesGoOnUntilTheFirstMissingOneAndThenStartAfresh) {
  machine.devices["/dev/sg0"];
  machine.devices["/dev/sg1"];
  machine.devices["/dev/sg3"];
  for (int walk = 0; walk < 2; ++walk) {
    EXPECT_EQ(next("/dev/sg", 0), "/dev/sg0");
    EXPECT_EQ(next("/dev/sg", 0), "/dev/sg1");
    EXPECT_EQ(next("/dev/sg", 0), "(null)");
  }
}

TEST_F(SgEnumerationTest, letterNamesStartWithA) {
  machine.devices["/dev/sga"];
  machine.devices["/dev/sgb"];
  EXPECT_EQ(next("/dev/sg", 1), "/dev/sga");
  EXPECT_EQ(next("/dev/sg", 1), "/dev/sgb");
  EXPECT_EQ(next("/dev/sg", 1), "(null)");
  EXPECT_EQ(counter.next, 0);
}

TEST_F(SgEnumerationTest, failedLetterWalkLeavesTheNumbersTheirStart) {
  machine.devices["/dev/sg0"];
  EXPECT_EQ(next("/dev/sg", 1), "(null)");
  EXPECT_EQ(next("/dev/sg", 0), "/dev/sg0");
}

TEST_F(SgEnumerationTest, at255EveryWalkOfTheRunEndsWithoutAReset) {
  for (int i = 0; i < 300; ++i) machine.devices["/dev/sg" + std::to_string(i)];
  machine.devices["/dev/fd0"];
  for (int i = 0; i < 255; ++i) EXPECT_NE(next("/dev/sg", 0), "(null)");
  EXPECT_EQ(next("/dev/sg", 0), "(null)");
  EXPECT_EQ(counter.next, 255);
  EXPECT_EQ(next("/dev/fd", 0), "(null)");
}

TEST_F(SgEnumerationTest, nodesThatAnotherDriverReportsAreOmitted) {
  machine.commands["sg_map -x 2>/dev/null"] = {
      "/dev/sg0  0 0 0 0  0  /dev/sda\n"
      "/dev/sg1  0 0 5 0  5  /dev/sr0\n"
      "/dev/sg2  1 0 4 0  1  /dev/nst0\r\n"
      "/dev/sg3  1 0 6 0  8\n"
      "/dev/sg4  2 0 8 0  3"};
  EXPECT_EQ(omit("/dev/sg0"), 1);
  EXPECT_EQ(omit("/dev/sg1"), 1);
  EXPECT_EQ(omit("/dev/sg2"), 1);
  EXPECT_EQ(omit("/dev/sg3"), 0);
  EXPECT_EQ(omit("/dev/sg4"), 0);
  EXPECT_EQ(omit("/dev/sg5"), 0);
  EXPECT_EQ(machine.started.size(), 1U);  // read on first use only
  EXPECT_EQ(machine.openCommands(), 0);
}

TEST_F(SgEnumerationTest, withoutSgMapNothingIsOmitted) {
  EXPECT_EQ(omit("/dev/sg0"), 0);
  machine.unstartableCommands = {"sg_map -x 2>/dev/null"};
  map = {};
  EXPECT_EQ(omit("/dev/sg0"), 0);
}

TEST_F(SgEnumerationTest, linesOfOtherTextAreNoMapping) {
  machine.commands["sg_map -x 2>/dev/null"] = {"sg_map: cannot open /dev/sg0 /dev/sda\n\n"};
  EXPECT_EQ(omit("sg_map:"), 0);
  EXPECT_FALSE(map.hasMapping);
}

TEST_F(SgEnumerationTest, lineWithoutBlankEndsTheReading) {
  machine.commands["sg_map -x 2>/dev/null"] = {
      "/dev/sg0  0 0 0 0  0  /dev/sda\n"
      "/dev/sg1\n"
      "/dev/sg2  0 0 2 0  0  /dev/sdc\n"};
  EXPECT_EQ(omit("/dev/sg0"), 1);
  EXPECT_EQ(omit("/dev/sg1"), 0);
  EXPECT_EQ(omit("/dev/sg2"), 0);
}

TEST_F(SgEnumerationTest, overlongLineIsTakenInPieces) {
  machine.commands["sg_map -x 2>/dev/null"] = {"/dev/sg0 " + std::string(5000, 'x') +
                                               " /dev/sda\n/dev/sg1 0 /dev/sdb\n"};
  EXPECT_EQ(omit("/dev/sg0"), 0);
  EXPECT_EQ(omit("/dev/sg1"), 1);
}

TEST_F(SgEnumerationTest, pieceOfALineHas2047Characters) {
  const std::string name = "/dev/";
  const std::string line = "/dev/sg0 " + std::string(2047 - 9 - name.size(), 'x') + name;
  machine.commands["sg_map -x 2>/dev/null"] = {line + "sda\n"};
  EXPECT_EQ(omit("/dev/sg0"), 1);
  machine.commands["sg_map -x 2>/dev/null"] = {"/dev/sg0 x" + line.substr(9) + "sda\n"};
  map = {};
  EXPECT_EQ(omit("/dev/sg0"), 0);
}

}  // namespace
}  // namespace quenlor
