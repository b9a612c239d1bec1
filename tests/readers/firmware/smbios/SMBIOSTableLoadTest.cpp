// Finding and loading the machine's table.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::Firmware;
using test::FirmwareTable;

FirmwareTable smallTable(test::Version version = {2, 4}) {
  return FirmwareTable(version)
      .add(test::System{.product = "Real", .serial = "S1"})
      .add(test::EndOfTable{});
}

// The 15 bytes of a "_DMI_" header without checksum.
std::string dmiHeader(uint16_t length, uint32_t address, uint16_t count, uint8_t bcd) {
  std::string bytes("_DMI_\0", 6);
  for (unsigned value : {unsigned{length}, address & 0xFFFF, address >> 16, unsigned{count}}) {
    bytes += static_cast<char>(value & 0xFF);
    bytes += static_cast<char>(value >> 8 & 0xFF);
  }
  return bytes + static_cast<char>(bcd);
}

class SMBIOSTableLoadTest : public testing::Test {
 protected:
  SMBIOSTable& load(const Firmware& firmware) { return loadFrom(firmware.memory()); }
  SMBIOSTable& loadFrom(const std::string& memory) {
    m_machine.files["/dev/mem"] = memory;
    m_table = std::make_unique<SMBIOSTable>();
    EXPECT_EQ(m_machine.openDescriptors(), 0);
    EXPECT_EQ(m_machine.openMappings(), 0);
    m_table->parseData();
    return *m_table;
  }
  std::string product() const {
    const auto* system = m_table->getTable1();
    const char* text = system == nullptr ? nullptr : system->getProduct();
    return text == nullptr ? "none" : text;
  }

  test::FakeHost m_machine;
  std::unique_ptr<SMBIOSTable> m_table;
};

TEST_F(SMBIOSTableLoadTest, loadsWhatTheHeaderAnnounces) {
  const Firmware firmware(smallTable());
  const SMBIOSTable& table = load(firmware);
  EXPECT_TRUE(table.isAvailable());
  EXPECT_EQ(table.getMajorVersion(), 2);
  EXPECT_EQ(table.getMinorVersion(), 4);
  EXPECT_EQ(table.getRevision(), 0x204);
  EXPECT_EQ(table.getNumTables(), 2);
  const std::string& bytes = firmware.table.bytes();
  ASSERT_EQ(table.getTotalLength(), static_cast<int>(bytes.size()));
  EXPECT_EQ(std::memcmp(table.getData(), bytes.data(), bytes.size()), 0);
  EXPECT_EQ(product(), "Real");
}

TEST_F(SMBIOSTableLoadTest, everyTableAddressWorks) {
  for (uint32_t address : {0xE0000u, 0xF0000u, 0x110010u, 0x100FFFu, 0x9FC01u}) {
    Firmware firmware(smallTable());
    firmware.tableAddress = address;
    load(firmware);
    EXPECT_EQ(product(), "Real") << address;
  }
}

TEST_F(SMBIOSTableLoadTest, headerNeedsNeitherAlignmentNorChecksums) {
  Firmware firmware(smallTable());
  firmware.entryPointAddress = 0xFA003;
  firmware.entryPointChecksum = test::Checksum::kWrong;
  firmware.intermediateChecksum = test::Checksum::kWrong;
  EXPECT_TRUE(load(firmware).isAvailable());
}

TEST_F(SMBIOSTableLoadTest, withoutBcdRevisionTheEntryPointsVersionCounts) {
  Firmware firmware(smallTable({2, 6}));
  firmware.hasBcdRevision = false;
  const SMBIOSTable& table = load(firmware);
  EXPECT_EQ(table.getRevision(), 0x206);
  EXPECT_EQ(table.getMajorVersion(), 2);
  EXPECT_EQ(table.getMinorVersion(), 6);
}

