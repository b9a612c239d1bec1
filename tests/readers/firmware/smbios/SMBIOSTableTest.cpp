// The walk over a table.
#include "readers/firmware/smbios/SMBIOSTable.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/firmware/Firmware.h"
#include "tests/firmware/Structures.h"

namespace quenlor {
namespace {

using test::FirmwareTable;
using test::Structure;

constexpr unsigned char kBcd24 = 0x24;

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

class SMBIOSTableTest : public testing::Test {
 protected:
  SMBIOSTable& parse(const std::string& bytes, int count) {
    m_table = std::make_unique<SMBIOSTable>(bytesOf(bytes), static_cast<int>(bytes.size()), kBcd24,
                                            count);
    m_table->parseData();
    return *m_table;
  }
  SMBIOSTable& parse(const FirmwareTable& table) { return parse(table.bytes(), table.count()); }

  std::unique_ptr<SMBIOSTable> m_table;
};

FirmwareTable table() { return FirmwareTable({2, 4}); }

std::string text(const char* value) { return value == nullptr ? "null" : value; }

// --- construction ---

TEST_F(SMBIOSTableTest, tableFromABufferKeepsTheBcdByteAsRevision) {
  const SMBIOSTable& parsed = parse(table().add(test::EndOfTable{}));
  EXPECT_TRUE(parsed.isAvailable());
  EXPECT_EQ(parsed.getRevision(), 0x24);
  EXPECT_EQ(parsed.getMajorVersion(), 2);
  EXPECT_EQ(parsed.getMinorVersion(), 4);
}

TEST_F(SMBIOSTableTest, lengthsAndCountsAreClamped) {
  const unsigned char byte = 0;
  EXPECT_EQ(SMBIOSTable(&byte, -5, kBcd24, -5).getTotalLength(), 0);
  EXPECT_EQ(SMBIOSTable(&byte, -5, kBcd24, -5).getNumTables(), 0);
  EXPECT_EQ(SMBIOSTable(&byte, 1, kBcd24, INT_MAX).getNumTables(), 65535);
  EXPECT_EQ(SMBIOSTable(nullptr, 100, kBcd24, 1).getTotalLength(), 0);
  const std::string large((16 << 20) + 1, '\0');
  EXPECT_EQ(SMBIOSTable(bytesOf(large), INT_MAX, kBcd24, 1).getTotalLength(), 16 << 20);
}

TEST_F(SMBIOSTableTest, nothingIsWalkedBeforeParseData) {
  const std::string bytes = table().add(test::System{.product = "P"}).bytes();
  const SMBIOSTable unparsed(bytesOf(bytes), static_cast<int>(bytes.size()), kBcd24, 1);
  EXPECT_EQ(unparsed.getTable1(), nullptr);
}

TEST_F(SMBIOSTableTest, parsingAgainGivesTheSameRecords) {
  SMBIOSTable& parsed = parse(table().add(test::Processor{}).add(test::MemoryDevice{}));
  parsed.parseData();
  EXPECT_EQ(parsed.getTable4Total(), 1);
  EXPECT_EQ(parsed.getTable4PopulatedTotal(), 1);
  EXPECT_EQ(parsed.getTable17Total(), 1);
}

// --- which structures are kept ---

TEST_F(SMBIOSTableTest, firstOfASingleTypeWins) {
  const SMBIOSTable& parsed = parse(table()
                                        .add(test::System{.product = "first"})
                                        .add(test::System{.product = "second"})
                                        .add(test::Baseboard{.product = "board"}));
  EXPECT_STREQ(parsed.getTable1()->getProduct(), "first");
  EXPECT_STREQ(parsed.getTable2()->getProduct(), "board");
}

TEST_F(SMBIOSTableTest, everySingleTypeIsFound) {
  const SMBIOSTable& parsed = parse(table()
                                        .add(test::Bios{.vendor = "V"})
                                        .add(test::System{})
                                        .add(test::Baseboard{})
                                        .add(test::Enclosure{})
                                        .add(test::MemoryController{.slots = 2})
                                        .add(test::MemoryArray{.devices = 3})
                                        .add(test::Battery{.name = "B"})
                                        .add(test::HardwareSecurity{0x55}));
  EXPECT_STREQ(parsed.getTable0()->getVendor(), "V");
  EXPECT_NE(parsed.getTable1(), nullptr);
  EXPECT_NE(parsed.getTable2(), nullptr);
  EXPECT_NE(parsed.getTable3(), nullptr);
  EXPECT_EQ(parsed.getTable5()->getNumAssocMemorySlots(), 2);
  EXPECT_EQ(parsed.getTable16()->getNumMemDevices(), 3);
  EXPECT_EQ(parsed.getTable24()->getHWSecStatus(), 0x55);
}

TEST_F(SMBIOSTableTest, oemStringsAreNeverKept) {
  EXPECT_EQ(parse(table().add(test::OemStrings{{"a", "b"}})).getTable11(), nullptr);
}

template <class Described>
FirmwareTable repeated(int count, const Described& described) {
  FirmwareTable structures({2, 4});
  for (int i = 0; i < count; ++i) structures.add(described);
  return structures.add(test::System{.product = "behind"});
}

TEST_F(SMBIOSTableTest, repeatedStructuresBeyondTheLimitAreSkippedButCounted) {
  EXPECT_EQ(parse(repeated(81, test::Processor{})).getTable4Total(), 80);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  EXPECT_EQ(m_table->getTable4PopulatedTotal(), 80);
  EXPECT_EQ(parse(repeated(13, test::MemoryModule{})).getTable6Total(), 12);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  EXPECT_EQ(parse(repeated(21, test::Connector{})).getTable8Total(), 20);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  EXPECT_EQ(parse(repeated(21, test::Slot{})).getTable9Total(), 20);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  EXPECT_EQ(parse(repeated(21, test::OnBoardDevice{})).getTable10Total(), 20);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  EXPECT_EQ(parse(repeated(1001, test::MemoryDevice{})).getTable17Total(), 1000);
  EXPECT_STREQ(m_table->getTable1()->getProduct(), "behind");
  const FirmwareTable many = repeated(81, test::Processor{});
  EXPECT_EQ(parse(many.bytes(), 81).getTable1(), nullptr);
}

TEST_F(SMBIOSTableTest, indexedRecordsEndAtTheirCount) {
  const SMBIOSTable& parsed =
      parse(table().add(test::Slot{.name = "A"}).add(test::Slot{.name = "B"}));
  EXPECT_STREQ(parsed.getTable9(1)->getSlotDesignation(), "B");
  for (int i : {-1, 2, INT_MIN, INT_MAX}) {
    EXPECT_EQ(parsed.getTable4(i), nullptr);
    EXPECT_EQ(parsed.getTable6(i), nullptr);
    EXPECT_EQ(parsed.getTable8(i), nullptr);
    EXPECT_EQ(parsed.getTable9(i), nullptr);
    EXPECT_EQ(parsed.getTable10(i), nullptr);
    EXPECT_EQ(parsed.getTable17(i), nullptr);
  }
}

TEST_F(SMBIOSTableTest, onlyPopulatedCentralProcessorsCountAsSuch) {
  const SMBIOSTable& parsed = parse(table()
                                        .add(test::Processor{.status = 0x41})
                                        .add(test::Processor{.status = 0x01})
                                        .add(test::Processor{.type = 4, .status = 0x41})
                                        .add(test::Processor{.status = 0x40}));
  EXPECT_EQ(parsed.getTable4Total(), 4);
  EXPECT_EQ(parsed.getTable4PopulatedTotal(), 2);
}

TEST_F(SMBIOSTableTest, oemAndUnknownStructuresAreSteppedOver) {
  const SMBIOSTable& parsed = parse(table()
                                        .add(Structure(128))
                                        .add(Structure(255).strings({"a", "b"}))
                                        .add(Structure(7).dword(0))
                                        .add(Structure(126).strings({"inactive"}))
                                        .add(Structure(32).raw(std::string(7, '\0')))
                                        .add(test::System{.product = "P"}));
  EXPECT_STREQ(parsed.getTable1()->getProduct(), "P");
}

// --- where the walk ends ---

TEST_F(SMBIOSTableTest, endOfTableStructureEndsTheWalkBeforeTheCount) {
  const FirmwareTable structures =
      table().add(test::EndOfTable{}).add(test::System{.product = "behind"});
  EXPECT_EQ(parse(structures.bytes(), 65535).getTable1(), nullptr);
}

TEST_F(SMBIOSTableTest, walkEndsAtTheAnnouncedCount) {
  const FirmwareTable structures = table().add(test::Slot{}).add(test::Slot{}).add(test::Slot{});
  EXPECT_EQ(parse(structures.bytes(), 2).getTable9Total(), 2);
  EXPECT_EQ(parse(structures.bytes(), 0).getTable9Total(), 0);
}

TEST_F(SMBIOSTableTest, walkEndsFourBytesBeforeTheTablesEnd) {
  EXPECT_EQ(parse(std::string("\x09\x04\0\0", 4), 1).getTable9Total(), 0);
  EXPECT_EQ(parse(std::string("\x09\x04\0\0\0", 5), 1).getTable9Total(), 1);
}

TEST_F(SMBIOSTableTest, countTooLargeEndsWithTheTable) {
  const FirmwareTable structures = table().add(test::Slot{}).add(test::Slot{});
  EXPECT_EQ(parse(structures.bytes(), 65535).getTable9Total(), 2);
}

// --- skipping ---

TEST_F(SMBIOSTableTest, nextStructureLiesBehindTwoZeros) {
  const std::string bytes = table().add(Structure(9).word(0).strings({"ab", "c"})).bytes();
  TableBytes buffer(static_cast<int>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), buffer.data());
  EXPECT_EQ(parse(bytes, 1).getNextType(buffer, 0), static_cast<int>(bytes.size()));
}

TEST_F(SMBIOSTableTest, memoryControllerIsTakenToHaveNoStrings) {
  const std::string bare("\x05\x06\0\0\x11\x22\x01\x1b", 8);
  TableBytes buffer(static_cast<int>(bare.size()));
  std::copy(bare.begin(), bare.end(), buffer.data());
  EXPECT_EQ(parse(bare, 1).getNextType(buffer, 0), 6);
  buffer.data()[6] = 0;
  buffer.data()[7] = 0;
  EXPECT_EQ(m_table->getNextType(buffer, 0), 8);
}

TEST_F(SMBIOSTableTest, skippingWithoutTerminatorStopsBehindTheTable) {
  std::string bytes("\x80\x04\0\0", 4);
  bytes += std::string(60000, 'x');
  TableBytes buffer(static_cast<int>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), buffer.data());
  EXPECT_EQ(parse(bytes, 10).getNextType(buffer, 0), static_cast<int>(bytes.size()) + 2);
}

