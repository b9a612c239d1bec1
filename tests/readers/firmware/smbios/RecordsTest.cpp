// Fields and derived values of the record classes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Firmware.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

using test::Structure;
using test::Version;

constexpr int revisionWord(Version version) { return version.major << 8 | version.minor; }

// A record of the class, read from one structure at an odd offset; checks where it ends.
template <class Record, class Described>
std::unique_ptr<Record> recordOf(const Described& described, Version version) {
  constexpr int kOffset = 7;
  const std::string bytes = test::structureOf(described, version).encode(0x1234);
  TableBytes buffer(kOffset + static_cast<int>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), buffer.data() + kOffset);
  auto record = std::make_unique<Record>(revisionWord(version));
  EXPECT_EQ(record->readBlock(buffer, kOffset), buffer.size());
  EXPECT_TRUE(record->hasData());
  EXPECT_EQ(record->getRevision(), revisionWord(version));
  return record;
}

constexpr Version k20 = {2, 0};
constexpr Version k22 = {2, 2};
constexpr Version k23 = {2, 3};
constexpr Version k24 = {2, 4};
constexpr Version k28 = {2, 8};
constexpr Version k30 = {3, 0};
constexpr Version k32 = {3, 2};
constexpr Version k33 = {3, 3};

// --- type 0 ---

std::string releaseDate(const std::string& text) {
  const auto bios = recordOf<SMBIOSTable0Data>(test::Bios{.vendor = "V", .date = text}, k24);
  char* date = bios->getReleaseDateAsYYYYMMDD();
  const std::string result = date == nullptr ? "null" : date;
  std::free(date);
  EXPECT_EQ(bios->releaseDate().value_or("null"), result);
  return result;
}

TEST(SMBIOSTable0Data, readsItsFields) {
  const auto bios = recordOf<SMBIOSTable0Data>(Structure(0)
                                                   .text("Vendor")
                                                   .text("1.2")
                                                   .word(0xF123)
                                                   .text("01/15/05")
                                                   .byte(7)
                                                   .dword(0x01234567)
                                                   .dword(0x89ABCDEF)
                                                   .byte(0x81),
                                               k20);
  EXPECT_STREQ(bios->getVendor(), "Vendor");
  EXPECT_STREQ(bios->getVersion(), "1.2");
  EXPECT_EQ(bios->getStartAddrSeg(), 0xF123);
  EXPECT_STREQ(bios->getReleaseDate(), "01/15/05");
  EXPECT_EQ(bios->getROMSizeKB(), 512);
  EXPECT_EQ(bios->getCharacteristicsLow(), 0x01234567u);
  EXPECT_EQ(bios->getCharacteristicsHigh(), 0x89ABCDEFu);
  EXPECT_EQ(bios->getExtensionByte1(), 0x81);
}

TEST(SMBIOSTable0Data, romSizeRunsFrom64KB) {
  EXPECT_EQ(recordOf<SMBIOSTable0Data>(test::Bios{.romSize = 0}, k24)->getROMSizeKB(), 64);
  EXPECT_EQ(recordOf<SMBIOSTable0Data>(test::Bios{.romSize = 255}, k24)->getROMSizeKB(), 16384);
}

TEST(SMBIOSTable0Data, releaseDatesOfTenCharacters) {
  EXPECT_EQ(releaseDate("12/31/1999"), "1999-12-31");
  EXPECT_EQ(releaseDate("04-01-2014"), "2014-04-01");
  EXPECT_EQ(releaseDate("04/01/2014 rev B"), "2014-04-01");
}

TEST(SMBIOSTable0Data, twoDigitYearsFromTenOnAreOfTheTwentiethCentury) {
  EXPECT_EQ(releaseDate("01/15/05"), "2005-01-15");
  EXPECT_EQ(releaseDate("01/15/00"), "2000-01-15");
  EXPECT_EQ(releaseDate("01/15/15"), "1915-01-15");
  EXPECT_EQ(releaseDate("01/15/99"), "1999-01-15");
}

TEST(SMBIOSTable0Data, dottedReleaseDateHasTheYearFirst) {
  EXPECT_EQ(releaseDate("97.06.3."), "1997-06-03");
}

