// What the groups on firmware write to the trace file, record by record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "groups/firmware/ComponentIDGroup.h"
#include "groups/firmware/MemoryModulesGroup.h"
#include "groups/firmware/SMBIOSGroup.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FirmwareTable;
using test::SharedTable;
using ::testing::ElementsAre;

FirmwareTable table() { return FirmwareTable({2, 4}); }

// Records of collecting a group, without those of the records it reads.
template <class Group>
std::vector<std::string> tracesOf(const FirmwareTable& structures) {
  const SharedTable shared(structures);
  const test::CapturedTraces traces;
  test::collect<Group>();
  std::vector<std::string> records;
  for (const std::string& record : traces.texts()) {
    if (record.find(" SMBIOS/SMBIOSTable") == record.npos) records.push_back(record);
  }
  return records;
}

TEST(SmbiosTrace, memoryLimitsAreLookedUpBeforeTheModules) {
  EXPECT_THAT(
      tracesOf<MemoryModulesGroup>(table()
                                       .add(test::MemoryController{5, 4})
                                       .add(test::MemoryArray{4194304, 4})
                                       .add(test::MemoryDevice{.size = 512, .locator = "DIMM0"})),
      ElementsAre(
          "MID entry SMBIOS/MemoryModulesGroup.cpp getTable() hardware MemoryModulesGroup Group",
          "MAX SMBIOS/MemoryModulesGroup.cpp getTableLeg() hardware Memory Modules Group",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware SMBIOS Table 5 is available",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware SMBIOS Table 16 is available",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware Table 5: Max Module Size: 32 "
          "Slots: 4 Table 6 MaxModuleSize (calc) found: 0",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware raw maxModuleSizeMB = 4096 MB, "
          "divided by slots: 1024",
          "MAX SMBIOS/SMMemory.cpp SM_getBiggestMemoryModule_17() hardware SMBIOS Table 17 is "
          "available",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware biggestModule found (SMB): 512",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware Table 16: Max Module Size: 1024 "
          "Slots: 4",
          "MAX SMBIOS/MemoryModulesGroup.cpp getTableLeg() hardware SMBIOS Table 17 is "
          "available:( 1",
          "MAX SMBIOS/MemoryModulesGroup.cpp getTableLeg() hardware Module # 1 512 1024 DIMM0 "
          "DIMM Synchronous SDRAM",
          "MID exit SMBIOS/MemoryModulesGroup.cpp getTable() hardware MemoryModulesGroup Group"));
}

TEST(SmbiosTrace, memoryLimitsAreTracedOnMachinesWithoutModulesToo) {
  EXPECT_THAT(
      tracesOf<MemoryModulesGroup>(table().add(test::MemoryArray{3145728, 2})),
      ElementsAre(
          "MID entry SMBIOS/MemoryModulesGroup.cpp getTable() hardware MemoryModulesGroup Group",
          "MAX SMBIOS/MemoryModulesGroup.cpp getTableLeg() hardware Memory Modules Group",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware SMBIOS Table 16 is available",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware raw maxModuleSizeMB = 3072 MB, "
          "divided by slots: 1536",
          "MAX SMBIOS/SMMemory.cpp getMemorySpecs() hardware Table 16: Max Module Size: 1536 "
          "Slots: 2",
          "MID exit SMBIOS/MemoryModulesGroup.cpp getTable() hardware MemoryModulesGroup Group"));
}

TEST(SmbiosTrace, missingTextsAreTracedAsNone) {
  const std::vector<std::string> records =
      tracesOf<SMBIOSGroup>(table().add(test::System{.product = "P"}));
  std::vector<std::string> texts;
  for (const std::string& record : records) texts.push_back(record.substr(record.find("()") + 3));
  EXPECT_THAT(
      texts, ElementsAre(
                 "hardware SMBIOSGroup Group", "hardware SMBIOS TABLE 1 IS AVAILABLE",
                 "hardware BIOS Vendor: -none-", "hardware BIOS Version: -none-",
                 "hardware BIOS Date: -none-", "hardware System Manufacturer: -none-",
                 "hardware System Product Name: P", "hardware System Version: -none-",
                 "hardware System Serial Number: -none-", "hardware System UUID: -none-",
                 "hardware Board Manufacturer: -none-", "hardware Board Product: -none-",
                 "hardware Board Version: -none-", "hardware Board Serial Number: -none-",
                 "hardware Enclosure Manufacturer: -none-", "hardware Enclosure Version: -none-",
                 "hardware Enclosure Serial Number: -none-", "hardware Enclosure Asset Tag: -none-",
                 "hardware MD5 PK input len: 10", "hardware SMBIOSGroup Group"));
}

TEST(SmbiosTrace, identityOfTheMachineInItsOrder) {
  SharedTable shared(*test::firmwareNamed("server-2.4"));
  shared.machine.setUname("node", "6.1.0", "x86_64");
  const test::CapturedTraces traces;
  test::collect<ComponentIDGroup>();
  std::vector<std::string> records;
  for (const std::string& record : traces.texts()) {
    if (record.find(" SMBIOS/ComponentIDGroup.cpp ") != record.npos) records.push_back(record);
  }
  const std::string origin = "SMBIOS/ComponentIDGroup.cpp getTable() hardware ";
  EXPECT_THAT(
      records,
      ElementsAre("MID entry " + origin + "ComponentIDGroup", "MAX " + origin + "system= Linux",
                  "MAX " + origin + "Type retrieved for linux intel=3",
                  "MAX " + origin + "SerialNumber retrieved for linux intel=SN-2400",
                  "MAX " + origin + "Manufacturer retrieved for linux intel=Example Systems",
                  "MAX " + origin + "Version retrieved for linux intel=3",
                  "MAX " + origin + "Product retrieved for linux intel=Rack 2000",
                  "MID exit " + origin + "ComponentIDGroup"));
}

}  // namespace
}  // namespace quenlor
