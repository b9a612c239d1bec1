#include "readers/firmware/smbios/DumpFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Images.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr char kPath[] = "/tmp/smbios.txt";

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

class DumpFileTest : public testing::Test {
 protected:
  std::string written(const SMBIOSTable& table) {
    table.writeBytesToFile(kPath);
    EXPECT_EQ(m_machine.openDescriptors(), 0);
    return m_machine.files[kPath];
  }
  SMBIOSTable* read(const std::string& content) {
    m_machine.files[kPath] = content;
    m_table = std::make_unique<SMBIOSTable>(kPath);
    EXPECT_EQ(m_machine.openDescriptors(), 0);
    return m_table.get();
  }

  test::FakeHost m_machine;
  std::unique_ptr<SMBIOSTable> m_table;
};

TEST_F(DumpFileTest, writesFourHeaderLinesAndSixteenBytesALine) {
  const std::string bytes("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\xF0",
                          17);
  const SMBIOSTable table(bytesOf(bytes), 17, 0x24, 3);
  EXPECT_EQ(written(table),
            "SMBIOS File Format=0x0001\n"
            "SMBIOS Length=0x0011\n"
            "SMBIOS NumTables=0x0003\n"
            "SMBIOS Revision=0x24\n"
            "SMBIOS Data=\n"
            "0x00 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0A 0x0B 0x0C 0x0D 0x0E 0x0F \n"
            "0xF0 \n");
}

TEST_F(DumpFileTest, emptyTableHasAnEmptyDataLine) {
  const SMBIOSTable table(nullptr, 0, 0x24, 0);
  EXPECT_EQ(written(table),
            "SMBIOS File Format=0x0001\nSMBIOS Length=0x0000\nSMBIOS NumTables=0x0000\n"
            "SMBIOS Revision=0x24\nSMBIOS Data=\n");
}

TEST_F(DumpFileTest, revisionWordTakesThreeDigits) {
  m_machine.files["/dev/mem"] = test::firmwareNamed("old-server-2.3")->memory();
  EXPECT_NE(written(SMBIOSTable()).find("\nSMBIOS Revision=0x203\n"), std::string::npos);
}

TEST_F(DumpFileTest, everyImageSurvivesWritingAndReading) {
  for (const std::string& name : test::firmwareNames()) {
    m_machine.files["/dev/mem"] = test::firmwareNamed(name)->memory();
    SMBIOSTable original;
    original.parseData();
    original.writeBytesToFile(kPath);
    SMBIOSTable copy(kPath);
    ASSERT_EQ(copy.getTotalLength(), original.getTotalLength()) << name;
    EXPECT_EQ(copy.getNumTables(), original.getNumTables()) << name;
    EXPECT_EQ(copy.getRevision(), original.getRevision()) << name;
    EXPECT_EQ(std::memcmp(copy.getData(), original.getData(),
                          static_cast<size_t>(original.getTotalLength())),
              0)
        << name;
    copy.parseData();
    EXPECT_EQ(copy.getTable17Total(), original.getTable17Total()) << name;
    EXPECT_EQ(copy.getTable1() == nullptr, original.getTable1() == nullptr) << name;
  }
}

// Neither versions nor availability are restored: meant so, a saved table is no machine's.
TEST_F(DumpFileTest, tableFromAFileIsUnavailableAndHasNoVersion) {
  const SMBIOSTable* table = read(
      "SMBIOS File Format=0x0001\nSMBIOS Length=0x0004\nSMBIOS NumTables=0x0001\n"
      "SMBIOS Revision=0x203\nSMBIOS Data=\n0x7F 0x04 0x00 0x00 \n");
  EXPECT_FALSE(table->isAvailable());
  EXPECT_EQ(table->getMajorVersion(), 0);
  EXPECT_EQ(table->getMinorVersion(), 0);
  EXPECT_EQ(table->getRevision(), 0x203);
  EXPECT_EQ(table->getData()[0], 0x7F);
}