TEST(SMBIOSTable0Data, onlyPositionsCountInAReleaseDate) {
  EXPECT_EQ(releaseDate("1/1/2001"), "2001-1/-/2");
  EXPECT_EQ(releaseDate("10.06.3."), "1910-06-03");
}

TEST(SMBIOSTable0Data, releaseDatesOfOtherLengthsStay) {
  EXPECT_EQ(releaseDate("Unknown"), "Unknown");
  EXPECT_EQ(releaseDate("Unknown date"), "Unknown");
  EXPECT_EQ(releaseDate("abcdefghijklmnopqrst"), "abcdefghijklmno");
  EXPECT_EQ(releaseDate(" 01/01/2001"), "");
  EXPECT_EQ(releaseDate(""), "null");
}

TEST(SMBIOSTable0Data, releaseDateAsTime) {
  ASSERT_EQ(setenv("TZ", "UTC0", 1), 0);
  tzset();
  const auto time = [](const std::string& text) {
    return recordOf<SMBIOSTable0Data>(test::Bios{.vendor = "V", .date = text}, k24)
        ->getReleaseDateAsTimeT();
  };
  EXPECT_EQ(time("01/02/1970"), 86400);
  EXPECT_EQ(time("04/01/2014"), 1396310400);
  EXPECT_EQ(time(""), 0);
  time("Unknown");  // of any value
  time("x");
}

TEST(SMBIOSTable0Data, eachCharacteristicIsItsOwnBit) {
  using BitTest = bool (SMBIOSTable0Data::*)() const;
  constexpr BitTest kLow[] = {
      &SMBIOSTable0Data::isISASupported,    &SMBIOSTable0Data::isMCASupported,
      &SMBIOSTable0Data::isEISASupported,   &SMBIOSTable0Data::isPCISupported,
      &SMBIOSTable0Data::isPCMCIASupported, &SMBIOSTable0Data::isPnPSupported,
      &SMBIOSTable0Data::isAPMSupported,    &SMBIOSTable0Data::isFlashableBIOS,
      &SMBIOSTable0Data::isBIOSShadowing,   &SMBIOSTable0Data::isVLVESASupported,
      &SMBIOSTable0Data::isESCDSupported,   &SMBIOSTable0Data::isCDBootSupported,
      &SMBIOSTable0Data::isSelectableBoot,  &SMBIOSTable0Data::isBIOSROMSocketed,
      &SMBIOSTable0Data::isPCCardBootable,  &SMBIOSTable0Data::isEnhancedDiskDrive};
  constexpr BitTest kExtension[] = {
      &SMBIOSTable0Data::isACPISupported,      &SMBIOSTable0Data::isUSBLegacySupported,
      &SMBIOSTable0Data::isAGPSupported,       &SMBIOSTable0Data::isI2OBootSupported,
      &SMBIOSTable0Data::isLS120BootSupported, &SMBIOSTable0Data::isATAPIZipBootSupported,
      &SMBIOSTable0Data::is1394BootSupported,  &SMBIOSTable0Data::isSmartBatteryBIOS};
  for (unsigned bit = 0; bit < 40; ++bit) {
    test::Bios bios;
    bios.characteristics = bit < 32 ? 1u << bit : 0;
    bios.extension1 = bit < 32 ? uint8_t{0} : static_cast<uint8_t>(1u << (bit - 32));
    const auto record = recordOf<SMBIOSTable0Data>(bios, k24);
    for (unsigned i = 0; i < 16; ++i) EXPECT_EQ((*record.*kLow[i])(), bit == i + 4) << bit;
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ((*record.*kExtension[i])(), bit == i + 32) << bit;
  }
}

// --- types 1 to 3 ---

test::System systemWithUuid() {
  test::System system{"Maker", "Product", "V1", "S1", {}, "", ""};
  for (uint8_t i = 0; i < 16; ++i) system.uuid[i] = static_cast<uint8_t>(0xA0 + i);
  return system;
}

