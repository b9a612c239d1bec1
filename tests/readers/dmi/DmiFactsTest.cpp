#include "readers/dmi/DmiFacts.h"

#include <gtest/gtest.h>

#include "readers/firmware/smbios/SMMemory.h"
#include "tests/firmware/SharedTable.h"
#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

DmiMemoryArray arrayOf(uint64_t mebibytes, uint16_t slots, uint8_t use = 3) {
  DmiMemoryArray array;
  array.use = use;
  array.errorCorrection = 3;
  array.maxKiB = mebibytes << 10;
  array.slots = slots;
  return array;
}

DmiMemoryDevice deviceOf(std::optional<size_t> array, uint64_t mebibytes) {
  DmiMemoryDevice device;
  device.array = array;
  if (mebibytes != 0) device.sizeKiB = mebibytes << 10;
  device.isEmpty = mebibytes == 0;
  return device;
}

TEST(DmiFactsTest, arraysOfTheSystemAreAddedUp) {
  DmiTable table;
  table.memoryArrays = {arrayOf(1 << 20, 8), arrayOf(16, 1, 5), arrayOf(1 << 20, 8)};
  table.memoryDevices = {deviceOf(0, 32768), deviceOf(1, 16), deviceOf(2, 65536), deviceOf(2, 0)};
  const DmiMemoryFacts facts = dmiMemoryFacts(table);
  EXPECT_EQ(facts.slots, 16u);
  EXPECT_EQ(facts.maxMiB, 2u << 20);
  EXPECT_EQ(facts.maxModuleMiB, 1u << 17);
  EXPECT_EQ(facts.installedMiB, 98304u);
  EXPECT_EQ(facts.errorCorrection, "none");
}

TEST(DmiFactsTest, tableWithoutMemoryTellsNothing) {
  const DmiMemoryFacts facts = dmiMemoryFacts(DmiTable{});
  EXPECT_EQ(facts.slots, 0u);
  EXPECT_EQ(facts.maxMiB, 0u);
  EXPECT_FALSE(facts.installedMiB);
  EXPECT_EQ(facts.errorCorrection, "");
}

TEST(DmiFactsTest, arrayThatCountsNoSlotsHasThoseOfItsModules) {
  DmiTable table;
  table.memoryArrays = {arrayOf(0, 0)};
  table.memoryDevices = {deviceOf(0, 8192), deviceOf(0, 8192)};
  const DmiMemoryFacts facts = dmiMemoryFacts(table);
  EXPECT_EQ(facts.slots, 2u);
  EXPECT_EQ(facts.maxMiB, 16384u);
}

TEST(DmiFactsTest, modulesWithoutAnyArrayAreInstalled) {
  DmiTable table;
  table.memoryDevices = {deviceOf(std::nullopt, 4096)};
  EXPECT_EQ(dmiMemoryFacts(table).installedMiB, 4096u);
  table.memoryArrays = {arrayOf(1, 1), arrayOf(1, 1)};
  EXPECT_FALSE(dmiMemoryFacts(table).installedMiB);
}

// What the classic facts say of old tables, where the array's slots share its size evenly.
TEST(DmiFactsTest, oldTablesTellWhatTheyAlwaysTold) {
  for (const auto& [kibibytes, slots] : std::vector<std::pair<uint32_t, uint16_t>>{
           {4u << 20, 4}, {8u << 20, 8}, {24u << 20, 4}, {32u << 20, 2}, {1u << 20, 1}}) {
    test::FirmwareTable table({2, 6});
    table.add(test::MemoryArray{kibibytes, slots});
    table.add(test::MemoryDevice{.size = 512, .locator = "A"});
    const test::SharedTable shared(table);
    unsigned moduleMB = 0;
    unsigned count = 0;
    getMemorySpecs(&moduleMB, &count);
    const auto size = static_cast<uint32_t>(table.bytes().size());
    const auto facts = dmiMemoryFacts(decodeDmi(test::entryPoint64({2, 6}, size), table.bytes()));
    EXPECT_EQ(facts.maxModuleMiB, moduleMB) << kibibytes;
    EXPECT_EQ(facts.slots, count) << kibibytes;
    EXPECT_EQ(facts.maxMiB, uint64_t{moduleMB} * count) << kibibytes;
  }
}

TEST(DmiFactsTest, controllersOfOldTables) {
  DmiTable table;
  table.memoryController = DmiMemoryController{9, 4};
  EXPECT_EQ(dmiMemoryFacts(table).maxModuleMiB, 512u);
  EXPECT_EQ(dmiMemoryFacts(table).slots, 4u);
  EXPECT_EQ(dmiMemoryFacts(table).maxMiB, 2048u);
  table.memoryController = DmiMemoryController{32, 4};
  EXPECT_EQ(dmiMemoryFacts(table).maxModuleMiB, 0u);
  table.memoryModules = {DmiMemoryModule{{}, {}, 256}};
  EXPECT_EQ(dmiMemoryFacts(table).maxModuleMiB, 256u);
}

TEST(DmiFactsTest, dates) {
  EXPECT_EQ(dmiDate("03/15/2024"), "2024-03-15");
  EXPECT_EQ(dmiDate("3/5/2024"), "2024-03-05");
  EXPECT_EQ(dmiDate("03-15-2024"), "2024-03-15");
  EXPECT_EQ(dmiDate("06/28/01"), "2001-06-28");
  EXPECT_EQ(dmiDate("06/28/95"), "2095-06-28");
  EXPECT_EQ(dmiDate("06/28/96"), "1996-06-28");
  EXPECT_EQ(dmiDate("03/15/2024 10:00"), "2024-03-15");
}

TEST(DmiFactsTest, textsThatAreNoDatesStay) {
  for (const char* text : {"2024-03-15", "13/01/2024", "00/01/2024", "01/32/2024", "01/00/2024",
                           "1/2/3", "1/2/345", "1/2/20245", "/1/2024", "15.März", "", "a/b/c",
                           "99.01.2.", "111/1/2024", "01/02/", "01/02"}) {
    EXPECT_EQ(dmiDate(text), text);
  }
}

}  // namespace
}  // namespace quenlor
