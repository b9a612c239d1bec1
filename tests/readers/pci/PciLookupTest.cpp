#include "readers/pci/PciLookup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

const PciVendor& vendorRow(uint16_t vendor) {
  return *std::find_if(std::begin(PciVenTable), std::end(PciVenTable) - 1,
                       [=](const PciVendor& row) { return row.vendor == vendor; });
}

const PciDevice& deviceRow(uint16_t vendor, uint16_t device) {
  return *std::find_if(
      std::begin(PciDevTable), std::end(PciDevTable) - 1,
      [=](const PciDevice& row) { return row.vendor == vendor && row.device == device; });
}

std::string suseName(const std::string& line, size_t size = 512) {
  std::string buffer(size, 'x');
  processSuSEline(line.c_str(), buffer.data(), buffer.size());
  return buffer.c_str();
}

TEST(PciTables, haveTheStatedNumbersOfRows) {
  EXPECT_EQ(std::size(PciVenTable), 1592U);
  EXPECT_EQ(std::size(PciDevTable), 3712U);
  EXPECT_EQ(kPciVendorsSearched, 1591U);
  EXPECT_EQ(kPciDevicesSearched, 3710U);
  for (size_t i = 0; i < kPciVendorsSearched; ++i) EXPECT_STRNE(PciVenTable[i].longName, "") << i;
  for (size_t i = 0; i < kPciDevicesSearched; ++i) {
    const PciDevice& row = PciDevTable[i];
    EXPECT_TRUE(row.chip[0] != '\0' || row.description[0] != '\0') << i;
  }
  EXPECT_EQ(PciVenTable[1591].longName, nullptr);
  EXPECT_EQ(PciDevTable[3710].chip, nullptr);
  EXPECT_EQ(PciDevTable[3711].chip, nullptr);
}

TEST(PciTables, holdTheTellingVendors) {
  EXPECT_STREQ(vendorRow(0x0000).shortName, "Gammagraphx");
  EXPECT_STREQ(vendorRow(0x0000).longName, "Gammagraphx, Inc.");
  EXPECT_STREQ(vendorRow(0x0033).shortName, "");
  EXPECT_STREQ(vendorRow(0x0033).longName, "Paradyne Corp.");
  EXPECT_STREQ(vendorRow(0x003D).shortName, "Lockheed Martin");
  EXPECT_STREQ(vendorRow(0x003D).longName, "Lockheed Martin Corp");
  EXPECT_STREQ(vendorRow(0xFFFE).shortName, "VMware");
  EXPECT_STREQ(vendorRow(0xFFFE).longName, "VMware Inc.");
  const PciVendor& last = PciVenTable[kPciVendorsSearched - 1];
  EXPECT_EQ(last.vendor, 0xFFFF);
  EXPECT_STREQ(last.shortName, "BAD!");
  EXPECT_STREQ(last.longName, "ILLEGITIMATE VENDOR ID");
}

TEST(PciTables, holdTheTellingDevices) {
  EXPECT_STREQ(deviceRow(0x0675, 0x1700).chip, "IS64PH");
  EXPECT_STREQ(deviceRow(0x0675, 0x1700).description, "ISDN Adapter");
  EXPECT_STREQ(deviceRow(0x003D, 0x00D1).chip, "");
  EXPECT_STREQ(deviceRow(0x003D, 0x00D1).description, "i740 PCI");
  const PciDevice& last = PciDevTable[kPciDevicesSearched - 1];
  EXPECT_EQ(last.vendor, 0xFFFF);
  EXPECT_EQ(last.device, 0xFFFF);
  EXPECT_STREQ(last.chip, "NO-DEVICE");
  EXPECT_STREQ(last.description, "No device on PCI bus");
}

TEST(PciTables, holdEachIdOnceAndAVendorForEachDevice) {
  std::set<uint16_t> vendors;
  std::set<std::pair<uint16_t, uint16_t>> devices;
  for (size_t i = 0; i < kPciVendorsSearched; ++i) vendors.insert(PciVenTable[i].vendor);
  for (size_t i = 0; i < kPciDevicesSearched; ++i) {
    devices.emplace(PciDevTable[i].vendor, PciDevTable[i].device);
    EXPECT_TRUE(vendors.contains(PciDevTable[i].vendor)) << PciDevTable[i].vendor;
  }
  EXPECT_EQ(vendors.size(), kPciVendorsSearched);
  EXPECT_EQ(devices.size(), kPciDevicesSearched);
}

TEST(PciTables, noNameOfTheTablesIsCut) {
  for (size_t i = 0; i < kPciDevicesSearched; ++i) {
    const std::string name = pciName(PciDevTable[i].vendor, PciDevTable[i].device, "");
    EXPECT_LT(name.size(), 179U) << name;
    EXPECT_FALSE(name.empty());
  }
}

TEST(LookupPCI, namesVendorChipAndDescription) {
  EXPECT_EQ(pciName(0x8086, 0x7190, "Host bridge"),
            "Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)");
  EXPECT_EQ(pciName(0x8086, 0x7113, ""), "Intel 82371AB/EB/MB (PIIX4 ACPI)");
  EXPECT_EQ(pciName(0x10EC, 0x8139, ""), "Realtek RTL-8100/8101L/8139 (PCI Fast Ethernet Adapter)");
}

TEST(LookupPCI, chipOrDescriptionMayBeMissing) {
  EXPECT_EQ(pciName(0x1069, 0x0010, ""), "Mylex DAC960PG");
  EXPECT_EQ(pciName(0x0E11, 0xB060, "RAID"), "Compaq Smart Array 5300 Controller");
}