TEST(SMBIOSTable1Data, readsItsFields) {
  const auto system = recordOf<SMBIOSTable1Data>(systemWithUuid(), k24);
  EXPECT_STREQ(system->getManufacturer(), "Maker");
  EXPECT_STREQ(system->getProduct(), "Product");
  EXPECT_STREQ(system->getVersion(), "V1");
  EXPECT_STREQ(system->getSerialNumber(), "S1");
  EXPECT_EQ(system->getWakeUpType(), 6);
}

TEST(SMBIOSTable1Data, uuidIsInStoredOrderWithoutSwapping) {
  EXPECT_STREQ(recordOf<SMBIOSTable1Data>(systemWithUuid(), k28)->getUUIDAsString(),
               "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF");
}

TEST(SMBIOSTable1Data, uuidOfZerosIsNull) {
  EXPECT_EQ(recordOf<SMBIOSTable1Data>(test::System{}, k24)->getUUIDAsString(), nullptr);
}

TEST(SMBIOSTable1Data, uuidTextsShareOneBuffer) {
  const auto first = recordOf<SMBIOSTable1Data>(systemWithUuid(), k24);
  test::System other;
  other.uuid.fill(1);
  const char* text = first->getUUIDAsString();
  EXPECT_EQ(recordOf<SMBIOSTable1Data>(other, k24)->getUUIDAsString(), text);
  EXPECT_STREQ(text, "01010101010101010101010101010101");
}

TEST(SMBIOSTable1Data, tablesWithMinorVersionZeroHaveNoUuid) {
  EXPECT_EQ(recordOf<SMBIOSTable1Data>(systemWithUuid(), k30)->getUUIDAsString(), nullptr);
  EXPECT_EQ(recordOf<SMBIOSTable1Data>(systemWithUuid(), k30)->getWakeUpType(), 0);
  EXPECT_EQ(recordOf<SMBIOSTable1Data>(systemWithUuid(), k20)->getUUIDAsString(), nullptr);
  EXPECT_NE(recordOf<SMBIOSTable1Data>(systemWithUuid(), {2, 1})->getUUIDAsString(), nullptr);
}

// The revision word of a table from a buffer is its BCD byte: major version 0.
TEST(SMBIOSTable1Data, tableFromABufferHasNoUuid) {
  const std::string bytes = test::FirmwareTable(k24).add(systemWithUuid()).bytes();
  SMBIOSTable table(reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()), 0x24, 1);
  table.parseData();
  EXPECT_EQ(table.getTable1()->getUUIDAsString(), nullptr);
}

TEST(SMBIOSTable1Data, shortStructureYieldsBytesOfWhatFollows) {
  const auto system = recordOf<SMBIOSTable1Data>(
      Structure(1).text("M").text("P").byte(0).byte(0).strings({std::string(20, 'x')}), k24);
  EXPECT_STREQ(system->getUUIDAsString(), "4D005000787878787878787878787878");
}

TEST(SMBIOSTable2Data, readsItsFields) {
  const auto board = recordOf<SMBIOSTable2Data>(test::Baseboard{"M", "P", "V", "S"}, k24);
  EXPECT_STREQ(board->getManufacturer(), "M");
  EXPECT_STREQ(board->getProduct(), "P");
  EXPECT_STREQ(board->getVersion(), "V");
  EXPECT_STREQ(board->getSerialNumber(), "S");
}

TEST(SMBIOSTable3Data, typeKeepsTheLockBit) {
  const auto enclosure = recordOf<SMBIOSTable3Data>(test::Enclosure{"M", 0x83, "V", "S", "A"}, k24);
  EXPECT_STREQ(enclosure->getManufacturer(), "M");
  EXPECT_EQ(enclosure->getType(), 0x83);
  EXPECT_STREQ(enclosure->getVersion(), "V");
  EXPECT_STREQ(enclosure->getSerialNumber(), "S");
  EXPECT_STREQ(enclosure->getAssetTag(), "A");
}

// --- type 4 ---

test::Processor processor() {
  return {.socket = "CPU0",
          .type = 3,
          .family = 0xB3,
          .manufacturer = "Maker",
          .eax = 0x000106A5,
          .edx = 0xBFEBFBFF,
          .version = "Model X",
          .voltage = 0x8C,
          .externalClock = 133,
          .maxSpeed = 4000,
          .currentSpeed = 2933,
          .status = 0x41,
          .upgrade = 0x19,
          .serial = "CPU serial",
          .assetTag = "CPU asset",
          .partNumber = "CPU part"};
}