// Memory controllers of old firmware are followed at once by the next structure, or by zeros.
TEST_F(SMBIOSTableTest, structuresBehindAMemoryControllerAreFound) {
  for (const size_t zeros : {0u, 1u, 2u, 3u}) {
    std::string bytes("\x05\x10\0\0\x03\x04\x03\x03\x09\x04\0\0\x05\x02\x04\x04", 16);
    bytes += std::string(zeros, '\0') + table().add(test::System{.product = "P"}).bytes();
    parse(bytes, 2);
    ASSERT_NE(m_table->getTable1(), nullptr) << zeros;
    EXPECT_EQ(m_table->getTable5()->getMaximumMemoryModuleSize(), 9);
  }
}

TEST_F(SMBIOSTableTest, structuresBehindAMemoryArrayAreFound) {
  for (const size_t zeros : {1u, 2u, 3u}) {
    std::string bytes("\x10\x0F\0\0\x03\x03\x05\0\0\x40\0\xFE\xFF\x04\0", 15);
    bytes += std::string(zeros, '\0') + table().add(test::System{.product = "P"}).bytes();
    parse(bytes, 2);
    ASSERT_NE(m_table->getTable1(), nullptr) << zeros;
    EXPECT_EQ(m_table->getTable16()->getMaxCapacity(), 4u << 20);
  }
}

