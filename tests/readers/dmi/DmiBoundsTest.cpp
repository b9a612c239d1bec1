// Every type at every length, and tables cut or overwritten at every byte: whatever firmware holds,
// nothing is read that does not belong to the structure. The buffers end where the bytes end, so
// that address sanitizers see a step too far.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "tests/firmware/Images.h"
#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

DmiTable decodedCopy(std::string_view bytes, const DmiEntryPoint& entry) {
  const std::vector<char> copy(bytes.begin(), bytes.end());
  return decodeDmiTable({copy.data(), copy.size()}, entry);
}

DmiEntryPoint wholeTable(bool endsAtEndStructure = true) {
  return {.version = {3, 7},
          .tableAddress = 0,
          .tableLength = 0xFFFFFFFF,
          .structureCount = {},
          .endsAtEndStructure = endsAtEndStructure};
}

// FF is the value that sends readers to extended fields, 01 a string number that exists.
TEST(DmiBoundsTest, everyTypeAtEveryLength) {
  for (int type = 0; type < 256; ++type) {
    for (size_t length = 4; length < 256; ++length) {
      for (const char fill : {'\xFF', '\x01', '\x00'}) {
        const std::string bytes = Structure(static_cast<uint8_t>(type))
                                      .raw(std::string(length - 4, fill))
                                      .strings({"text"})
                                      .encode(1);
        const DmiTable table = decodedCopy(bytes, wholeTable());
        ASSERT_EQ(table.outcome.status(), OutcomeStatus::kComplete) << type << " " << length;
        ASSERT_LE(table.memoryDevices.size(), 1u);
      }
    }
  }
}

// Fields behind the length hold what the next structure begins with; none of it may come through.
TEST(DmiBoundsTest, fieldsBehindTheLengthAreAbsentAtEveryLength) {
  for (size_t length = 0x15; length <= 0x5C; ++length) {
    const std::string bytes =
        Structure(17).raw(std::string(length - 4, '\x01')).strings({"text"}).encode(1);
    const DmiMemoryDevice device = decodedCopy(bytes, wholeTable()).memoryDevices.at(0);
    EXPECT_EQ(device.speedMts.has_value(), length >= 0x17) << length;
    EXPECT_EQ(device.manufacturer.has_value(), length >= 0x18) << length;
    EXPECT_EQ(device.partNumber.has_value(), length >= 0x1B) << length;
    EXPECT_EQ(device.rank.has_value(), length >= 0x1C) << length;
    EXPECT_EQ(device.configuredMts.has_value(), length >= 0x22) << length;
    EXPECT_EQ(device.configuredMillivolts.has_value(), length >= 0x28) << length;
    EXPECT_EQ(device.technology.has_value(), length >= 0x29) << length;
  }
}

TEST(DmiBoundsTest, tablesCutAtEveryByte) {
  for (const std::string& name : test::firmwareNames()) {
    const std::string bytes = test::firmwareNamed(name)->table.bytes();
    size_t devices = 0;
    for (size_t size = 0; size <= bytes.size(); ++size) {
      const DmiTable table = decodedCopy(std::string_view(bytes).substr(0, size), wholeTable());
      ASSERT_GE(table.memoryDevices.size(), devices) << name << " " << size;
      devices = table.memoryDevices.size();
    }
  }
}

TEST(DmiBoundsTest, tablesOfRandomBytes) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 2000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() % 8 == 0 ? random() : random() % 48);
    const DmiTable table = decodedCopy(bytes, wholeTable(round % 2 == 0));
    EXPECT_LE(table.memoryDevices.size() * 6, bytes.size());
  }
}

TEST(DmiBoundsTest, tablesWithOneByteChanged) {
  for (const std::string& name : test::firmwareNames()) {
    std::string bytes = test::firmwareNamed(name)->table.bytes();
    for (char& byte : bytes) {
      const char before = byte;
      for (const char other : {'\x00', '\xFF', '\x7F'}) {
        byte = other;
        ASSERT_NO_FATAL_FAILURE(decodedCopy(bytes, wholeTable()));
      }
      byte = before;
    }
  }
}

// Handles and devices that all differ must not make the join quadratic.
TEST(DmiBoundsTest, manyArraysAndDevicesAreJoinedQuickly) {
  std::string bytes;
  for (uint16_t i = 0; i < 20000; ++i) {
    bytes += Structure(16).raw(std::string(11, '\1')).encode(i);
    bytes +=
        Structure(17).word(static_cast<unsigned>(i + 30000)).raw(std::string(15, '\1')).encode(i);
  }
  const DmiTable table = decodedCopy(bytes, wholeTable());
  EXPECT_EQ(table.memoryArrays.size(), 20000u);
  EXPECT_EQ(table.memoryDevices.size(), 20000u);
}

}  // namespace
}  // namespace quenlor
