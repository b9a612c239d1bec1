#include "groups/firmware/MemoryModulesGroup.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FirmwareTable;
using test::RowValues;
using test::SharedTable;

FirmwareTable table() { return FirmwareTable({2, 4}); }

std::vector<RowValues> rowsOf(const FirmwareTable& structures) {
  const SharedTable shared(structures);
  return test::collect<MemoryModulesGroup>();
}

template <class Described>
std::string valueOf(const Described& described, uint32_t id) {
  const auto rows = rowsOf(table().add(described));
  return rows.size() == 1 ? test::valueOf(rows[0], id) : "no row";
}

constexpr uint32_t kSize = 2;
constexpr uint32_t kSocket = 4;
constexpr uint32_t kPackaging = 5;
constexpr uint32_t kType = 6;

TEST(MemoryModulesGroup, withoutTableOrModulesThereIsNothing) {
  EXPECT_TRUE(test::collect<MemoryModulesGroup>().empty());
  test::FakeHost machine;
  SMBIOSTable::initializeGlobalTable(1);
  EXPECT_TRUE(test::collect<MemoryModulesGroup>().empty());
  SMBIOSTable::terminateGlobalTable();
  EXPECT_TRUE(rowsOf(table().add(test::MemoryArray{4194304, 4})).empty());
}

TEST(MemoryModulesGroup, devicesInTableOrder) {
  const SharedTable shared(*test::firmwareNamed("server-2.4"));
  EXPECT_EQ(
      test::collect<MemoryModulesGroup>(),
      (std::vector<RowValues>{
          {{1, "1"},
           {2, "1024"},
           {3, "1024"},
           {4, "DIMM0/BANK 0"},
           {5, "DIMM"},
           {6, "Synchronous SDRAM"}},
          {{1, "2"},
           {2, "1024"},
           {3, "1024"},
           {4, "DIMM1/BANK 0"},
           {5, "DIMM"},
           {6, "Synchronous SDRAM"}},
          {{1, "3"}, {2, "0"}, {3, "1024"}, {4, "DIMM2/BANK 1"}, {5, "DIMM"}, {6, ""}},
          {{1, "4"}, {2, "0"}, {3, "1024"}, {4, "DIMM3/BANK 1"}, {5, "DIMM"}, {6, "SDRAM"}}}));
}

TEST(MemoryModulesGroup, modulesOfOldFirmware) {
  const SharedTable shared(*test::firmwareNamed("old-server-2.3"));
  EXPECT_EQ(test::collect<MemoryModulesGroup>(),
            (std::vector<RowValues>{
                {{1, "1"}, {2, "256"}, {3, "512"}, {4, "J1"}, {5, "DIMM"}, {6, "ECC SDRAM"}},
                {{1, "2"}, {2, "128"}, {3, "512"}, {4, "J2"}, {5, "DIMM"}, {6, "ECC SDRAM"}},
                {{1, "3"}, {2, "0"}, {3, "512"}, {4, "J3"}, {5, ""}, {6, ""}},
                {{1, "4"}, {2, "0"}, {3, "512"}, {4, "J4"}, {5, ""}, {6, ""}}}));
}

TEST(MemoryModulesGroup, modulesAreIgnoredBesideDevices) {
  const auto rows = rowsOf(table()
                               .add(test::MemoryModule{"J1", 0, 8})
                               .add(test::MemoryModule{"J2", 0, 8})
                               .add(test::MemoryDevice{.size = 512, .locator = "DIMM0"}));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(test::valueOf(rows[0], kSocket), "DIMM0");
}

TEST(MemoryModulesGroup, socketNames) {
  EXPECT_EQ(valueOf(test::MemoryDevice{.locator = "DIMM0", .bank = "BANK 0"}, kSocket),
            "DIMM0/BANK 0");
  EXPECT_EQ(valueOf(test::MemoryDevice{.bank = "BANK 0"}, kSocket), "BANK 0");
  EXPECT_EQ(valueOf(test::MemoryDevice{.locator = "DIMM0"}, kSocket), "DIMM0");
  EXPECT_EQ(valueOf(test::MemoryDevice{}, kSocket), "");
  EXPECT_EQ(valueOf(test::MemoryDevice{.locator = "Not Available", .bank = "B"}, kSocket), "B");
  EXPECT_EQ(valueOf(test::MemoryDevice{.locator = "D", .bank = "Not Available"}, kSocket), "D");
  EXPECT_EQ(valueOf(test::MemoryModule{.socket = "Not Available"}, kSocket), "");
}

