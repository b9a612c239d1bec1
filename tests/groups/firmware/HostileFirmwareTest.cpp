// The groups on firmware that lies: defined rows, whatever the table holds.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::Firmware;
using test::FirmwareTable;
using test::SharedTable;
using test::Structure;

size_t rowCount() {
  return test::collect<ComponentIDGroup>().size() + test::collect<SMBIOSGroup>().size() +
         test::collect<MemoryModulesGroup>().size();
}

size_t rowsOf(const Firmware& firmware) {
  const SharedTable shared(firmware);
  return rowCount();
}

TEST(HostileFirmware, countsTooSmallAndTooLarge) {
  for (const uint16_t count : std::initializer_list<uint16_t>{0, 1, 3, 5000, 65535}) {
    Firmware firmware = *test::firmwareNamed("server-2.4");
    firmware.announcedCount = count;
    EXPECT_GE(rowsOf(firmware), 2u) << count;
  }
}

TEST(HostileFirmware, everyAnnouncedLength) {
  const Firmware original = *test::firmwareNamed("server-2.4");
  for (uint16_t length = 0; length < 200; ++length) {
    Firmware firmware = original;
    firmware.announcedLength = length;
    EXPECT_GE(rowsOf(firmware), 2u) << length;
  }
}

TEST(HostileFirmware, tableOfTheLargestLength) {
  Firmware firmware = *test::firmwareNamed("table-high");
  firmware.announcedLength = 65535;
  firmware.announcedCount = 65535;
  firmware.otherMemory[0x130000] = "end of memory";
  EXPECT_EQ(rowsOf(firmware), 4u);
}

TEST(HostileFirmware, tableAddressPastTheEndOfMemory) {
  Firmware firmware = *test::firmwareNamed("server-2.4");
  firmware.announcedLength = 65535;
  firmware.tableAddress = 0xFFF00;
  firmware.entryPointAddress = 0xF0000;
  EXPECT_EQ(rowsOf(firmware), 1u);
}

TEST(HostileFirmware, lengthBytesZeroToThree) {
  for (unsigned type = 0; type < 256; ++type) {
    for (uint8_t length = 0; length < 4; ++length) {
      FirmwareTable table({2, 4});
      table.add(Structure(static_cast<uint8_t>(type)).claimLength(length));
      table.add(test::System{.product = "P"}).add(test::MemoryDevice{});
      EXPECT_GE(rowsOf(Firmware(table)), 1u);
    }
  }
}

TEST(HostileFirmware, manyAndLargeStrings) {
  FirmwareTable table({2, 4});
  table.add(Structure(1).byte(1).byte(2).byte(3).byte(255).strings(
      std::vector<std::string>(300, "text")));
  table.add(test::Bios{.vendor = std::string(60000, '\xE4'), .version = std::string(3000, 'v')});
  table.add(test::MemoryDevice{.size = 0xFFFF, .locator = "\x80\xFF", .bank = "\x7F"});
  Firmware firmware(table);
  firmware.tableAddress = 0x100000;
  const SharedTable shared(firmware);
  const auto rows = test::collect<SMBIOSGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(test::valueOf(rows[0], 1), "(absent)");
  EXPECT_EQ(test::valueOf(rows[0], 2), std::string(3000, 'v'));
  EXPECT_EQ(test::valueOf(rows[0], 8), "(absent)");
  EXPECT_EQ(test::collect<MemoryModulesGroup>().size(), 1u);
}

TEST(HostileFirmware, missingTerminators) {
  for (unsigned type = 0; type < 128; ++type) {
    std::string bytes{static_cast<char>(type), 8, 0, 0, 1, 2, 3, 4};
    bytes += std::string(500, 'x');
    FirmwareTable table({2, 4});
    Firmware firmware(table);
    firmware.announcedLength = static_cast<uint16_t>(bytes.size());
    firmware.announcedCount = 20;
    firmware.otherMemory[firmware.tableAddress] = bytes;
    EXPECT_GE(rowsOf(firmware), 1u);
  }
}

// A fixed seed: the same damage in every run.
TEST(HostileFirmware, damagedImages) {
  std::mt19937 random(20260101);
  for (const std::string& name : test::firmwareNames()) {
    const std::string original = test::firmwareNamed(name)->memory();
    for (int round = 0; round < 40; ++round) {
      test::FakeHost machine;
      std::string memory = original;
      for (int i = 0; i < 8; ++i) memory[0xF5000 + random() % 600] = static_cast<char>(random());
      memory[0xFA000 + random() % 31] = static_cast<char>(random());
      machine.files["/dev/mem"] = memory;
      SMBIOSTable::initializeGlobalTable(1);
      EXPECT_GE(rowCount(), 1u);
      SMBIOSTable::terminateGlobalTable();
    }
  }
}

TEST(HostileFirmware, twoScansOfTheSameMemoryAreEqual) {
  for (const std::string& name : test::firmwareNames()) {
    const SharedTable shared(*test::firmwareNamed(name));
    EXPECT_EQ(test::collect<SMBIOSGroup>(), test::collect<SMBIOSGroup>());
    EXPECT_EQ(test::collect<MemoryModulesGroup>(), test::collect<MemoryModulesGroup>());
    EXPECT_EQ(test::collect<ComponentIDGroup>(), test::collect<ComponentIDGroup>());
  }
}

}  // namespace
}  // namespace quenlor
