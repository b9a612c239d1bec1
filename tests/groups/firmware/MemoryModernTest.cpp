#include <gtest/gtest.h>

#include "groups/modern/Collectors.h"
#include "tests/groups/ModernRows.h"
#include "tests/groups/firmware/ModernFirmware.h"

namespace quenlor {
namespace {

using test::collectModern;
using test::FakeHost;
using test::Structure;
using test::valueOf;

constexpr char kAbsent[] = "(absent)";
constexpr char kMeminfo[] =
    "MemTotal:       263856668 kB\nMemFree:        200000000 kB\nMemAvailable:   220000000 kB\n"
    "Buffers:            1000 kB\nSwapTotal:       8388604 kB\nSwapFree:        8000000 kB\n";

Structure array(uint64_t mebibytes, uint16_t slots, uint8_t use = 3, uint8_t correction = 6) {
  Structure out(16);
  out.byte(3).byte(use).byte(correction).dword(0x80000000).word(0xFFFE).word(slots);
  return out.qword(mebibytes << 20);
}

Structure module(uint16_t arrayHandle, uint32_t mebibytes) {
  Structure out(17);
  out.word(arrayHandle)
      .word(0xFFFE)
      .word(72)
      .word(64)
      .word(0x7FFF)
      .byte(9)
      .byte(0)
      .dword(0)
      .byte(0);
  return out.raw(std::string(7, '\0')).dword(mebibytes);
}

test::ModernRows collected(FakeHost& machine) {
  machine.files["/proc/meminfo"] = kMeminfo;
  return collectModern(group::kMemory, collectMemory);
}

TEST(MemoryModernTest, kernelsAmountsAndTheFirmwaresSlots) {
  FakeHost machine;
  installFirmware(machine,
                  {array(6 << 20, 16), array(6 << 20, 16), array(16, 1, 5, 3), module(0, 65536),
                   module(1, 65536), module(1, 131072), module(2, 32768)});
  EXPECT_EQ(collected(machine).rows.at(0), (test::RowValues{{1, "263856668"},
                                                            {2, "200000000"},
                                                            {3, "272245272"},
                                                            {4, "208000000"},
                                                            {5, "64418"},
                                                            {6, "48828"},
                                                            {7, "4096"},
                                                            {8, "12582912"},
                                                            {9, "32"},
                                                            {101, "220000000"},
                                                            {102, "262144"},
                                                            {103, "multi-bit"},
                                                            {104, "270189228032"},
                                                            {105, "8388604"}}));
}

TEST(MemoryModernTest, capacityBelowWhatIsInstalledIsWrong) {
  FakeHost machine;
  installFirmware(machine, {array(65536, 2), module(0, 65536), module(0, 65536)});
  EXPECT_EQ(valueOf(collected(machine).rows.at(0), 8), "131072");
}

TEST(MemoryModernTest, machineWithoutFirmwareHasItsAmountsAndIsComplete) {
  FakeHost machine;
  const auto bare = collected(machine);
  EXPECT_EQ(valueOf(bare.rows.at(0), 1), "263856668");
  EXPECT_EQ(valueOf(bare.rows.at(0), 8), kAbsent);
  EXPECT_EQ(valueOf(bare.rows.at(0), 102), kAbsent);
  EXPECT_EQ(bare.outcome.status(), OutcomeStatus::kComplete);
}

TEST(MemoryModernTest, userLacksTheSlotsAndIsToldWhy) {
  FakeHost machine;
  refuseFirmware(machine);
  const auto part = collected(machine);
  EXPECT_EQ(valueOf(part.rows.at(0), 9), kAbsent);
  EXPECT_EQ(part.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(part.outcome.reason(), "firmware table: not root");
}

TEST(MemoryModernTest, sysinfoServesWhereTheFileIsMissing) {
  FakeHost machine;
  machine.sysinfoResult.emplace();
  machine.sysinfoResult->totalram = 1000;
  machine.sysinfoResult->mem_unit = 4096;
  const auto part = collectModern(group::kMemory, collectMemory);
  EXPECT_EQ(valueOf(part.rows.at(0), 1), "4000");
  EXPECT_EQ(valueOf(part.rows.at(0), 101), kAbsent);
  EXPECT_EQ(part.outcome.status(), OutcomeStatus::kPartial);
}

TEST(MemoryModernTest, oldKernelsDoNotTellWhatIsAvailable) {
  FakeHost machine;
  machine.files["/proc/meminfo"] =
      "MemTotal: 2048 kB\nMemFree: x kB\nMemAvailable 7\n\nSwapTotal:\n";
  const auto row = collectModern(group::kMemory, collectMemory).rows.at(0);
  EXPECT_EQ(valueOf(row, 1), "2048");
  EXPECT_EQ(valueOf(row, 2), "0");
  EXPECT_EQ(valueOf(row, 101), kAbsent);
  EXPECT_EQ(valueOf(row, 105), kAbsent);
}

}  // namespace
}  // namespace quenlor