TEST(MemoryModulesGroup, formFactors) {
  const char* const names[] = {"SIMM", "SIP",  "Chip",         "DIP",  "ZIP",    "Proprietary Card",
                               "DIMM", "TSOP", "Row of chips", "RIMM", "SODIMM", "SRIMM"};
  for (unsigned value = 0; value < 256; ++value) {
    const std::string expected = value >= 3 && value <= 14 ? names[value - 3] : "";
    const auto factor = static_cast<uint8_t>(value);
    EXPECT_EQ(valueOf(test::MemoryDevice{.formFactor = factor}, kPackaging), expected) << value;
  }
}

TEST(MemoryModulesGroup, memoryTypes) {
  const char* const names[] = {"DRAM",  "EDRAM", "VRAM",   "SRAM",   "RAM",
                               "ROM",   "FLASH", "EEPROM", "FEPROM", "EPROM",
                               "CDRAM", "3DRAM", "SDRAM",  "SGRAM",  "RDRAM"};
  for (unsigned value = 0; value < 256; ++value) {
    const std::string expected = value >= 3 && value <= 17 ? names[value - 3] : "";
    const test::MemoryDevice device{.type = static_cast<uint8_t>(value), .detail = 0};
    EXPECT_EQ(valueOf(device, kType), expected) << value;
  }
}

TEST(MemoryModulesGroup, typeDetails) {
  const auto detail = [](unsigned bits, uint8_t type) {
    return valueOf(test::MemoryDevice{.type = type, .detail = static_cast<uint16_t>(bits)}, kType);
  };
  EXPECT_EQ(detail(1 << 7, 26), "Synchronous");
  EXPECT_EQ(detail(1 << 7, 15), "Synchronous SDRAM");
  EXPECT_EQ(detail(0xFFFF, 15),
            "Fast-paged Static column Pseudo-static Rambus Synchronous CMOS EDO Window DRAM Cache "
            "DRAM Non-volatile SDRAM");
  EXPECT_EQ(detail(0xE007, 26), "");
}

TEST(MemoryModulesGroup, deviceSizes) {
  EXPECT_EQ(valueOf(test::MemoryDevice{.size = 0x8400}, kSize), "1");
  EXPECT_EQ(valueOf(test::MemoryDevice{.size = 0x83FF}, kSize), "0");
  EXPECT_EQ(valueOf(test::MemoryDevice{.size = 0xFFFF}, kSize), "0");
  EXPECT_EQ(valueOf(test::MemoryDevice{.size = 0x7FFF}, kSize), "32767");
}

TEST(MemoryModulesGroup, moduleTypesAndPackaging) {
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0xFFFF, 0}, kType),
            "Parity ECC Standard Fast Page Mode EDO Burst EDO SDRAM");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0x0003, 0}, kType), "");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 1 << 8 | 1 << 7, 0}, kPackaging), "DIMM");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 1 << 7, 0}, kPackaging), "SIMM");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 1 << 6, 0}, kPackaging), "");
}

TEST(MemoryModulesGroup, moduleSizes) {
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0, 0x87}, kSize), "128");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0, 0x7F}, kSize), "0");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0, 40}, kSize), "0");
  EXPECT_EQ(valueOf(test::MemoryModule{"J1", 0, 31}, kSize), "2147483648");
}

TEST(MemoryModulesGroup, traces) {
  const test::CapturedTraces traces;
  rowsOf(table().add(test::MemoryDevice{.size = 512, .locator = "DIMM0"}));
  rowsOf(table().add(test::MemoryModule{"J1", 0, 8}));
  for (const char* expected :
       {"hardware MemoryModulesGroup Group", "hardware Memory Modules Group",
        "SMBIOS Table 17 is available:(", "SMBIOS Table 6 is available:(", "Module # 1 512"}) {
    EXPECT_TRUE(traces.contains(expected)) << expected;
  }
}

}  // namespace
}  // namespace quenlor