TEST(SMBIOSTable4Data, readsItsFields) {
  const auto cpu = recordOf<SMBIOSTable4Data>(processor(), k24);
  EXPECT_STREQ(cpu->getSocket(), "CPU0");
  EXPECT_EQ(cpu->getType(), 3);
  EXPECT_EQ(cpu->getFamily(), 0xB3);
  EXPECT_STREQ(cpu->getManufacturer(), "Maker");
  EXPECT_EQ(cpu->getEAX(), 0x000106A5u);
  EXPECT_EQ(cpu->getEDX(), 0xBFEBFBFFu);
  EXPECT_STREQ(cpu->getVersion(), "Model X");
  EXPECT_EQ(cpu->getVoltage(), 0x8C);
  EXPECT_EQ(cpu->getExternalClock(), 133);
  EXPECT_EQ(cpu->getMaxSpeed(), 4000);
  EXPECT_EQ(cpu->getCurrentSpeed(), 2933);
  EXPECT_EQ(cpu->getStatus(), 0x41);
  EXPECT_TRUE(cpu->isPopulated());
  EXPECT_EQ(cpu->getUpgrade(), 0x19);
  EXPECT_STREQ(cpu->getSerialNumber(), "CPU serial");
  EXPECT_STREQ(cpu->getAssetTag(), "CPU asset");
}

TEST(SMBIOSTable4Data, cpuidPartsIgnoreTheExtendedBits) {
  const auto cpu = recordOf<SMBIOSTable4Data>(processor(), k24);
  EXPECT_EQ(cpu->getCPUIDFamily(), 6);
  EXPECT_EQ(cpu->getCPUIDModel(), 0xA);
  EXPECT_EQ(cpu->getCPUIDStepping(), 5);
}

TEST(SMBIOSTable4Data, serialNumberAndAssetTagNeedAMinorVersionAboveTwo) {
  for (const Version version : {k23, k24, k28, k33}) {
    EXPECT_STREQ(recordOf<SMBIOSTable4Data>(processor(), version)->getSerialNumber(), "CPU serial");
  }
  for (const Version version : {k20, k22, k30, Version{3, 1}, k32, Version{1, 9}}) {
    EXPECT_EQ(recordOf<SMBIOSTable4Data>(processor(), version)->getSerialNumber(), nullptr);
    EXPECT_EQ(recordOf<SMBIOSTable4Data>(processor(), version)->getAssetTag(), nullptr);
  }
}

TEST(SMBIOSTable4Data, voltageIsTracedWithOneDecimal) {
  const test::CapturedTraces traces;
  recordOf<SMBIOSTable4Data>(test::Processor{.voltage = 0x8C}, k24)->getVoltageInVolts();
  EXPECT_TRUE(traces.contains("../../../src/invscan/SMBIOS/SMBIOSTable4Data.cpp:"));
  EXPECT_EQ(traces.count(" getVoltageInVolts() hardware Voltage In Volts: 1.2"), 1);
}

TEST(SMBIOSTable4Data, voltages) {
  const auto volts = [](uint8_t byte) {
    return recordOf<SMBIOSTable4Data>(test::Processor{.voltage = byte}, k24)->getVoltageInVolts();
  };
  EXPECT_DOUBLE_EQ(volts(0x8C), 1.2);
  EXPECT_DOUBLE_EQ(volts(0xFF), 12.7);
  EXPECT_DOUBLE_EQ(volts(0x80), 0.0);
  EXPECT_DOUBLE_EQ(volts(0x01), 5.0);
  EXPECT_DOUBLE_EQ(volts(0x02), 3.3);
  EXPECT_DOUBLE_EQ(volts(0x04), 2.9);
  EXPECT_DOUBLE_EQ(volts(0x07), 5.0);
  EXPECT_DOUBLE_EQ(volts(0x06), 3.3);
  EXPECT_DOUBLE_EQ(volts(0x00), 0.0);
}

