#include "readers/topology/CpuList.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

TEST(CpuList, rangesAndNumbersAreTaken) {
  EXPECT_EQ(parseCpuList("0-3,8,10-11\n"), (CpuList{0, 1, 2, 3, 8, 10, 11}));
  EXPECT_EQ(parseCpuList("5"), CpuList{5});
  EXPECT_EQ(parseCpuList(" 1,2 \n"), (CpuList{1, 2}));
}

TEST(CpuList, anEmptyLineIsAnEmptySet) {
  EXPECT_EQ(parseCpuList(""), CpuList{});
  EXPECT_EQ(parseCpuList("\n"), CpuList{});
}

TEST(CpuList, numbersComeAscendingAndOnce) {
  EXPECT_EQ(parseCpuList("8,0-2,1"), (CpuList{0, 1, 2, 8}));
}

TEST(CpuList, anythingElseIsNoList) {
  for (const char* text : {"a", "-", "1-", "-1", "3-1", "1,,2", "1,", ",1", "0x1", "1 2", "1-2-3",
                           "+1", "4294967296", "65536", "0-99999999999"}) {
    EXPECT_FALSE(parseCpuList(text)) << text;
  }
}

TEST(CpuList, aHostileListDoesNotGrowWithoutEnd) {
  std::string text = "0-65535";
  for (int copy = 0; copy < 1000; ++copy) text += ",0-65535";
  EXPECT_FALSE(parseCpuList(text));
  EXPECT_EQ(parseCpuList("0-65535")->size(), 65536u);
}

TEST(CpuMap, wordsHoldThirtyTwoProcessorsEach) {
  EXPECT_EQ(parseCpuMap("0000000f\n"), (CpuList{0, 1, 2, 3}));
  EXPECT_EQ(parseCpuMap("80000000,00000001"), (CpuList{0, 63}));
  EXPECT_EQ(parseCpuMap("3"), (CpuList{0, 1}));
  EXPECT_EQ(parseCpuMap("0"), CpuList{});
}

TEST(CpuMap, anythingElseIsNoMap) {
  for (const char* text : {"", "g", "1,", ",1", "100000000", "0x1", "-1"}) {
    EXPECT_FALSE(parseCpuMap(text)) << text;
  }
  std::string tooLong = "1";
  for (int word = 0; word < 5000; ++word) tooLong += ",1";
  EXPECT_FALSE(parseCpuMap(tooLong));
}

}  // namespace
}  // namespace quenlor::test