TEST_F(SMBIOSTableLoadTest, headerAtTheSegmentsStartHasVersionZero) {
  Firmware firmware(smallTable());
  const std::string& bytes = firmware.table.bytes();
  std::string memory = firmware.memory();
  memory.replace(0xFA000, 32, std::string(32, '\0'));
  memory.replace(0xF0000, 15, dmiHeader(static_cast<uint16_t>(bytes.size()), 0xF5000, 2, 0));
  const SMBIOSTable& table = loadFrom(memory);
  EXPECT_TRUE(table.isAvailable());
  EXPECT_EQ(table.getRevision(), 0);
}

// What would lie behind the segment reads as 0: an empty table at address 0.
TEST_F(SMBIOSTableLoadTest, headerAtTheSegmentsEndIsFilledWithZeros) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xFFFFB, 5, "_DMI_");
  const SMBIOSTable& table = loadFrom(memory);
  EXPECT_TRUE(table.isAvailable());
  EXPECT_EQ(table.getTotalLength(), 0);
  EXPECT_EQ(table.getNumTables(), 0);
}

TEST_F(SMBIOSTableLoadTest, memoryWithoutHeaderGivesNoTable) {
  EXPECT_FALSE(loadFrom(std::string(test::kFirstMegabyte, '\0')).isAvailable());
  EXPECT_FALSE(loadFrom("").isAvailable());
  EXPECT_FALSE(load(Firmware(smallTable())).getTable4(0));
}

TEST_F(SMBIOSTableLoadTest, memoryShorterThanTheSegmentGivesNoTable) {
  EXPECT_FALSE(loadFrom(Firmware(smallTable()).memory().substr(0, 0xFFFFF)).isAvailable());
}

TEST_F(SMBIOSTableLoadTest, missingMemoryGivesNoTableAndStaysMissing) {
  const SMBIOSTable table;
  EXPECT_FALSE(table.isAvailable());
  EXPECT_EQ(m_machine.files.count("/dev/mem"), 0u);
}

TEST_F(SMBIOSTableLoadTest, tableBeyondTheEndOfMemoryGivesNoTable) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xF1000, 15, dmiHeader(100, 0xFFFF0000, 3, 0x24));
  EXPECT_FALSE(loadFrom(memory).isAvailable());
}

TEST_F(SMBIOSTableLoadTest, failedReadLetsTheSearchGoOn) {
  Firmware firmware(smallTable());
  firmware.otherMemory[0xF1001] = dmiHeader(100, 0x7FFFFFFF, 3, 0x21);
  EXPECT_TRUE(load(firmware).isAvailable());
  EXPECT_EQ(product(), "Real");
  EXPECT_EQ(m_table->getRevision(), 0x204);
}

TEST_F(SMBIOSTableLoadTest, falseAnchorWithReadableMemoryIsPassedOver) {
  load(*test::firmwareNamed("false-anchor"));
  EXPECT_TRUE(m_table->isAvailable());
  EXPECT_EQ(product(), "Rack 2000");
  EXPECT_EQ(m_table->getRevision(), 0x208);
}

TEST_F(SMBIOSTableLoadTest, falseAnchorAloneStandsAsItDidAlways) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xF1000, 15, dmiHeader(64, 0x1000, 3, 0x21));
  memory.replace(0xF2000, 15, dmiHeader(128, 0x1000, 3, 0x22));
  const SMBIOSTable& table = loadFrom(memory);
  EXPECT_TRUE(table.isAvailable());
  EXPECT_EQ(table.getTotalLength(), 64);
  EXPECT_EQ(table.getRevision(), 0x201);
}

TEST_F(SMBIOSTableLoadTest, falseAnchorStandsAlsoBeforeAnUnreadableOne) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xF1000, 15, dmiHeader(64, 0x1000, 3, 0x21));
  memory.replace(0xF2000, 15, dmiHeader(128, 0x7FFFFFFF, 3, 0x22));
  EXPECT_TRUE(loadFrom(memory).isAvailable());
  EXPECT_EQ(m_table->getTotalLength(), 64);
}