TEST(SMBIOSTable4Data, populatedIsBitSix) {
  EXPECT_FALSE(recordOf<SMBIOSTable4Data>(test::Processor{.status = 0xBF}, k24)->isPopulated());
  EXPECT_TRUE(recordOf<SMBIOSTable4Data>(test::Processor{.status = 0x40}, k24)->isPopulated());
}

// --- types 5, 6, 16, 17 ---

TEST(SMBIOSTable5Data, readsItsFields) {
  const auto controller = recordOf<SMBIOSTable5Data>(
      Structure(5).byte(1).byte(2).byte(3).byte(4).byte(9).word(0x1234).word(0x5678).byte(5).byte(
          8),
      k20);
  EXPECT_EQ(controller->getErrorDetectingMethod(), 1);
  EXPECT_EQ(controller->getErrorCorrectingCapability(), 2);
  EXPECT_EQ(controller->getSupportedInterleave(), 3);
  EXPECT_EQ(controller->getCurrentInterleave(), 4);
  EXPECT_EQ(controller->getMaximumMemoryModuleSize(), 9);
  EXPECT_EQ(controller->getSupportedSpeeds(), 0x1234);
  EXPECT_EQ(controller->getSupportedMemoryTypes(), 0x5678);
  EXPECT_EQ(controller->getMemoryModuleVoltage(), 5);
  EXPECT_EQ(controller->getNumAssocMemorySlots(), 8);
}

int64_t installedMB(uint8_t size) {
  return recordOf<SMBIOSTable6Data>(test::MemoryModule{"J1", 0, size}, k20)->getInstalledSizeMB();
}

TEST(SMBIOSTable6Data, readsItsFields) {
  const auto module = recordOf<SMBIOSTable6Data>(
      Structure(6).text("J1").byte(0x12).byte(60).word(0x0540).byte(8).byte(7).byte(1), k20);
  EXPECT_STREQ(module->getSocketDesignation(), "J1");
  EXPECT_EQ(module->getBankConnections(), 0x12);
  EXPECT_EQ(module->getCurrentSpeed(), 60);
  EXPECT_EQ(module->getMemoryType(), 0x0540);
  EXPECT_EQ(module->getInstalledSize(), 8);
  EXPECT_EQ(module->getInstalledSizeMB(), 256);
  EXPECT_EQ(module->getEnabledSize(), 7);
  EXPECT_EQ(module->getEnabledSizeMB(), 128);
  EXPECT_EQ(module->getErrorStatus(), 1);
}

TEST(SMBIOSTable6Data, sizesArePowersOfTwoWithoutTheBankBit) {
  EXPECT_EQ(installedMB(0x87), 128);
  EXPECT_EQ(installedMB(0x00), 1);
  EXPECT_EQ(installedMB(31), int64_t{1} << 31);
}

TEST(SMBIOSTable6Data, reservedAndImpossibleSizesAreUnknown) {
  for (const uint8_t size :
       std::initializer_list<uint8_t>{0x7D, 0x7E, 0x7F, 0xFD, 0xFF, 32, 64, 124}) {
    EXPECT_EQ(installedMB(size), -1) << unsigned{size};
  }
}

TEST(SMBIOSTable16Data, readsItsFields) {
  const auto array = recordOf<SMBIOSTable16Data>(
      Structure(16).byte(3).byte(4).byte(5).dword(0x00400000).word(0xFFFE).word(4), k22);
  EXPECT_EQ(array->getLocation(), 3);
  EXPECT_EQ(array->getUse(), 4);
  EXPECT_EQ(array->getErrorCorrection(), 5);
  EXPECT_EQ(array->getMaxCapacity(), 0x00400000u);
  EXPECT_EQ(array->getErrorHandle(), 0xFFFE);
  EXPECT_EQ(array->getNumMemDevices(), 4);
}

test::MemoryDevice memoryDevice() {
  return {.size = 1024,
          .formFactor = 9,
          .locator = "DIMM0",
          .bank = "BANK 0",
          .type = 18,
          .detail = 0x80,
          .speed = 667,
          .manufacturer = "Maker",
          .serial = "M1",
          .assetTag = "A1",
          .partNumber = "P1"};
}

