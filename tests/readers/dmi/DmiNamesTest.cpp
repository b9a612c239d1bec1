#include "readers/dmi/DmiNames.h"

#include <gtest/gtest.h>

#include <set>

namespace quenlor {
namespace {

TEST(DmiNamesTest, processorFamilies) {
  EXPECT_EQ(dmiProcessorFamily(0xB3, ""), "Xeon");
  EXPECT_EQ(dmiProcessorFamily(0x6B, ""), "Zen");
  EXPECT_EQ(dmiProcessorFamily(0x03, ""), "8086");
  EXPECT_EQ(dmiProcessorFamily(0x101, ""), "ARMv8");
  EXPECT_EQ(dmiProcessorFamily(0x201, ""), "RISC-V RV64");
  EXPECT_EQ(dmiProcessorFamily(0x307, ""), "Core Ultra 9");
  EXPECT_EQ(dmiProcessorFamily(0x21, ""), "PowerPC 601");
  EXPECT_EQ(dmiProcessorFamily(0x25A, ""), "Loongson 2");
}

TEST(DmiNamesTest, familiesThatAreNoneHaveNoName) {
  for (const uint16_t code :
       std::initializer_list<uint16_t>{0, 1, 2, 0x17, 0x59, 0xFE, 0xFF, 0x103, 0x308, 0xFFFF}) {
    EXPECT_EQ(dmiProcessorFamily(code, "Intel"), "") << code;
  }
}

TEST(DmiNamesTest, makerDecidesTheFamilyOfTwoMakers) {
  EXPECT_EQ(dmiProcessorFamily(0xBE, "Intel(R) Corporation"), "Core 2");
  EXPECT_EQ(dmiProcessorFamily(0xBE, "AMD"), "K7");
  EXPECT_EQ(dmiProcessorFamily(0xBE, "Advanced Micro Devices, Inc."), "K7");
  EXPECT_EQ(dmiProcessorFamily(0xBE, "VIA"), "");
}

// A code that stood out of order would not be found by a search that halves.
TEST(DmiNamesTest, everyFamilyAndSocketOfTheListsIsFound) {
  std::set<std::string_view> families;
  for (unsigned code = 0; code <= 0xFFFF; ++code) {
    const auto name = dmiProcessorFamily(static_cast<uint16_t>(code), "");
    if (name.empty()) continue;
    EXPECT_TRUE(families.insert(name).second) << name;
  }
  EXPECT_EQ(families.size(), 240u);
  std::set<std::string_view> sockets;
  for (unsigned code = 0; code <= 0xFF; ++code) {
    const auto name = dmiProcessorUpgrade(static_cast<uint8_t>(code));
    if (name.empty()) continue;
    EXPECT_TRUE(sockets.insert(name).second) << name;
  }
  EXPECT_EQ(sockets.size(), 0x57u - 2);
}

TEST(DmiNamesTest, sockets) {
  EXPECT_EQ(dmiProcessorUpgrade(0x3F), "LGA4677");
  EXPECT_EQ(dmiProcessorUpgrade(0x49), "Socket AM5");
  EXPECT_EQ(dmiProcessorUpgrade(0x03), "Daughter Board");
  EXPECT_EQ(dmiProcessorUpgrade(0x57), "BGA2833");
  for (const uint8_t code : std::initializer_list<uint8_t>{0x00, 0x01, 0x02, 0x58, 0xFF})
    EXPECT_EQ(dmiProcessorUpgrade(code), "");
}

TEST(DmiNamesTest, memory) {
  EXPECT_EQ(dmiMemoryFormFactor(0x03), "SIMM");
  EXPECT_EQ(dmiMemoryFormFactor(0x09), "DIMM");
  EXPECT_EQ(dmiMemoryFormFactor(0x0D), "SODIMM");
  EXPECT_EQ(dmiMemoryFormFactor(0x0F), "FB-DIMM");
  EXPECT_EQ(dmiMemoryFormFactor(0x13), "CSODIMM");
  EXPECT_EQ(dmiMemoryFormFactor(0x14), "");
  EXPECT_EQ(dmiMemoryType(0x0F), "SDRAM");
  EXPECT_EQ(dmiMemoryType(0x12), "DDR");
  EXPECT_EQ(dmiMemoryType(0x18), "DDR3");
  EXPECT_EQ(dmiMemoryType(0x1A), "DDR4");
  EXPECT_EQ(dmiMemoryType(0x1E), "LPDDR4");
  EXPECT_EQ(dmiMemoryType(0x20), "HBM");
  EXPECT_EQ(dmiMemoryType(0x22), "DDR5");
  EXPECT_EQ(dmiMemoryType(0x23), "LPDDR5");
  EXPECT_EQ(dmiMemoryType(0x25), "MRDIMM");
  for (const uint8_t code :
       std::initializer_list<uint8_t>{0x00, 0x01, 0x02, 0x15, 0x16, 0x17, 0x26, 0xFF}) {
    EXPECT_EQ(dmiMemoryType(code), "") << int{code};
  }
}

TEST(DmiNamesTest, memoryTechnology) {
  EXPECT_EQ(dmiMemoryTechnology(3, 0x22), "dram");
  EXPECT_EQ(dmiMemoryTechnology(4, 0x1A), "nvdimm-n");
  EXPECT_EQ(dmiMemoryTechnology(7, 0x1F), "optane");
  EXPECT_EQ(dmiMemoryTechnology(8, 0x25), "dram");
  EXPECT_EQ(dmiMemoryTechnology(3, 0x21), "hbm");
  EXPECT_EQ(dmiMemoryTechnology(2, 0x24), "hbm");
  EXPECT_EQ(dmiMemoryTechnology(1, 0), "other");
  EXPECT_EQ(dmiMemoryTechnology(2, 0x1A), "");
  EXPECT_EQ(dmiMemoryTechnology(9, 0x1A), "");
}

TEST(DmiNamesTest, errorCorrection) {
  EXPECT_EQ(dmiErrorCorrection(1), "other");
  EXPECT_EQ(dmiErrorCorrection(2), "");
  EXPECT_EQ(dmiErrorCorrection(3), "none");
  EXPECT_EQ(dmiErrorCorrection(6), "multi-bit");
  EXPECT_EQ(dmiErrorCorrection(7), "crc");
  EXPECT_EQ(dmiErrorCorrection(8), "");
}

TEST(DmiNamesTest, slots) {
  EXPECT_EQ(dmiSlotType(0x01), "other");
  EXPECT_EQ(dmiSlotType(0x02), "");
  EXPECT_EQ(dmiSlotType(0x06), "pci");
  EXPECT_EQ(dmiSlotType(0x0F), "agp");
  EXPECT_EQ(dmiSlotType(0x17), "m.2 socket 3");
  EXPECT_EQ(dmiSlotType(0x1E), "mxm 3.0 type b");
  EXPECT_EQ(dmiSlotType(0x1F), "pci express gen 2 sff-8639 (u.2)");
  EXPECT_EQ(dmiSlotType(0x28), "ocp nic before 3.0");
  EXPECT_EQ(dmiSlotType(0x29), "");
  EXPECT_EQ(dmiSlotType(0x30), "cxl flexbus 1.0");
  EXPECT_EQ(dmiSlotType(0xA0), "pc-98/c20");
  EXPECT_EQ(dmiSlotType(0xA5), "pci express");
  EXPECT_EQ(dmiSlotType(0xAA), "pci express x16");
  EXPECT_EQ(dmiSlotType(0xB0), "pci express gen 2 x16");
  EXPECT_EQ(dmiSlotType(0xB6), "pci express gen 3 x16");
  EXPECT_EQ(dmiSlotType(0xB7), "");
  EXPECT_EQ(dmiSlotType(0xBD), "pci express gen 4 x16");
  EXPECT_EQ(dmiSlotType(0xC3), "pci express gen 5 x16");
  EXPECT_EQ(dmiSlotType(0xC6), "edsff e3");
  EXPECT_EQ(dmiSlotType(0xC7), "");
  EXPECT_EQ(dmiSlotWidth(0x03), "8 bit");
  EXPECT_EQ(dmiSlotWidth(0x0D), "x16");
  EXPECT_EQ(dmiSlotWidth(0x0E), "x32");
  EXPECT_EQ(dmiSlotUsage(3), "available");
  EXPECT_EQ(dmiSlotUsage(4), "in use");
  EXPECT_EQ(dmiSlotUsage(5), "unavailable");
  EXPECT_EQ(dmiSlotUsage(2), "");
  EXPECT_EQ(dmiSlotLength(3), "short");
  EXPECT_EQ(dmiSlotLength(6), "3.5 inch");
  EXPECT_EQ(dmiSlotLength(7), "");
}

TEST(DmiNamesTest, wordsFitTheirAttributes) {
  for (unsigned code = 0; code <= 0xFF; ++code) {
    const auto byte = static_cast<uint8_t>(code);
    EXPECT_LE(dmiSlotType(byte).size(), 48u) << code;
    EXPECT_LE(dmiSlotWidth(byte).size(), 8u) << code;
    EXPECT_LE(dmiSlotUsage(byte).size(), 12u) << code;
    EXPECT_LE(dmiSlotLength(byte).size(), 8u) << code;
    EXPECT_LE(dmiProcessorUpgrade(byte).size(), 32u) << code;
    EXPECT_LE(dmiMemoryFormFactor(byte).size(), 16u) << code;
  }
}

TEST(DmiNamesTest, chassis) {
  EXPECT_EQ(dmiChassis(0x03), "desktop");
  EXPECT_EQ(dmiChassis(0x0D), "desktop");
  for (const uint8_t code : std::initializer_list<uint8_t>{0x08, 0x09, 0x0A, 0x0E})
    EXPECT_EQ(dmiChassis(code), "laptop");
  EXPECT_EQ(dmiChassis(0x0B), "handset");
  EXPECT_EQ(dmiChassis(0x11), "server");
  EXPECT_EQ(dmiChassis(0x17), "server");
  EXPECT_EQ(dmiChassis(0x1C), "blade");
  EXPECT_EQ(dmiChassis(0x1E), "tablet");
  EXPECT_EQ(dmiChassis(0x1F), "convertible");
  EXPECT_EQ(dmiChassis(0x20), "convertible");
  EXPECT_EQ(dmiChassis(0x22), "embedded");
  EXPECT_EQ(dmiChassis(0x24), "desktop");
  for (const uint8_t code :
       std::initializer_list<uint8_t>{0x00, 0x01, 0x02, 0x0C, 0x12, 0x25, 0xFF}) {
    EXPECT_EQ(dmiChassis(code), "") << int{code};
  }
}

TEST(DmiNamesTest, powerAndManagement) {
  EXPECT_EQ(dmiPowerStatus(3), "ok");
  EXPECT_EQ(dmiPowerStatus(5), "critical");
  EXPECT_EQ(dmiPowerStatus(1), "other");
  EXPECT_EQ(dmiPowerStatus(2), "");
  EXPECT_EQ(dmiBmcInterface(1), "kcs");
  EXPECT_EQ(dmiBmcInterface(4), "ssif");
  EXPECT_EQ(dmiBmcInterface(5), "");
}

}  // namespace
}  // namespace quenlor
