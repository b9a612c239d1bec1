#include "readers/firmware/records/TableBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

namespace quenlor {
namespace {

TableBytes bytesOf(const std::string& content) {
  TableBytes bytes(static_cast<int>(content.size()));
  std::copy(content.begin(), content.end(), bytes.data());
  return bytes;
}

TEST(TableBytes, sizesAreClamped) {
  EXPECT_EQ(TableBytes(-1).size(), 0);
  EXPECT_EQ(TableBytes(INT_MIN).size(), 0);
  EXPECT_EQ(TableBytes(INT_MAX).size(), 16 << 20);
}

TEST(TableBytes, startsAsZerosBetweenZeroGuards) {
  const TableBytes bytes(10);
  for (int i = -TableBytes::kGuardBefore; i < bytes.size() + TableBytes::kGuardAfter; ++i) {
    EXPECT_EQ(bytes.data()[i], 0);
  }
}

TEST(TableBytes, everyOffsetOutsideReadsAsZero) {
  const TableBytes bytes = bytesOf("ABC");
  EXPECT_EQ(bytes[0], 'A');
  EXPECT_EQ(bytes[2], 'C');
  for (int offset : {-1, -3, -4, 3, 514, 515, 516, INT_MIN, INT_MAX}) EXPECT_EQ(bytes[offset], 0);
}

TEST(TableBytes, textWithoutTerminatorEndsWithTheTable) {
  EXPECT_EQ(bytesOf(std::string("first\0last", 10)).textAt(0), "first");
  EXPECT_EQ(bytesOf(std::string("first\0last", 10)).textAt(6), "last");
  EXPECT_EQ(bytesOf("last").textAt(4), "");
  EXPECT_EQ(bytesOf("last").textAt(100000), "");
  EXPECT_EQ(bytesOf("last").textAt(-1), "");
}

TEST(IntelByteBuffer, readsLittleEndian) {
  const TableBytes bytes = bytesOf("\x01\x02\x83\xF4");
  EXPECT_EQ(IntelByteBuffer::readUCHAR(bytes, 3), 0xF4);
  EXPECT_EQ(IntelByteBuffer::readUSHORT(bytes, 0), 0x0201);
  EXPECT_EQ(IntelByteBuffer::readUSHORT(bytes, 2), 0xF483);
  EXPECT_EQ(IntelByteBuffer::readULONG(bytes, 0), 0xF4830201u);
}

TEST(IntelByteBuffer, fieldsAcrossTheEndAreFilledWithZeros) {
  const TableBytes bytes = bytesOf("\x01\x02");
  EXPECT_EQ(IntelByteBuffer::readUSHORT(bytes, 1), 0x0002);
  EXPECT_EQ(IntelByteBuffer::readULONG(bytes, 0), 0x0201u);
}

TEST(IntelByteBuffer, readsTexts) {
  std::string text = "old";
  const TableBytes bytes = bytesOf(std::string("\0name", 5));
  IntelByteBuffer::readASCIIZ(bytes, 1, text);
  EXPECT_EQ(text, "name");
  EXPECT_EQ(IntelByteBuffer::getASCIIZLength(text), 5);
  IntelByteBuffer::readASCIIZ(bytes, 0, text);
  EXPECT_EQ(text, "");
  EXPECT_EQ(IntelByteBuffer::getASCIIZLength(text), 1);
}

TEST(IntelByteBuffer, readsArrays) {
  unsigned char out[4];
  IntelByteBuffer::readCHARArray(bytesOf("abc"), 1, out, 4);
  EXPECT_EQ(std::memcmp(out, "bc\0\0", 4), 0);
}

}  // namespace
}  // namespace quenlor