TEST(SMBIOSTable17Data, readsItsFields) {
  const auto device = recordOf<SMBIOSTable17Data>(memoryDevice(), k24);
  EXPECT_EQ(device->getMemoryArrayHandle(), 0xFFFF);
  EXPECT_EQ(device->getMemoryErrorHandle(), 0xFFFE);
  EXPECT_EQ(device->getTotalWidth(), 72);
  EXPECT_EQ(device->getDataWidth(), 64);
  EXPECT_EQ(device->getSize(), 1024);
  EXPECT_EQ(device->getFormFactor(), 9);
  EXPECT_EQ(device->getDeviceSet(), 0);
  EXPECT_STREQ(device->getDeviceLocator(), "DIMM0");
  EXPECT_STREQ(device->getBankLocator(), "BANK 0");
  EXPECT_EQ(device->getMemoryType(), 18);
  EXPECT_EQ(device->getTypeDetail(), 0x80);
  EXPECT_EQ(device->getSpeed(), 667);
  EXPECT_STREQ(device->getManufacturer(), "Maker");
  EXPECT_STREQ(device->getSerialNumber(), "M1");
  EXPECT_STREQ(device->getAssetTag(), "A1");
  EXPECT_STREQ(device->getPartNumber(), "P1");
}

TEST(SMBIOSTable17Data, makersFieldsNeedAMinorVersionAboveTwo) {
  for (const Version version : {k23, k28, k33}) {
    EXPECT_STREQ(recordOf<SMBIOSTable17Data>(memoryDevice(), version)->getPartNumber(), "P1");
  }
  for (const Version version : {Version{2, 1}, k22, k30, k32}) {
    const auto device = recordOf<SMBIOSTable17Data>(memoryDevice(), version);
    EXPECT_EQ(device->getSpeed(), 0);
    EXPECT_EQ(device->getManufacturer(), nullptr);
    EXPECT_EQ(device->getSerialNumber(), nullptr);
  }
}

TEST(SMBIOSTable17Data, sizes) {
  const auto sizeKB = [](uint16_t size) {
    return recordOf<SMBIOSTable17Data>(test::MemoryDevice{.size = size}, k24)->getSizeKB();
  };
  EXPECT_EQ(sizeKB(0x8400), 1024u);
  EXPECT_EQ(sizeKB(0x0400), 1048576u);
  EXPECT_EQ(sizeKB(0xFFFF), 0u);
  EXPECT_EQ(sizeKB(0), 0u);
  EXPECT_EQ(sizeKB(0x8000), 0u);
  EXPECT_EQ(sizeKB(0x7FFF), 32767u * 1024);
}

// --- the others ---

TEST(SMBIOSTable8Data, readsItsFields) {
  const auto port = recordOf<SMBIOSTable8Data>(test::Connector{"J5", 1, "COM A", 8, 9}, k24);
  EXPECT_STREQ(port->getInternalDesignator(), "J5");
  EXPECT_EQ(port->getInternalConnectorType(), 1);
  EXPECT_STREQ(port->getExternalDesignator(), "COM A");
  EXPECT_EQ(port->getExternalConnectorType(), 8);
  EXPECT_EQ(port->getPortType(), 9);
}

TEST(SMBIOSTable9Data, secondCharacteristicsNeedAMinorVersion) {
  const Structure slot =
      Structure(9).text("PCI 1").byte(6).byte(5).byte(3).byte(4).word(0x0102).byte(0x0C).byte(3);
  const auto record = recordOf<SMBIOSTable9Data>(slot, k24);
  EXPECT_STREQ(record->getSlotDesignation(), "PCI 1");
  EXPECT_EQ(record->getSlotType(), 6);
  EXPECT_EQ(record->getSlotDataBusWidth(), 5);
  EXPECT_EQ(record->getCurrentUsage(), 3);
  EXPECT_EQ(record->getSlotLength(), 4);
  EXPECT_EQ(record->getSlotID(), 0x0102);
  EXPECT_EQ(record->getSlotCharacteristics1(), 0x0C);
  EXPECT_EQ(record->getSlotCharacteristics2(), 3);
  EXPECT_EQ(recordOf<SMBIOSTable9Data>(slot, {2, 1})->getSlotCharacteristics2(), 3);
  EXPECT_EQ(recordOf<SMBIOSTable9Data>(slot, k20)->getSlotCharacteristics2(), 0);
  EXPECT_EQ(recordOf<SMBIOSTable9Data>(slot, k30)->getSlotCharacteristics2(), 0);
}

