#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

// Type 17 with the fields that a test is about; the rest says "unknown".
struct Device {
  uint16_t array = 0, totalBits = 72, dataBits = 64, size = 0;
  uint16_t speed = 0, configured = 0, millivolts = 0;
  uint8_t attributes = 0, technology = 2;
  uint32_t extendedSize = 0, extendedSpeed = 0, extendedConfigured = 0;

  Structure encoded(size_t length) const {
    Structure full(17);
    full.word(array).word(0xFFFE).word(totalBits).word(dataBits).word(size).byte(9).byte(0);
    full.byte(1).byte(2).byte(0x1A).word(0x80).word(speed).byte(3).byte(4).byte(5).byte(6);
    full.byte(attributes).dword(extendedSize).word(configured).word(1100).word(1300);
    full.word(millivolts).byte(technology).raw(std::string(0x54 - 0x29, '\0'));
    full.dword(extendedSpeed).dword(extendedConfigured);
    const std::string fields = full.encode(0).substr(4, length - 4);
    return Structure(17).raw(fields).strings(
        {"DIMM A1", "Bank 0", "Maker", "Serial", "Tag", "Part"});
  }
};

DmiMemoryDevice decodedDevice(const Device& device, size_t length = 0x5C) {
  return test::decoded({device.encoded(length)}).memoryDevices.at(0);
}

std::optional<uint64_t> sizeOf(uint16_t size, uint32_t extended = 0, size_t length = 0x5C) {
  return decodedDevice({.size = size, .extendedSize = extended}, length).sizeKiB;
}

TEST(DmiMemoryRecordsTest, textsOfADevice) {
  const DmiMemoryDevice device = decodedDevice({.size = 1024});
  EXPECT_EQ(device.locator, "DIMM A1");
  EXPECT_EQ(device.bankLocator, "Bank 0");
  EXPECT_EQ(device.manufacturer, "Maker");
  EXPECT_EQ(device.serial, "Serial");
  EXPECT_EQ(device.assetTag, "Tag");
  EXPECT_EQ(device.partNumber, "Part");
  EXPECT_EQ(device.kind, 0x1A);
  EXPECT_EQ(device.formFactor, 9);
  EXPECT_EQ(device.details, 0x80);
  EXPECT_EQ(device.technology, 2);
}

TEST(DmiMemoryRecordsTest, sizesInMegabytesAndKilobytes) {
  EXPECT_EQ(sizeOf(16384), 16384u * 1024);
  EXPECT_EQ(sizeOf(0x8000 | 640), 640u);
  EXPECT_EQ(sizeOf(0x7FFE), 0x7FFEu * 1024);
}

TEST(DmiMemoryRecordsTest, sizeOf7FFFStandsInTheExtendedField) {
  EXPECT_EQ(sizeOf(0x7FFF, 32768), 32768u * 1024);
  EXPECT_EQ(sizeOf(0x7FFF, 0x80000000 | 65536), 65536u * 1024);
  EXPECT_EQ(sizeOf(0x7FFF, 0x7FFFFFFF), uint64_t{0x7FFFFFFF} * 1024);
  EXPECT_FALSE(sizeOf(0x7FFF, 0));
}

// A virtual machine's table of version 2.3: what follows the structure are strings.
TEST(DmiMemoryRecordsTest, sizeOf7FFFIsASizeWhereTheExtendedFieldIsMissing) {
  EXPECT_EQ(sizeOf(0x7FFF, 1, 0x1B), 32767u * 1024);
  EXPECT_EQ(sizeOf(0x7FFF, 1, 0x1F), 32767u * 1024);
  EXPECT_EQ(sizeOf(0x7FFF, 1, 0x20), 1024u);
}

TEST(DmiMemoryRecordsTest, extendedFieldCountsOnlyWhenAsked) {
  EXPECT_EQ(sizeOf(4096, 65536), 4096u * 1024);
}