// One byte behind it is skipped whatever it holds.
TEST_F(SMBIOSTableTest, byteBehindAMemoryArrayIsNeverRead) {
  std::string bytes(
      "\x10\x0F\0\0\x03\x03\x05\0\0\x40\0\xFE\xFF\x04\0"
      "x",
      16);
  bytes += table().add(test::System{.product = "P"}).bytes();
  EXPECT_STREQ(parse(bytes, 2).getTable1()->getProduct(), "P");
}

// The zeros are taken to end with a type byte, and that of a BIOS structure is one of them:
// firmware puts it first.
TEST_F(SMBIOSTableTest, biosStructureBehindMemoryControllerOrArrayIsNotSeen) {
  const test::Bios bios{.vendor = "V"};
  EXPECT_EQ(parse(table().add(test::MemoryController{}).add(bios)).getTable0(), nullptr);
  EXPECT_EQ(parse(table().add(test::MemoryArray{}).add(bios)).getTable0(), nullptr);
  EXPECT_NE(parse(table().add(bios).add(test::MemoryArray{})).getTable0(), nullptr);
}

// --- strings ---

TEST_F(SMBIOSTableTest, emptyStringSetHasOneEmptyString) {
  const SMBIOSTable& parsed = parse(table().add(Structure(9).byte(1).dword(0).dword(0)));
  EXPECT_STREQ(parsed.getTable9(0)->getSlotDesignation(), "");
  EXPECT_STREQ(parsed.getTable9(0)->stringFromIndex(1), "");
  EXPECT_EQ(parsed.getTable9(0)->stringFromIndex(2), nullptr);
}