TEST(SMBIOSTable10Data, onlyTheFirstDeviceIsRead) {
  const auto device = recordOf<SMBIOSTable10Data>(
      Structure(10).byte(0x83).text("Video").byte(0x05).text("Network"), k24);
  EXPECT_EQ(device->getDeviceType(), 0x83);
  EXPECT_EQ(device->getDeviceTypeActual(), 3);
  EXPECT_TRUE(device->isEnabled());
  EXPECT_STREQ(device->getDescription(), "Video");
}

TEST(SMBIOSTable11Data, stringsByNumber) {
  const auto oem = recordOf<SMBIOSTable11Data>(test::OemStrings{{"one", "two"}}, k24);
  EXPECT_EQ(oem->getCount(), 2);
  EXPECT_STREQ(oem->getString(1), "one");
  EXPECT_STREQ(oem->getString(2), "two");
  for (int n : {-1, 0, 3, 257, 1 << 20}) EXPECT_EQ(oem->getString(n), nullptr);
}

TEST(SMBIOSTable22Data, readsItsFields) {
  const auto battery = recordOf<SMBIOSTable22Data>(test::Battery{"L", "M", "D", "S", "N"}, k24);
  EXPECT_STREQ(battery->getLocation(), "L");
  EXPECT_STREQ(battery->getManufacturer(), "M");
  EXPECT_STREQ(battery->getManufactureDate(), "D");
  EXPECT_STREQ(battery->getSerialNumber(), "S");
  EXPECT_STREQ(battery->getDeviceName(), "N");
}

TEST(SMBIOSTable24Data, settingsAreSigned) {
  EXPECT_EQ(recordOf<SMBIOSTable24Data>(test::HardwareSecurity{0xC3}, k24)->getHWSecStatus(), -61);
  EXPECT_EQ(recordOf<SMBIOSTable24Data>(test::HardwareSecurity{0x43}, k24)->getHWSecStatus(), 0x43);
}

// --- traces ---

TEST(RecordTrace, accessorsTraceLabelsAndCleanedTexts) {
  const test::CapturedTraces traces;
  recordOf<SMBIOSTable4Data>(test::Processor{.socket = "CPU\x01\xFF", .type = 3}, k24)->getSocket();
  recordOf<SMBIOSTable4Data>(processor(), k24)->getType();
  recordOf<SMBIOSTable0Data>(test::Bios{.romSize = 7}, k24)->getROMSizeKB();
  recordOf<SMBIOSTable0Data>(test::Bios{}, k24)->getVendor();
  recordOf<SMBIOSTable8Data>(test::Connector{.portType = 0x10}, k24)->getPortType();
  for (const char* expected :
       {"hardware Socket: CPU..", "hardware Type: 03", "hardware getROMSizeKB: 512 KB",
        "hardware Vendor: -none-", "hardware Port Type: 10",
        "../../../src/invscan/SMBIOS/SMBIOSTable4Data.cpp"}) {
    EXPECT_TRUE(traces.contains(expected)) << expected;
  }
}

TEST(RecordTrace, functionsHaveTheirParentheses) {
  const test::CapturedTraces traces;
  recordOf<SMBIOSTable4Data>(processor(), k24)->isPopulated();
  recordOf<SMBIOSTable4Data>(processor(), k24)->getFamily();
  recordOf<SMBIOSTable0Data>(test::Bios{}, k24)->getVendor();
  recordOf<SMBIOSTable0Data>(test::Bios{.romSize = 7}, k24)->getROMSizeKB();
  recordOf<SMBIOSTable1Data>(test::System{.uuid = {1}}, k24)->getUUIDAsString();
  for (const char* function :
       {"isPopulated()", "getFamily()", "getVendor()", "getROMSizeKB()", "getUUIDAsString()"}) {
    EXPECT_EQ(traces.countHolding(std::string(" ") + function + " hardware "), 1) << function;
  }
}

}  // namespace
}  // namespace quenlor