// Fewer bytes than a structure's header hold nothing that could be judged.
TEST_F(SMBIOSTableLoadTest, tableOfThreeBytesIsNotDoubted) {
  Firmware firmware(smallTable());
  firmware.otherMemory[0xF1000] = dmiHeader(3, 0x1000, 3, 0x21);
  EXPECT_EQ(load(firmware).getTotalLength(), 3);
}

TEST_F(SMBIOSTableLoadTest, largestTableIsLoaded) {
  FirmwareTable structures({2, 4});
  structures.add(test::Structure(128).strings({std::string(60000, 'x')}));
  Firmware firmware(structures);
  firmware.tableAddress = 0x100000;
  firmware.announcedLength = 65535;
  firmware.otherMemory[0x110000] = "end";
  EXPECT_TRUE(load(firmware).isAvailable());
  EXPECT_EQ(m_table->getTotalLength(), 65535);
}

// The records of the table's own functions, each with its kind, function and text.
std::vector<std::string> ownRecords(const test::CapturedTraces& traces) {
  const std::string source = " SMBIOS/SMBIOSTable.cpp ";
  std::vector<std::string> own;
  for (const std::string& record : traces.texts()) {
    const size_t at = record.find(source);
    if (at == record.npos) continue;
    own.push_back(record.substr(0, at) + ' ' + record.substr(at + source.size()));
  }
  return own;
}

// Records of loading, all of the same kind.
std::vector<std::string> loadRecords(const std::vector<std::string>& texts) {
  std::vector<std::string> records;
  for (const std::string& text : texts) records.push_back("MAX SMBIOSTable() hardware " + text);
  return records;
}

TEST_F(SMBIOSTableLoadTest, tracesHowTheTableWasFound) {
  Firmware firmware(
      FirmwareTable({2, 4}).add(test::Structure(221).strings({"AZ~\x7F\x80 0123456789"})));
  m_machine.files["/dev/mem"] = firmware.memory();
  const test::CapturedTraces traces;
  const SMBIOSTable table;
  EXPECT_EQ(ownRecords(traces),
            loadRecords({"Reading F0000 segment", "Looking for _DMI_ signature",
                         "Found _DMI_ at 000F:A010", "tablelen=22",
                         "tableaddr=000F5000 seg=000F off=5000", "numTables=1",
                         "revision=0204 major version=2 minor version=4",
                         "Grabbing memory from absolute location 000F5000 table length: 22",
                         "0000 DD 04 00 00 41 5A 7E 7F 80 20 30 31 32 33 34 35  --- > ....AZ~.. "
                         "012345 <",
                         "0010 36 37 38 39 00 00  --- > 6789.. <"}));
}

TEST_F(SMBIOSTableLoadTest, tracesNoBytesOfATableThatCouldNotBeRead) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xF1000, 15, dmiHeader(100, 0xFFFF0000, 3, 0x24));
  m_machine.files["/dev/mem"] = memory;
  const test::CapturedTraces traces;
  const SMBIOSTable table;
  EXPECT_EQ(ownRecords(traces),
            loadRecords({"Reading F0000 segment", "Looking for _DMI_ signature",
                         "Found _DMI_ at 000F:1000", "tablelen=100",
                         "tableaddr=FFFF0000 seg=FFFF off=0000", "numTables=3",
                         "revision=0204 major version=2 minor version=4",
                         "Grabbing memory from absolute location FFFF0000 table length: 100"}));
}

TEST_F(SMBIOSTableLoadTest, tracesNoSearchInASegmentThatCannotBeRead) {
  const test::CapturedTraces traces;
  const SMBIOSTable table;
  EXPECT_EQ(ownRecords(traces), loadRecords({"Reading F0000 segment"}));
}