TEST_F(SMBIOSTableTest, stringNumberZeroAndMissingStringsAreNull) {
  const SMBIOSTable& parsed =
      parse(table().add(Structure(2).byte(0).byte(1).byte(2).byte(200).strings({"only"})));
  EXPECT_EQ(parsed.getTable2()->getManufacturer(), nullptr);
  EXPECT_STREQ(parsed.getTable2()->getProduct(), "only");
  EXPECT_EQ(parsed.getTable2()->getVersion(), nullptr);
  EXPECT_EQ(parsed.getTable2()->getSerialNumber(), nullptr);
  for (int n : {-1, 0, 2, 15, 16, INT_MIN, INT_MAX}) {
    EXPECT_EQ(parsed.getTable2()->stringFromIndex(n), nullptr) << n;
  }
}

TEST_F(SMBIOSTableTest, stringsBeyondTheFifteenthAreDropped) {
  std::vector<std::string> texts;
  for (int i = 1; i <= 300; ++i) texts.push_back("text" + std::to_string(i));
  const SMBIOSTable& parsed =
      parse(table()
                .add(Structure(2).byte(15).byte(16).byte(1).byte(255).strings(texts))
                .add(test::System{.product = "behind"}));
  EXPECT_STREQ(parsed.getTable2()->getManufacturer(), "text15");
  EXPECT_EQ(parsed.getTable2()->getProduct(), nullptr);
  EXPECT_STREQ(parsed.getTable2()->getVersion(), "text1");
  EXPECT_EQ(parsed.getTable2()->getSerialNumber(), nullptr);
  EXPECT_STREQ(parsed.getTable1()->getProduct(), "behind");
}

TEST_F(SMBIOSTableTest, stringOfSixtyThousandBytesIsKeptWhole) {
  const std::string large(60000, 'x');
  const SMBIOSTable& parsed =
      parse(table().add(test::System{.product = large, .serial = "S"}).add(test::Slot{}));
  EXPECT_EQ(parsed.getTable1()->getProduct(), large);
  EXPECT_STREQ(parsed.getTable1()->getSerialNumber(), "S");
  EXPECT_EQ(parsed.getTable9Total(), 1);
}

TEST_F(SMBIOSTableTest, highBytesAreKeptAsTheyAre) {
  EXPECT_STREQ(parse(table().add(test::System{.product = "\x80\xFFz"})).getTable1()->getProduct(),
               "\x80\xFFz");
}