TEST_F(DumpFileTest, prefixesAreOptionalAndLowBytesKept) {
  const SMBIOSTable* table = read(
      "SMBIOS File Format=1\nSMBIOS Length=3\nSMBIOS NumTables=2\nSMBIOS Revision=24\n"
      "SMBIOS Data=7f 0X1fe\n\t03");
  ASSERT_EQ(table->getTotalLength(), 3);
  EXPECT_EQ(table->getData()[0], 0x7F);
  EXPECT_EQ(table->getData()[1], 0xFE);
  EXPECT_EQ(table->getData()[2], 0x03);
}

// A writer that prints its bytes as signed numbers fills them up with the sign.
TEST_F(DumpFileTest, lowByteOfANumberBeyondThirtyOneBitsIsKept) {
  const SMBIOSTable* table = read(
      "SMBIOS File Format=1\nSMBIOS Length=4\nSMBIOS NumTables=2\nSMBIOS Revision=24\n"
      "SMBIOS Data=\n0xFFFFFFA5 FFFFFFFFFFFFFF81 0xc 00000000000000000000003\n");
  ASSERT_EQ(table->getTotalLength(), 4);
  EXPECT_EQ(table->getData()[0], 0xA5);
  EXPECT_EQ(table->getData()[1], 0x81);
  EXPECT_EQ(table->getData()[2], 0x0C);
  EXPECT_EQ(table->getData()[3], 0x03);
}

TEST_F(DumpFileTest, missingFileLeavesTheTableEmpty) {
  const SMBIOSTable table("/tmp/missing");
  EXPECT_EQ(table.getTotalLength(), 0);
  EXPECT_EQ(table.getNumTables(), 0);
  EXPECT_FALSE(table.isAvailable());
}

TEST_F(DumpFileTest, truncatedDataIsFilledWithZeros) {
  const SMBIOSTable* table = read(
      "SMBIOS File Format=0x0001\nSMBIOS Length=0x0004\nSMBIOS NumTables=0x0001\n"
      "SMBIOS Revision=0x24\nSMBIOS Data=\n0x7F 0x04 zz 0x05");
  ASSERT_EQ(table->getTotalLength(), 4);
  EXPECT_EQ(table->getData()[1], 4);
  EXPECT_EQ(table->getData()[2], 0);
  EXPECT_EQ(table->getData()[3], 0);
}

TEST_F(DumpFileTest, hugeNumbersAreClamped) {
  const SMBIOSTable* table = read(
      "SMBIOS File Format=1\nSMBIOS Length=FFFFFFFFFFFF\nSMBIOS NumTables=FFFFFFFF\n"
      "SMBIOS Revision=24\nSMBIOS Data=1\n");
  EXPECT_EQ(table->getTotalLength(), 16 << 20);
  EXPECT_EQ(table->getNumTables(), 65535);
}

TEST_F(DumpFileTest, missingHeaderLinesCountAsZero) {
  const SMBIOSTable* table = read("SMBIOS File Format=1\nSomething else\n");
  EXPECT_EQ(table->getTotalLength(), 0);
  EXPECT_EQ(table->getNumTables(), 0);
}

using DumpFileDeathTest = DumpFileTest;

TEST_F(DumpFileDeathTest, otherFormatEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(read("SMBIOS File Format=0x0002\n"), testing::ExitedWithCode(255), "");
  EXPECT_EXIT(read("garbage"), testing::ExitedWithCode(255), "");
  EXPECT_EXIT(read(""), testing::ExitedWithCode(255), "");
}

TEST_F(DumpFileDeathTest, otherFormatIsReportedOnStandardOutput) {
  const auto readOther = [this] {
    ::dup2(2, 1);
    read("SMBIOS File Format=0x0002\n");
  };
  EXPECT_EXIT(readOther(), testing::ExitedWithCode(255), "\nERROR - Invalid file format\\.");
}

}  // namespace
}  // namespace quenlor