TEST_F(SMBIOSTableLoadTest, tracesTheWalk) {
  m_machine.files["/dev/mem"] = Firmware(FirmwareTable({2, 4})
                                             .add(test::Structure(4).byte(0).byte(3).byte(0xB3))
                                             .add(test::EndOfTable{})
                                             .add(test::EndOfTable{}))
                                    .memory();
  SMBIOSTable table;
  const test::CapturedTraces traces;
  table.parseData();
  EXPECT_EQ(ownRecords(traces),
            (std::vector<std::string>{
                "MID entry parseData() hardware parseData()",
                "MAX parseData() hardware SMBIOS cur= 0 type= 4 tables= 1 of 3 [00 00 00] 04 07 00 "
                "00",
                "MAX parseData() hardware SMBIOS cur= 9 type= 127 tables= 2 of 3 [B3 00 00] 7F 04 "
                "01 00",
                "MAX parseData() hardware found structure 127",
                "MAX parseData() hardware SMBIOS cur= 9 type= 127 tables= 3 of 3 [B3 00 00] 7F 04 "
                "01 00",
                "MAX parseData() hardware found structure 127",
                "MAX parseData() hardware Number of Table 4 = 1",
                "MAX parseData() hardware Number of Table 4 Populated= 0",
                "MAX parseData() hardware Table 4 Family = 179",
                "MID exit parseData() hardware parseData()"}));
}

TEST_F(SMBIOSTableLoadTest, tracesNoFamilyWithoutAProcessor) {
  m_machine.files["/dev/mem"] = Firmware(FirmwareTable({2, 4})).memory();
  SMBIOSTable table;
  const test::CapturedTraces traces;
  table.parseData();
  EXPECT_EQ(ownRecords(traces),
            (std::vector<std::string>{"MID entry parseData() hardware parseData()",
                                      "MAX parseData() hardware Number of Table 4 = 0",
                                      "MAX parseData() hardware Number of Table 4 Populated= 0",
                                      "MID exit parseData() hardware parseData()"}));
}

// --- the shared table ---

TEST(GlobalTable, livesAsLongAsSomeoneRefersToIt) {
  test::FakeHost machine;
  machine.files["/dev/mem"] = Firmware(smallTable()).memory();
  EXPECT_EQ(globalSMBIOSTable, nullptr);
  SMBIOSTable::initializeGlobalTable(1);
  const SMBIOSTable* first = globalSMBIOSTable;
  ASSERT_NE(first, nullptr);
  SMBIOSTable::initializeGlobalTable(1);
  EXPECT_EQ(globalSMBIOSTable, first);
  SMBIOSTable::terminateGlobalTable();
  EXPECT_EQ(globalSMBIOSTable, first);
  SMBIOSTable::terminateGlobalTable();
  EXPECT_EQ(globalSMBIOSTable, nullptr);
  SMBIOSTable::terminateGlobalTable();
  EXPECT_EQ(globalSMBIOSTable, nullptr);
}

TEST(GlobalTable, isWalkedOnlyWhenAskedFor) {
  test::FakeHost machine;
  machine.files["/dev/mem"] = Firmware(smallTable()).memory();
  SMBIOSTable::initializeGlobalTable(0);
  EXPECT_TRUE(globalSMBIOSTable->isAvailable());
  EXPECT_EQ(globalSMBIOSTable->getTable1(), nullptr);
  SMBIOSTable::terminateGlobalTable();
  SMBIOSTable::initializeGlobalTable(1);
  EXPECT_NE(globalSMBIOSTable->getTable1(), nullptr);
  SMBIOSTable::terminateGlobalTable();
}

TEST(GlobalTable, existsUnavailableWithoutPrivilege) {
  test::FakeHost machine;
  SMBIOSTable::initializeGlobalTable(1);
  ASSERT_NE(globalSMBIOSTable, nullptr);
  EXPECT_FALSE(globalSMBIOSTable->isAvailable());
  EXPECT_EQ(globalSMBIOSTable->getTable0(), nullptr);
  EXPECT_EQ(globalSMBIOSTable->getTable17Total(), 0);
  SMBIOSTable::terminateGlobalTable();
}

}  // namespace
}  // namespace quenlor
