#include "base/NaturalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quenlor {
namespace {

using Names = std::vector<std::string>;

Names sorted(Names names) {
  std::sort(names.begin(), names.end(), naturalLess);
  return names;
}

TEST(NaturalOrder, numbersCountByValue) {
  EXPECT_EQ(sorted({"eth10", "eth2", "eth1", "eth0"}), (Names{"eth0", "eth1", "eth2", "eth10"}));
  EXPECT_EQ(sorted({"nvme10n1", "nvme0n10", "nvme0n2", "nvme1n1"}),
            (Names{"nvme0n2", "nvme0n10", "nvme1n1", "nvme10n1"}));
}

TEST(NaturalOrder, disksCountInLettersAsTheirDriversDo) {
  EXPECT_EQ(sorted({"sdaa", "sdz", "sdb", "sda", "sdaaa", "sdzz"}),
            (Names{"sda", "sdb", "sdz", "sdaa", "sdzz", "sdaaa"}));
  EXPECT_EQ(sorted({"vdaa", "xvdaa", "vdb", "xvdb", "dasdaa", "dasdb"}),
            (Names{"dasdb", "dasdaa", "vdb", "vdaa", "xvdb", "xvdaa"}));
}

TEST(NaturalOrder, partitionsStandBehindTheirDisk) {
  EXPECT_EQ(sorted({"sdaa1", "sdb", "sda10", "sda", "sda2", "sdaa"}),
            (Names{"sda", "sda2", "sda10", "sdb", "sdaa", "sdaa1"}));
  EXPECT_EQ(sorted({"mmcblk0p10", "mmcblk0p2", "mmcblk0"}),
            (Names{"mmcblk0", "mmcblk0p2", "mmcblk0p10"}));
}

TEST(NaturalOrder, wordsOfOtherNamesAreNoNumbers) {
  EXPECT_EQ(sorted({"br0", "bond0", "virbr0", "eth0", "lo"}),
            (Names{"bond0", "br0", "eth0", "lo", "virbr0"}));
  EXPECT_EQ(sorted({"sr0", "sdaa", "st0", "sdb"}), (Names{"sdb", "sdaa", "sr0", "st0"}));
}

TEST(NaturalOrder, pathsCompareAsTheirNamesDo) {
  EXPECT_EQ(sorted({"/dev/sdaa", "/dev/sdz", "/dev/md10", "/dev/md9"}),
            (Names{"/dev/md9", "/dev/md10", "/dev/sdz", "/dev/sdaa"}));
}

TEST(NaturalOrder, seriesCountsOnlyWhereNameBegins) {
  // Neither name is a disk's: the letters behind "sd" are part of a word.
  EXPECT_TRUE(naturalLess("xsdaa", "xsdb"));
  EXPECT_TRUE(naturalLess("0sdaa", "0sdb"));
}

TEST(NaturalOrder, numbersOfAnyLengthAreCompared) {
  EXPECT_TRUE(naturalLess("a99999999999999999999999", "a100000000000000000000000"));
  EXPECT_FALSE(naturalLess("a100000000000000000000000", "a99999999999999999999999"));
}

TEST(NaturalOrder, leadingZerosDecideOnlyBetweenEqualNumbers) {
  EXPECT_TRUE(naturalLess("eth01", "eth2"));
  EXPECT_TRUE(naturalLess("eth1", "eth02"));
  EXPECT_NE(naturalLess("eth01", "eth1"), naturalLess("eth1", "eth01"));
  EXPECT_TRUE(naturalLess("eth0", "eth1"));
}

TEST(NaturalOrder, bytesBeyondAsciiComeLastWhateverTheLocale) {
  EXPECT_TRUE(naturalLess("z", "\xC3\xA4"));
  EXPECT_FALSE(naturalLess("\xC3\xA4", "z"));
}

TEST(NaturalOrder, orderIsStrictAndTotalOverHostileNames) {
  const Names names = {
      "",      "0",     "00",     "1",     "sd",     "sda",     "sdaa",
      "sd0",   "sda0",  "sda00",  "sdA",   "sd/",    "sda/sdb", "/",
      "//",    "/sdaa", "/sdz",   "a/sdz", "a/sdaa", "vd-",     "vda-1",
      "vda-b", "xvd",   "\xFFsd", "s",     "eth",    "eth-",    std::string(1, '\0'),
      "sda ",  "1sda",  "1/sda",  "a1b2",  "a01b2",  "a1b02c"};
  for (const auto& left : names) {
    EXPECT_FALSE(naturalLess(left, left)) << left;
    for (const auto& right : names) {
      if (left == right) continue;
      EXPECT_NE(naturalLess(left, right), naturalLess(right, left)) << left << " " << right;
      for (const auto& third : names) {
        if (!naturalLess(left, right) || !naturalLess(right, third)) continue;
        EXPECT_TRUE(naturalLess(left, third)) << left << " " << right << " " << third;
      }
    }
  }
}

}  // namespace
}  // namespace quenlor
