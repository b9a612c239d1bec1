#include "readers/dmi/DmiEntryPoint.h"

#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

TEST(DmiEntryPointTest, of64BitsHasAnUpperLimitAndNoCount) {
  const auto entry = parseDmiEntryPoint(test::entryPoint64({3, 7}, 0x12345, 0x1'2345'6789'0000));
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->version, (DmiVersion{3, 7}));
  EXPECT_EQ(entry->tableLength, 0x12345u);
  EXPECT_EQ(entry->tableAddress, 0x1'2345'6789'0000u);
  EXPECT_FALSE(entry->structureCount);
  EXPECT_TRUE(entry->endsAtEndStructure);
}

TEST(DmiEntryPointTest, of32BitsHasLengthAndCount) {
  const auto entry = parseDmiEntryPoint(test::entryPoint32({2, 8}, 4660, 77, 0xE0000010));
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->version, (DmiVersion{2, 8}));
  EXPECT_EQ(entry->tableLength, 4660u);
  EXPECT_EQ(entry->tableAddress, 0xE0000010u);
  EXPECT_EQ(entry->structureCount, 77u);
  EXPECT_FALSE(entry->endsAtEndStructure);
}

TEST(DmiEntryPointTest, of32BitsMayStateAVersionOfTheOther) {
  const auto entry = parseDmiEntryPoint(test::entryPoint32({3, 2}, 100, 1));
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->version, (DmiVersion{3, 2}));
}

TEST(DmiEntryPointTest, bareOldOneHasItsVersionInOneByte) {
  const auto entry = parseDmiEntryPoint(test::entryPointOld(0x21, 900, 12, 0xF1000));
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->version, (DmiVersion{2, 1}));
  EXPECT_EQ(entry->tableLength, 900u);
  EXPECT_EQ(entry->structureCount, 12u);
  EXPECT_EQ(entry->tableAddress, 0xF1000u);
}

TEST(DmiEntryPointTest, countOfZeroIsNone) {
  EXPECT_FALSE(parseDmiEntryPoint(test::entryPoint32({2, 4}, 100, 0))->structureCount);
}

// The kernel shows as many bytes as the length says.
TEST(DmiEntryPointTest, lengthThatLacksAByteIsTaken) {
  std::string bytes = test::entryPoint32({2, 1}, 100, 3);
  bytes[5] = 0x1E;
  bytes.pop_back();
  test::mendChecksum(bytes, 4);
  const auto entry = parseDmiEntryPoint(bytes);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->structureCount, 3u);
}

TEST(DmiEntryPointTest, longerOnesAreTakenUpTo31Bytes) {
  std::string bytes = test::entryPoint64({3, 3}, 100) + std::string(7, '\0');
  bytes[6] = 0x1F;
  test::mendChecksum(bytes, 5);
  EXPECT_TRUE(parseDmiEntryPoint(bytes));
  bytes += '\0';
  bytes[6] = 0x20;
  test::mendChecksum(bytes, 5);
  EXPECT_FALSE(parseDmiEntryPoint(bytes));
}

TEST(DmiEntryPointTest, versionsThatAreRevisionsOfTheTextMeanOlderOnes) {
  const auto version = [](uint8_t minor) {
    return parseDmiEntryPoint(test::entryPoint32({2, minor}, 9, 1))->version;
  };
  EXPECT_EQ(version(31), (DmiVersion{2, 3}));
  EXPECT_EQ(version(33), (DmiVersion{2, 3}));
  EXPECT_EQ(version(51), (DmiVersion{2, 6}));
  EXPECT_EQ(version(32), (DmiVersion{2, 32}));
}

class EachEntryPoint : public testing::TestWithParam<std::string> {};

TEST_P(EachEntryPoint, isNoneWithAnyByteChanged) {
  for (size_t i = 0; i < GetParam().size(); ++i) {
    std::string bytes = GetParam();
    bytes[i] = static_cast<char>(bytes[i] + 1);
    EXPECT_FALSE(parseDmiEntryPoint(bytes)) << i;
  }
}

TEST_P(EachEntryPoint, isNoneWhenCutShort) {
  for (size_t size = 0; size < GetParam().size(); ++size) {
    const std::string bytes = GetParam().substr(0, size);
    EXPECT_FALSE(parseDmiEntryPoint(bytes)) << size;
  }
}

INSTANTIATE_TEST_SUITE_P(DmiEntryPointTest, EachEntryPoint,
                         testing::Values(test::entryPoint64({3, 0}, 5000),
                                         test::entryPoint32({2, 7}, 5000, 60),
                                         test::entryPointOld(0x20, 5000, 60)));

TEST(DmiEntryPointTest, intermediateChecksumCountsToo) {
  std::string bytes = test::entryPoint32({2, 7}, 5000, 60);
  bytes[0x15] = static_cast<char>(bytes[0x15] + 1);
  test::mendChecksum(bytes, 4);
  EXPECT_FALSE(parseDmiEntryPoint(bytes));
}

std::string memoryWith(std::vector<std::pair<size_t, std::string>> contents) {
  std::string memory(0x10000, '\0');
  for (const auto& [at, bytes] : contents) memory.replace(at, bytes.size(), bytes);
  return memory;
}

TEST(DmiEntryPointTest, the64BitOneWinsWhereverItStands) {
  const std::string memory = memoryWith(
      {{0x40, test::entryPoint32({2, 8}, 100, 1)}, {0xFFE0, test::entryPoint64({3, 1}, 200)}});
  EXPECT_EQ(findDmiEntryPoint(memory)->tableLength, 200u);
}

TEST(DmiEntryPointTest, firstOfTheOthersThatIsRightIsFound) {
  std::string wrong = test::entryPoint32({2, 3}, 1, 1);
  wrong[8] = 7;
  wrong[0x15] = 0;
  const std::string memory = memoryWith({{0x40, wrong},
                                         {0x123, test::entryPoint32({2, 4}, 2, 1)},
                                         {0x200, test::entryPointOld(0x24, 3, 1)},
                                         {0x300, test::entryPoint32({2, 8}, 4, 1)}});
  EXPECT_EQ(findDmiEntryPoint(memory)->tableLength, 3u);
}

// Its "_DMI_" half still announces the table.
TEST(DmiEntryPointTest, halfOfA32BitOneIsFoundWhenTheOtherIsWrong) {
  std::string bytes = test::entryPoint32({2, 5}, 777, 5);
  bytes[4] = static_cast<char>(bytes[4] + 1);
  EXPECT_EQ(findDmiEntryPoint(memoryWith({{0xA000, bytes}}))->tableLength, 777u);
}

TEST(DmiEntryPointTest, emptyMemoryHasNone) {
  EXPECT_FALSE(findDmiEntryPoint(memoryWith({})));
  EXPECT_FALSE(findDmiEntryPoint(""));
  EXPECT_FALSE(findDmiEntryPoint(std::string(100, '_')));
}

}  // namespace
}  // namespace quenlor