// --- malformed tables: defined values, every one of them ---

TEST_F(SMBIOSTableTest, lengthBytesBelowTheHeaderAreDefined) {
  for (int type = 0; type < 256; ++type) {
    for (int length = 0; length < 4; ++length) {
      std::string bytes{static_cast<char>(type), static_cast<char>(length), 1, 2};
      bytes += table().add(test::System{.product = "P"}).bytes();
      parse(bytes, 65535);
    }
  }
}

TEST_F(SMBIOSTableTest, structuresThatEndPastTheTableAreDefined) {
  for (int type = 0; type < 256; ++type) {
    const std::string bytes{static_cast<char>(type), '\xFF', 1, 2, 1, 2, 3, 4};
    EXPECT_LE(parse(bytes, 65535).getTable4Total(), 1);
  }
}

TEST_F(SMBIOSTableTest, everyTruncationIsDefined) {
  const std::string whole = table()
                                .add(test::Bios{.vendor = "Vendor", .date = "01/01/2001"})
                                .add(test::System{.product = "Product"})
                                .add(test::MemoryController{.slots = 4})
                                .add(test::MemoryArray{.devices = 2})
                                .add(test::MemoryDevice{.locator = "DIMM0"})
                                .bytes();
  for (size_t length = 0; length <= whole.size(); ++length) parse(whole.substr(0, length), 5);
  EXPECT_EQ(text(m_table->getTable17(0)->getDeviceLocator()), "DIMM0");
}

TEST_F(SMBIOSTableTest, tableOfOneByteValueIsDefined) {
  for (int value = 0; value < 256; ++value) {
    const std::string bytes(1000, static_cast<char>(value));
    parse(bytes, 65535);
  }
}

TEST_F(SMBIOSTableTest, dumpPrintsEveryRecord) {
  SMBIOSTable& parsed = parse(table()
                                  .add(test::Bios{.vendor = "the vendor"})
                                  .add(test::Connector{"inner", 1, "outer", 2, 16})
                                  .add(test::MemoryDevice{.size = 512, .locator = "the locator"}));
  testing::internal::CaptureStdout();
  parsed.dump();
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.find("\n-SMBIOS Table -------------------------------\n   revision    : x24\n   "
                     "numTables   : 3\n   totalLength : "),
            0u);
  for (const char* expected :
       {"\n\nSMBIOS Header -----------------------------------------------------------\n   Type  : "
        "0\n   Length: x0018",
        "the vendor", "inner", "outer", "the locator", "\n   Type  : 17\n"}) {
    EXPECT_NE(out.find(expected), std::string::npos) << expected;
  }
  EXPECT_EQ(out.back(), '\n');
}

TEST_F(SMBIOSTableTest, dumpGoesByTypeNotByPlaceInTheTable) {
  SMBIOSTable& parsed = parse(table()
                                  .add(test::HardwareSecurity{0x55})
                                  .add(test::Battery{.name = "B"})
                                  .add(test::MemoryDevice{})
                                  .add(test::MemoryArray{})
                                  .add(test::OemStrings{{"never"}})
                                  .add(test::OnBoardDevice{0x83, "Video"})
                                  .add(test::Slot{})
                                  .add(test::Connector{})
                                  .add(test::MemoryModule{})
                                  .add(test::MemoryController{})
                                  .add(test::Processor{})
                                  .add(test::MemoryDevice{})
                                  .add(test::Processor{})
                                  .add(test::Enclosure{})
                                  .add(test::Baseboard{})
                                  .add(test::System{})
                                  .add(test::Bios{}));
  testing::internal::CaptureStdout();
  parsed.dump();
  std::istringstream lines(testing::internal::GetCapturedStdout());
  std::vector<int> types;
  const std::string label = "   Type  : ";
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(label)) types.push_back(std::stoi(line.substr(label.size())));
  }
  EXPECT_EQ(types, (std::vector<int>{0, 1, 2, 3, 4, 4, 5, 6, 8, 9, 10, 16, 17, 17, 22, 24}));
}

}  // namespace
}  // namespace quenlor