TEST(LookupPCI, vendorWithoutShortNameIsCalledByItsLongOne) {
  EXPECT_EQ(pciName(0x0033, 0x0001, ""), "Paradyne Corp. device");
}

TEST(LookupPCI, unknownDeviceIsVendorAndClass) {
  EXPECT_EQ(pciName(0x8086, 0xFFFF, "Host bridge"), "Intel (Host bridge)");
  EXPECT_EQ(pciName(0x8086, 0xFFFF, ""), "Intel device");
}

TEST(LookupPCI, unknownVendorIsTheClassAlone) {
  EXPECT_EQ(pciName(0x1AE0, 0x0042, "Host bridge"), "(Host bridge)");
  EXPECT_EQ(pciName(0x1AE0, 0x0042, ""), "");
}

TEST(LookupPCI, idsBeyond16BitsAreNotThoseOfTheirLowHalf) {
  EXPECT_EQ(pciName(0x18086, 0x7190, ""), "");
  EXPECT_EQ(pciName(0x8086, 0x17190, ""), "Intel device");
  EXPECT_EQ(pciName(-1, -1, ""), "");
}

TEST(LookupPCI, noClassTextIsAnEmptyOne) {
  const std::unique_ptr<char, decltype(&std::free)> name(lookupPCI(0x8086, 0xFFFF, nullptr),
                                                         &std::free);
  EXPECT_STREQ(name.get(), "Intel device");
}

TEST(LookupPCI, resultIsA180ByteBuffer) {
  const std::unique_ptr<char, decltype(&std::free)> name(
      lookupPCI(0x1AE0, 0x0042, std::string(500, 'c').c_str()), &std::free);
  EXPECT_EQ(std::string(name.get()), "(" + std::string(178, 'c'));
  name.get()[kPciNameSize - 1] = '\0';  // the last byte belongs to it
}

TEST(LookupPCI, resultOf179CharactersIsNotCut) {
  EXPECT_EQ(pciName(0x1AE0, 1, std::string(177, 'c')), "(" + std::string(177, 'c') + ")");
}

TEST(LookupPCI, cutDoesNotSplitACharacter) {
  // "(" and 177 letters leave one byte: a character of two bytes does not fit.
  EXPECT_EQ(pciName(0x1AE0, 1, std::string(177, 'c') + "é"), "(" + std::string(177, 'c'));
  EXPECT_EQ(pciName(0x1AE0, 1, std::string(176, 'c') + "é)"), "(" + std::string(176, 'c') + "é");
  EXPECT_EQ(pciName(0x1AE0, 1, std::string(175, 'c') + "\U0001F5A7"), "(" + std::string(175, 'c'));
}

TEST(LookupPCI, continuationBytesWithoutACharacterAreCutAnywhere) {
  EXPECT_EQ(pciName(0x1AE0, 1, std::string(300, '\x80')), "(" + std::string(178, '\x80'));
}

TEST(LookupPCI, tracesIdsAndResult) {
  const test::CapturedTraces traces;
  pciName(0x8086, 0x7113, "");
  EXPECT_EQ(traces.count("hardware looking up vendor 0x8086 device 0x7113"), 1);
  EXPECT_EQ(traces.count("hardware Return: Intel 82371AB/EB/MB (PIIX4 ACPI)"), 1);
}

TEST(ReadPciId, readsHexadecimalDigits) {
  const char* text = "8086:7190";
  const char* end = nullptr;
  EXPECT_EQ(readPciId(text, &end), 0x8086);
  EXPECT_EQ(end, text + 4);
  EXPECT_EQ(readPciId("fffe."), 0xFFFE);
}

TEST(ReadPciId, noDigitIsNoId) {
  EXPECT_EQ(readPciId(""), std::nullopt);
  EXPECT_EQ(readPciId(". Device id=7190."), std::nullopt);
}

TEST(ReadPciId, hugeNumbersAreIdsOfNoTable) {
  EXPECT_GT(readPciId("18086"), 0xFFFF);
  EXPECT_GT(readPciId("ffffffffffffffffffffffffffffffff"), 0xFFFF);
  EXPECT_GT(readPciId("-1"), 0xFFFF);
}

TEST(ProcessSuSEline, namesRawIdsByTheTables) {
  EXPECT_EQ(suseName("    Host bridge: PCI device 8086:7190 (Intel Corp.) (rev 3)."),
            "Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)");
  EXPECT_EQ(suseName("Class 0c04: PCI device 9005:00cf (Adaptec) (rev 1)."),
            pciName(0x9005, 0x00CF, ""));
}

TEST(ProcessSuSEline, lineWithoutIdsEmptiesTheBuffer) {
  for (const char* line : {"", "Host bridge: Intel", "PCI device ", "PCI device x:y",
                           "PCI device 8086", "PCI device 8086 7190", "PCI device 8086:",
                           "PCI device 8086:z", "PCI device :7190", "pci device 8086:7190"}) {
    EXPECT_EQ(suseName(line), "") << line;
  }
}

TEST(ProcessSuSEline, neverWritesBeyondTheBuffer) {
  EXPECT_EQ(suseName("PCI device 8086:7190", 6), "Intel");
  EXPECT_EQ(suseName("PCI device 8086:7190", 1), "");
  char untouched = 'x';
  processSuSEline("PCI device 8086:7190", &untouched, 0);
  EXPECT_EQ(untouched, 'x');
}

TEST(ProcessSuSEline, clearsTheWholeBuffer) {
  char buffer[64];
  std::memset(buffer, 'x', sizeof buffer);
  processSuSEline("nothing", buffer, sizeof buffer);
  EXPECT_TRUE(std::all_of(std::begin(buffer), std::end(buffer), [](char c) { return c == '\0'; }));
}

}  // namespace
}  // namespace quenlor
