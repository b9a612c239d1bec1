#include "readers/mounts/SwapArea.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace quenlor {
namespace {

TEST(SwapArea, headerNeedsAnyOfTheColumnNames) {
  EXPECT_TRUE(isSwapHeader("Filename\t\t\tType\t\tSize\tUsed\tPriority\n"));
  for (const char* line : {"Filename", "Type", "Size", "Used", "xxSizexx"}) {
    EXPECT_TRUE(isSwapHeader(line)) << line;
  }
  for (const char* line :
       {"", "\n", "filename type size used", "Priority", "/dev/hda3 partition"}) {
    EXPECT_FALSE(isSwapHeader(line)) << line;
  }
}

struct Parsed {
  const char* line;
  const char* name;
  uint64_t size;
  uint64_t used;
  uint64_t free;
};

TEST(SwapArea, linesOfAllKernelsAreRead) {
  const Parsed cases[] = {
      {"/dev/hda3                               partition\t530136\t12044\t-1\n", "/dev/hda3",
       530136, 12044, 518092},
      {"/var/swapfile                           file\t\t262136\t0\t-2\n", "/var/swapfile", 262136,
       0, 262136},
      {"/dev/sda2                               partition\t1000444\t\t0\t\t-2\n", "/dev/sda2",
       1000444, 0, 1000444},
      {"/dev/sda2 partition 10 4", "/dev/sda2", 10, 4, 6},  // neither priority nor newline
      {"  /dev/sda2 partition 10 4\n", "/dev/sda2", 10, 4, 6},
      {"/my\\040swap file 10 4 -1\n", "/my\\040swap", 10, 4, 6},
      {"/old/swap\\040(deleted) file 10 4 -1\n", "/old/swap\\040(deleted)", 10, 4, 6},
      {"/dev/a partition 10 11 -1\n", "/dev/a", 10, 11, 0},  // no kernel prints it
      {"/dev/a partition 0 0 -1\n", "/dev/a", 0, 0, 0},
      {"/dev/a partition 5000000000 1 -1\n", "/dev/a", 5000000000, 1, 4999999999},
  };
  for (const Parsed& expected : cases) {
    const auto area = parseSwapLine(expected.line);
    ASSERT_TRUE(area) << expected.line;
    EXPECT_EQ(area->name, expected.name);
    EXPECT_EQ(area->size, expected.size);
    EXPECT_EQ(area->used, expected.used);
    EXPECT_EQ(area->free(), expected.free);
  }
}

TEST(SwapArea, linesThatSayTooLittleAreLeftOut) {
  for (const char* line : {"", "\n", "   \n", "/dev/a\n", "/dev/a partition\n",
                           "/dev/a partition 10\n", "/dev/a partition ten 4 -1\n",
                           "/dev/a partition 10 four -1\n", "/dev/a partition -10 4 -1\n"}) {
    EXPECT_FALSE(parseSwapLine(line)) << line;
  }
}

TEST(SwapArea, lineWithHashIsLeftOutWhereverItStands) {
  EXPECT_FALSE(parseSwapLine("# /dev/a partition 10 4 -1\n"));
  EXPECT_FALSE(parseSwapLine("/dev/a#1 partition 10 4 -1\n"));
  EXPECT_FALSE(parseSwapLine("/dev/a partition 10 4 -1 #\n"));
}

TEST(SwapArea, hugeNumbersBecomeTheLargest) {
  const auto area = parseSwapLine("/dev/a partition 99999999999999999999999 0 -1\n");
  ASSERT_TRUE(area);
  EXPECT_EQ(area->size, std::numeric_limits<uint64_t>::max());
}

TEST(SwapArea, binaryLinesAreHarmless) {
  std::string line;
  for (int byte = 1; byte < 256; ++byte) line += static_cast<char>(byte);
  EXPECT_FALSE(parseSwapLine(line.c_str()));
  EXPECT_FALSE(isSwapHeader(line.c_str()));
}

}  // namespace
}  // namespace quenlor
