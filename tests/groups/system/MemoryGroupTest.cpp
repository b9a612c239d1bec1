#include "groups/system/MemoryGroup.h"

#include <gtest/gtest.h>

#include "readers/system/Meminfo.h"
#include "tests/groups/FirmwareScope.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::collect;
using test::FakeHost;
using test::FirmwareTable;
using test::RowValues;
using test::valueOf;

constexpr const char* kKernel24Meminfo =
    "        total:    used:    free:  shared: buffers:  cached:\n"
    "Mem:  1055477760 812335104 243142656        0 98635776 484012032\n"
    "Swap: 1077469184 12333056 1065136128\n"
    "MemTotal:      1030740 kB\n"
    "MemFree:        237444 kB\n"
    "MemShared:           0 kB\n"
    "Cached:         460628 kB\n"
    "SwapCached:      12040 kB\n"
    "SwapTotal:     1052216 kB\n"
    "SwapFree:      1040172 kB\n";

constexpr test::Version kSmbios24{2, 4};

// A memory array as recent firmware describes it (type 16).
FirmwareTable arrayOf(uint32_t maximumMb, uint16_t slots) {
  return FirmwareTable(kSmbios24).add(test::MemoryArray{maximumMb * 1024, slots});
}

// A memory controller as older firmware describes it (type 5); its modules' limit is a power of 2.
FirmwareTable controllerOf(uint8_t moduleLimitExponent, uint8_t slots) {
  return FirmwareTable({2, 0}).add(test::MemoryController{moduleLimitExponent, slots});
}

class MemoryGroupTest : public ::testing::Test {
 protected:
  ~MemoryGroupTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  // "Max Memory MB" and "Num Slots Supported" on a machine with this firmware.
  std::pair<std::string, std::string> slotsWith(const FirmwareTable& table) {
    const test::FirmwareScope firmware(machine, table);
    const RowValues row = collect<MemoryGroup>()[0];
    return {valueOf(row, 8), valueOf(row, 9)};
  }

  FakeHost machine;
};

using Slots = std::pair<std::string, std::string>;

TEST_F(MemoryGroupTest, readsTheAmountsOfMeminfo) {
  machine.files["/proc/meminfo"] = kKernel24Meminfo;
  const auto rows = collect<MemoryGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0], (RowValues{{1, "1030740"},
                                {2, "237444"},
                                {3, "2082956"},
                                {4, "1277616"},
                                {5, "251"},
                                {6, "57"},
                                {7, "4096"}}));
}

TEST_F(MemoryGroupTest, swapTotalBeforeMemTotalIsOverwritten) {
  machine.files["/proc/meminfo"] = "SwapTotal: 50 kB\nMemTotal: 100 kB\n";
  EXPECT_EQ(valueOf(collect<MemoryGroup>()[0], 3), "100");
}

TEST_F(MemoryGroupTest, everySwapLineIsAdded) {
  machine.files["/proc/meminfo"] =
      "MemTotal: 100 kB\nMemFree: 10 kB\nSwapTotal: 5 kB\nSwapTotal: 6 kB\nSwapFree: 3 kB\n"
      "SwapFree: 4 kB\n";
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 3), "111");
  EXPECT_EQ(valueOf(row, 4), "17");
}

TEST_F(MemoryGroupTest, labelsCountAnywhereInALineButOnlyWithTheirBlank) {
  machine.files["/proc/meminfo"] =
      "xMemTotal: 7 kB\nMemTotal:\t9 kB\nMemFree:\t9 kB\nSwapTotal:\t9 kB\n"
      "SwapFree:\t9 kB\nLowMemFree: 5 kB\n";
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "7");
  EXPECT_EQ(valueOf(row, 2), "5");
  EXPECT_EQ(valueOf(row, 3), "7");
  EXPECT_EQ(valueOf(row, 4), "5");
}

TEST_F(MemoryGroupTest, sysinfoAmountsAreRoundedDownOneByOne) {
  struct sysinfo info = {};
  info.totalram = info.totalswap = 2 * 1024 + 1023;
  info.freeram = info.freeswap = 1024 + 1023;
  machine.sysinfoResult = info;
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "2");
  EXPECT_EQ(valueOf(row, 2), "1");
  EXPECT_EQ(valueOf(row, 3), "4");
  EXPECT_EQ(valueOf(row, 4), "2");
}

TEST_F(MemoryGroupTest, sysinfoServesWhereMeminfoIsMissingEmptyOrZero) {
  struct sysinfo info = {};
  info.totalram = 1048576UL * 1024;
  info.freeram = 2048 * 1024;
  info.totalswap = 1024 * 1024;
  info.freeswap = 512 * 1024;
  info.mem_unit = 4096;  // not applied
  machine.sysinfoResult = info;
  const RowValues expected{{1, "1048576"}, {2, "2048"}, {3, "1049600"}, {4, "2560"},
                           {5, "256"},     {6, "0"},    {7, "4096"}};
  EXPECT_EQ(collect<MemoryGroup>()[0], expected);
  machine.files["/proc/meminfo"] = "";
  EXPECT_EQ(collect<MemoryGroup>()[0], expected);
  machine.files["/proc/meminfo"] = "MemTotal: 0 kB\nMemFree: 5 kB\n";
  EXPECT_EQ(collect<MemoryGroup>()[0], expected);
}