TEST(DmiMemoryRecordsTest, emptySlotIsNotAModuleOfUnknownSize) {
  EXPECT_TRUE(decodedDevice({.size = 0}).isEmpty);
  EXPECT_FALSE(decodedDevice({.size = 0}).sizeKiB);
  EXPECT_FALSE(decodedDevice({.size = 0xFFFF}).isEmpty);
  EXPECT_FALSE(decodedDevice({.size = 0xFFFF}).sizeKiB);
}

TEST(DmiMemoryRecordsTest, speedsAboveAWordStandInTheirOwnFields) {
  const Device device{.speed = 0xFFFF,
                      .configured = 0xFFFF,
                      .extendedSpeed = 70000,
                      .extendedConfigured = 0x80000000 | 66000};
  EXPECT_EQ(decodedDevice(device).speedMts, 70000u);
  EXPECT_EQ(decodedDevice(device).configuredMts, 66000u);
  EXPECT_FALSE(decodedDevice(device, 0x57).speedMts);
  EXPECT_EQ(decodedDevice(device, 0x58).speedMts, 70000u);
  EXPECT_FALSE(decodedDevice(device, 0x58).configuredMts);
}

TEST(DmiMemoryRecordsTest, speedOfZeroIsUnknown) {
  EXPECT_FALSE(decodedDevice({}).speedMts);
  EXPECT_FALSE(decodedDevice({}).configuredMts);
  EXPECT_EQ(decodedDevice({.speed = 4800, .configured = 4400}).speedMts, 4800u);
  EXPECT_EQ(decodedDevice({.speed = 4800, .configured = 4400}).configuredMts, 4400u);
}

TEST(DmiMemoryRecordsTest, widthsRankAndVoltage) {
  const DmiMemoryDevice device = decodedDevice({.millivolts = 1200, .attributes = 0xF2});
  EXPECT_EQ(device.totalBits, 72);
  EXPECT_EQ(device.dataBits, 64);
  EXPECT_EQ(device.rank, 2);
  EXPECT_EQ(device.configuredMillivolts, 1200);
  const DmiMemoryDevice unknown = decodedDevice({.totalBits = 0xFFFF, .dataBits = 0});
  EXPECT_FALSE(unknown.totalBits);
  EXPECT_FALSE(unknown.dataBits);
  EXPECT_FALSE(unknown.rank);
  EXPECT_FALSE(unknown.configuredMillivolts);
}

TEST(DmiMemoryRecordsTest, deviceOf21HasNoMaker) {
  const DmiMemoryDevice device = decodedDevice({.size = 512, .speed = 100}, 0x15);
  EXPECT_EQ(device.sizeKiB, 512u * 1024);
  EXPECT_EQ(device.locator, "DIMM A1");
  EXPECT_FALSE(device.manufacturer);
  EXPECT_FALSE(device.speedMts);
  EXPECT_FALSE(device.technology);
}

Structure array(uint32_t maxKiB, std::optional<uint64_t> extended = {}) {
  Structure out(16);
  out.byte(3).byte(3).byte(6).dword(maxKiB).word(0xFFFE).word(8);
  return extended ? out.qword(*extended) : out;
}

TEST(DmiMemoryRecordsTest, array) {
  const DmiMemoryArray found = test::decoded({array(64 << 20)}).memoryArrays.at(0);
  EXPECT_EQ(found.location, 3);
  EXPECT_EQ(found.use, 3);
  EXPECT_EQ(found.errorCorrection, 6);
  EXPECT_EQ(found.maxKiB, uint64_t{64} << 20);
  EXPECT_EQ(found.slots, 8);
}

TEST(DmiMemoryRecordsTest, capacityOf80000000StandsInTheExtendedFieldInBytes) {
  const auto capacity = [](const Structure& structure) {
    return test::decoded({structure}).memoryArrays.at(0).maxKiB;
  };
  EXPECT_EQ(capacity(array(0x80000000, uint64_t{3} << 40)), uint64_t{3} << 30);
  EXPECT_FALSE(capacity(array(0x80000000)));
  EXPECT_FALSE(capacity(array(0x80000000, 0)));
  EXPECT_EQ(capacity(array(0x80000001, 1024)), 0x80000001u);
  EXPECT_EQ(capacity(array(0x08000000, 1024)), 0x08000000u);
  EXPECT_FALSE(capacity(array(0)));
}