TEST_F(MemoryGroupTest, withoutAnySourceEverythingIsZero) {
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "0");
  EXPECT_EQ(valueOf(row, 5), "0");
}

TEST_F(MemoryGroupTest, amountsAboveFourTerabytesSaturate) {
  machine.files["/proc/meminfo"] =
      "MemTotal: 9000000000 kB\nMemFree: 8000000000 kB\nSwapTotal: 1 kB\n";
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "4294967295");
  EXPECT_EQ(valueOf(row, 3), "4294967295");
  EXPECT_EQ(valueOf(row, 5), "2197265");  // from the full amount
}

TEST_F(MemoryGroupTest, withoutFirmwareTableNoSlotsAreReported) {
  machine.files["/proc/meminfo"] = kKernel24Meminfo;
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 8), "(absent)");
  EXPECT_EQ(valueOf(row, 9), "(absent)");
}

TEST_F(MemoryGroupTest, maximumIsModuleLimitTimesSlotsBehindTheOtherAttributes) {
  machine.files["/proc/meminfo"] = kKernel24Meminfo;
  const test::FirmwareScope firmware(machine, arrayOf(4096, 4));
  EXPECT_EQ(collect<MemoryGroup>()[0], (RowValues{{1, "1030740"},
                                                  {2, "237444"},
                                                  {3, "2082956"},
                                                  {4, "1277616"},
                                                  {5, "251"},
                                                  {6, "57"},
                                                  {7, "4096"},
                                                  {8, "4096"},
                                                  {9, "4"}}));
}

TEST_F(MemoryGroupTest, controllerOfOlderFirmwareGivesTheSameFacts) {
  EXPECT_EQ(slotsWith(controllerOf(9, 4)), Slots("2048", "4"));  // 512 MB each
}

TEST_F(MemoryGroupTest, withoutSlotsNeitherIsReportedEvenIfTheModuleLimitIsKnown) {
  EXPECT_EQ(slotsWith(controllerOf(9, 0)), Slots("(absent)", "(absent)"));
  EXPECT_EQ(slotsWith(arrayOf(4096, 0)), Slots("(absent)", "(absent)"));
}

TEST_F(MemoryGroupTest, slotsWithoutModuleLimitAreCountedButHaveNoMaximum) {
  EXPECT_EQ(slotsWith(controllerOf(0, 2)), Slots("(absent)", "2"));
}

TEST_F(MemoryGroupTest, maximumBelowTheInstalledKilobytesShiftedBy20IsLeftOut) {
  const auto withTotal = [this](uint64_t shifted) {
    machine.files["/proc/meminfo"] = "MemTotal: " + std::to_string(shifted << 20) + " kB\n";
    return slotsWith(controllerOf(9, 4));
  };
  EXPECT_EQ(withTotal(2048), Slots("2048", "4"));
  EXPECT_EQ(withTotal(2049), Slots("(absent)", "4"));
}

TEST_F(MemoryGroupTest, maximumAboveFourPetabytesSaturates) {
  EXPECT_EQ(slotsWith(controllerOf(31, 8)), Slots("4294967295", "8"));
}

TEST_F(MemoryGroupTest, parseValTakesTheSecondWord) {
  const auto parse = [](std::string line) { return parseVal(line.data()); };
  EXPECT_EQ(parse("MemTotal:      1030740 kB\n"), 1030740);
  EXPECT_EQ(parse("MemTotal: "), 0);
  EXPECT_EQ(parse(""), 0);
  EXPECT_EQ(parse("MemTotal: kB"), 0);
  EXPECT_EQ(parse("MemTotal: 12"), 12);
  EXPECT_EQ(parse("MemTotal: \t:12:3"), 12);
  EXPECT_EQ(parse("MemTotal:\t12 34"), 34);
  EXPECT_EQ(parse("MemTotal: 012"), 12);
}

TEST_F(MemoryGroupTest, binaryAndUnterminatedMeminfoDoesNoHarm) {
  machine.files["/proc/meminfo"] = std::string("MemFree: \0 7 kB\n\xff\xfe\nMemTotal: 9", 30);
  const RowValues row = collect<MemoryGroup>()[0];
  EXPECT_EQ(valueOf(row, 1), "9");
  EXPECT_EQ(valueOf(row, 2), "0");
}

TEST_F(MemoryGroupTest, numbersTooLargeForTheMachineSaturate) {
  machine.files["/proc/meminfo"] = "MemTotal: 99999999999999999999999 kB\n";
  EXPECT_EQ(valueOf(collect<MemoryGroup>()[0], 1), "4294967295");
}

TEST_F(MemoryGroupTest, linesLongerThanTheBufferArriveInPieces) {
  machine.files["/proc/meminfo"] =
      "Padding: " + std::string(246, 'x') + "MemTotal: 77 kB\nMemFree: 5 kB";
  EXPECT_EQ(valueOf(collect<MemoryGroup>()[0], 1), "77");
}

}  // namespace
}  // namespace quenlor