std::vector<std::optional<size_t>> arraysIn(const std::string& table) {
  std::vector<std::optional<size_t>> arrays;
  for (const DmiMemoryDevice& device : test::decoded(table).memoryDevices) {
    arrays.push_back(device.array);
  }
  return arrays;
}

std::string deviceOf(uint16_t arrayHandle) {
  return Device{.array = arrayHandle}.encoded(0x1C).encode(0x999);
}

using Arrays = std::vector<std::optional<size_t>>;

TEST(DmiMemoryRecordsTest, deviceBelongsToTheArrayOfItsHandle) {
  EXPECT_EQ(arraysIn(array(1).encode(10) + array(1).encode(20) + deviceOf(20) + deviceOf(10)),
            (Arrays{1, 0}));
}

TEST(DmiMemoryRecordsTest, deviceMayStandBeforeItsArray) {
  EXPECT_EQ(arraysIn(deviceOf(20) + array(1).encode(10) + array(1).encode(20)), (Arrays{1}));
}

TEST(DmiMemoryRecordsTest, ofEqualHandlesTheNearestBeforeIsMeant) {
  EXPECT_EQ(arraysIn(array(1).encode(10) + deviceOf(10) + array(1).encode(10) + deviceOf(10)),
            (Arrays{0, 1}));
}

TEST(DmiMemoryRecordsTest, deviceOfAnUnknownHandleHasNoArray) {
  EXPECT_EQ(arraysIn(array(1).encode(10) + array(1).encode(20) + deviceOf(0xFFFF)),
            (Arrays{std::nullopt}));
  EXPECT_EQ(arraysIn(deviceOf(5)), (Arrays{std::nullopt}));
}

TEST(DmiMemoryRecordsTest, loneArrayHasAllDevices) {
  EXPECT_EQ(arraysIn(array(1).encode(10) + deviceOf(0xFFFF) + deviceOf(7)), (Arrays{0, 0}));
}

// A cache or a slot may have the same handle.
TEST(DmiMemoryRecordsTest, structuresOfOtherTypesWithTheHandleDoNotCount) {
  const std::string other = Structure(9).raw(std::string(9, '\x03')).encode(20);
  EXPECT_EQ(arraysIn(array(1).encode(20) + array(1).encode(30) + other + deviceOf(20)),
            (Arrays{0}));
}

TEST(DmiMemoryRecordsTest, oldControllerAndModules) {
  Structure controller(5);
  controller.dword(0).byte(9).word(0).word(0).byte(0).byte(4).raw(std::string(8, '\0')).byte(0);
  Structure module(6);
  module.text("J1").byte(0xFF).byte(10).word(0x0500).byte(0x87).byte(7).byte(0);
  Structure empty(6);
  empty.text("J2").byte(0xFF).byte(10).word(0).byte(0x7F).byte(0x7F).byte(0);
  const DmiTable table = test::decoded({controller, module, empty}, {2, 0});
  EXPECT_EQ(table.memoryController->moduleLimitExponent, 9);
  EXPECT_EQ(table.memoryController->slots, 4);
  ASSERT_EQ(table.memoryModules.size(), 2u);
  EXPECT_EQ(table.memoryModules[0].socket, "J1");
  EXPECT_EQ(table.memoryModules[0].kinds, 0x0500);
  EXPECT_EQ(table.memoryModules[0].installedMiB, 128u);
  EXPECT_FALSE(table.memoryModules[1].installedMiB);
}

TEST(DmiMemoryRecordsTest, moduleSizesThatNoMachineHasAreNone) {
  const auto size = [](uint8_t code) {
    const Structure module = Structure(6).dword(0).byte(0).byte(code).byte(0).byte(0);
    return test::decoded({module}).memoryModules.at(0).installedMiB;
  };
  EXPECT_EQ(size(31), uint64_t{1} << 31);
  EXPECT_FALSE(size(32));
  EXPECT_FALSE(size(0x7D));
  EXPECT_FALSE(size(0x7E));
  EXPECT_FALSE(size(0x7F));
}

}  // namespace
}  // namespace quenlor
