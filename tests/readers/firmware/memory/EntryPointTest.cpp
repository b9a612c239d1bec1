#include "readers/firmware/memory/EntryPoint.h"

#include <gtest/gtest.h>

#include <string>

#include "readers/firmware/memory/PhysicalMemory.h"
#include "tests/firmware/Firmware.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::Checksum;
using test::Firmware;
using test::FirmwareTable;
using test::Structure;

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

FirmwareTable systemTable() {
  return FirmwareTable({2, 4})
      .add(test::Bios{.vendor = "Vendor", .version = "1", .date = "01/01/2001"})
      .add(test::System{"Maker", "Product", "Version", "Serial", {}});
}

// Memory as a device shows it: always whole pages, whatever length is asked for.
void putMemoryDevice(test::FakeHost& machine, const std::string& memory) {
  machine.devices["/dev/mem"].map = [memory](size_t length, off_t offset) {
    constexpr size_t kPage = 4096;
    return memory.substr(static_cast<size_t>(offset), (length + kPage - 1) / kPage * kPage);
  };
}

// --- find_signature ---

std::string bufferWithAnchorAt(size_t size, size_t at) {
  std::string buffer(size, '\0');
  return buffer.replace(at, 4, "_SM_");
}

TEST(FindSignature, findsOnlySixteenByteBoundaries) {
  for (size_t at : {0u, 16u, 480u}) {
    const std::string buffer = bufferWithAnchorAt(512, at);
    EXPECT_EQ(find_signature(bytesOf(buffer), buffer.size()), bytesOf(buffer) + at);
  }
  for (size_t at : {1u, 8u, 24u}) {
    const std::string buffer = bufferWithAnchorAt(512, at);
    EXPECT_EQ(find_signature(bytesOf(buffer), buffer.size()), nullptr) << at;
  }
}

TEST(FindSignature, anchorNeedsSixteenBytesToTheEnd) {
  const std::string buffer = bufferWithAnchorAt(64, 48);
  EXPECT_EQ(find_signature(bytesOf(buffer), 64), bytesOf(buffer) + 48);
  EXPECT_EQ(find_signature(bytesOf(buffer), 63), nullptr);
  const std::string start = bufferWithAnchorAt(16, 0);
  EXPECT_EQ(find_signature(bytesOf(start), 15), nullptr);
  EXPECT_EQ(find_signature(bytesOf(start), 0), nullptr);
}

TEST(FindSignature, firstOfSeveralWins) {
  std::string buffer = bufferWithAnchorAt(512, 32);
  buffer.replace(64, 4, "_SM_");
  EXPECT_EQ(find_signature(bytesOf(buffer), buffer.size()), bytesOf(buffer) + 32);
}

// --- find_table_ep ---

class FindTableEpTest : public testing::Test {
 protected:
  int find(const Firmware& firmware) { return findIn(firmware.memory()); }
  int findIn(const std::string& memory) {
    m_machine.files["/dev/mem"] = memory;
    const int result = find_table_ep(&m_found);
    EXPECT_EQ(m_machine.openDescriptors(), 0);
    return result;
  }

  test::FakeHost m_machine;
  smbios_table_entry_point m_found;
};

TEST_F(FindTableEpTest, copiesTheEntryPoint) {
  Firmware firmware(systemTable());
  firmware.tableAddress = 0xE1234;
  ASSERT_EQ(find(firmware), 0);
  EXPECT_EQ(m_found.majorVersion(), 2u);
  EXPECT_EQ(m_found.tableAddress(), 0xE1234u);
  EXPECT_EQ(m_found.tableLength(), firmware.table.bytes().size());
  EXPECT_EQ(m_found.structureCount(), 2u);
}

TEST_F(FindTableEpTest, wrongChecksumsAreRejected) {
  Firmware whole(systemTable());
  whole.entryPointChecksum = Checksum::kWrong;
  EXPECT_EQ(find(whole), -1);
  Firmware intermediate(systemTable());
  intermediate.intermediateChecksum = Checksum::kWrong;
  EXPECT_EQ(find(intermediate), -1);
}

TEST_F(FindTableEpTest, badFirstAnchorIsFinalEvenIfAGoodOneFollows) {
  Firmware bad(systemTable());
  bad.entryPointChecksum = Checksum::kWrong;
  Firmware good(systemTable());
  good.otherMemory[0xF1000] = bad.entryPoint(0);
  EXPECT_EQ(find(good), -1);
  good.otherMemory.clear();
  EXPECT_EQ(find(good), 0);
}

TEST_F(FindTableEpTest, majorVersionOneIsRejected) {
  EXPECT_EQ(find(Firmware(FirmwareTable({1, 9}))), -1);
  EXPECT_EQ(find(Firmware(FirmwareTable({0, 0}))), -1);
  EXPECT_EQ(find(Firmware(FirmwareTable({3, 0}))), 0);
}

// Only the sum of the intermediate area counts, not its text.
TEST_F(FindTableEpTest, intermediateAnchorIsNotCompared) {
  const Firmware firmware(systemTable());
  std::string memory = firmware.memory();
  std::swap(memory[firmware.entryPointAddress + 17], memory[firmware.entryPointAddress + 18]);
  EXPECT_EQ(findIn(memory), 0);
}

TEST_F(FindTableEpTest, lengthByteThatLeadsPastTheMappingIsRejected) {
  Firmware firmware(systemTable());
  firmware.entryPointAddress = 0xFFFD0;
  EXPECT_EQ(find(firmware), 0);
  firmware.entryPointLength = 0xFF;
  EXPECT_EQ(find(firmware), -1);
}

// The searched range ends two bytes before the segment does, an entry point only with it.
TEST_F(FindTableEpTest, entryPointThatEndsTheSegmentIsFound) {
  Firmware firmware(systemTable());
  firmware.entryPointAddress = 0xFFFE0;
  putMemoryDevice(m_machine, firmware.memory());
  ASSERT_EQ(find_table_ep(&m_found), 0);
  EXPECT_EQ(m_found.tableAddress(), firmware.tableAddress);
  EXPECT_EQ(m_found.bytes[30], 0x24);
  EXPECT_EQ(m_machine.openDescriptors(), 0);
}

TEST_F(FindTableEpTest, anchorInTheLastParagraphIsNotSeen) {
  std::string memory(test::kFirstMegabyte, '\0');
  memory.replace(0xFFFF0, 16, Firmware(systemTable()).entryPoint(0xF5000).substr(0, 16));
  putMemoryDevice(m_machine, memory);
  EXPECT_EQ(find_table_ep(&m_found), -1);
}

TEST_F(FindTableEpTest, memoryWithoutAnchorOrTooShortHasNone) {
  EXPECT_EQ(findIn(std::string(test::kFirstMegabyte, '\0')), -1);
  EXPECT_EQ(findIn(Firmware(systemTable()).memory().substr(0, 0xFB000)), -1);
  EXPECT_EQ(findIn(""), -1);
}

TEST_F(FindTableEpTest, missingMemoryStaysMissing) {
  EXPECT_EQ(find_table_ep(&m_found), -1);
  EXPECT_TRUE(m_machine.files.empty());
  EXPECT_TRUE(m_machine.opened.empty());
}

// --- find_entry ---

smbios_table_entry_point announcing(uint64_t address, size_t length, unsigned count) {
  smbios_table_entry_point ep;
  const auto put = [&ep](size_t at, size_t size, uint64_t value) {
    for (size_t i = 0; i < size; ++i) ep.bytes[at + i] = static_cast<unsigned char>(value >> 8 * i);
  };
  put(22, 2, length);
  put(24, 4, address);
  put(28, 2, count);
  return ep;
}

class FindEntryTest : public testing::Test {
 protected:
  // In a table whose last byte is the last one of a page; nobody may touch the page behind it.
  int find(const std::string& table, unsigned count) {
    constexpr uint64_t kTableEnd = 0x20000;
    const uint64_t start = kTableEnd - table.size();
    return findIn(std::string(start, 'x') + table, announcing(start, table.size(), count));
  }
  int find(const FirmwareTable& table) { return find(table.bytes(), table.count()); }

  int findIn(const std::string& memory, const smbios_table_entry_point& ep) {
    test::FakeHost machine;
    putMemoryDevice(machine, memory);
    const uint64_t start = ep.tableAddress();
    slm_handle handle = nullptr;
    const void* mapped = slm_phys_mmap(start, start + ep.tableLength(), kPageAligned, &handle);
    if (mapped == kMapFailed) return 0;
    const auto* table = static_cast<const unsigned char*>(mapped) + slm_page_off(start);
    const int count = find_entry(table, &ep, &m_found);
    EXPECT_EQ(slm_phys_munmap(&handle), 0);
    return count;
  }

  smbios_sysinfo_table_entry m_found;
};

TEST_F(FindEntryTest, copiesHeadAndStringsOfTheSystemStructure) {
  ASSERT_EQ(find(systemTable()), 4);
  EXPECT_EQ(m_found.strings, (std::vector<std::string>{"Maker", "Product", "Version", "Serial"}));
  EXPECT_EQ(m_found.manufacturer(), 1u);
  EXPECT_EQ(m_found.product(), 2u);
  EXPECT_EQ(m_found.version(), 3u);
  EXPECT_EQ(m_found.serialNumber(), 4u);
}

TEST_F(FindEntryTest, countIsTheLargestStringNumber) {
  FirmwareTable table({2, 4});
  table.add(Structure(1).byte(0).byte(3).byte(1).byte(0).strings({"one", "two", "three", "four"}));
  ASSERT_EQ(find(table), 3);
  EXPECT_EQ(m_found.strings, (std::vector<std::string>{"one", "two", "three"}));
}

TEST_F(FindEntryTest, allStringNumbersZeroCountAsNothing) {
  EXPECT_EQ(find(FirmwareTable({2, 4}).add(Structure(1).dword(0).strings({"unused"}))), 0);
}

TEST_F(FindEntryTest, noStructuresAnnouncedNothingFound) {
  EXPECT_EQ(find(systemTable().bytes(), 0), 0);
}

TEST_F(FindEntryTest, structuresBeyondTheAnnouncedCountAreNotSeen) {
  EXPECT_EQ(find(systemTable().bytes(), 1), 0);
  EXPECT_EQ(find(systemTable().bytes(), 2), 4);
}

TEST_F(FindEntryTest, structuresWithoutStringsAreSteppedOver) {
  FirmwareTable table({2, 4});
  table.add(Structure(126)).add(Structure(128).dword(7)).add(test::System{.product = "P"});
  ASSERT_EQ(find(table), 1);
  EXPECT_EQ(m_found.strings, std::vector<std::string>{"P"});
}

TEST_F(FindEntryTest, onlyTheCountEndsTheWalkNotTheAnnouncedLength) {
  const FirmwareTable table = systemTable();
  const std::string memory = std::string(0x10000, 'x') + table.bytes() + std::string(8192, 'x');
  for (const size_t length : {1u, 4u, 24u, 30u}) {
    ASSERT_EQ(findIn(memory, announcing(0x10000, length, 2)), 4) << length;
    EXPECT_EQ(m_found.strings[3], "Serial");
    EXPECT_EQ(findIn(memory, announcing(0x10000, length, 1)), 0) << length;
  }
}

TEST_F(FindEntryTest, walkEndsWithTheMappingsLastPage) {
  const std::string gap = Structure(9).strings({std::string(4090, 'x')}).encode(0);
  const std::string memory = std::string(0x10000, 'x') + gap + systemTable().bytes();
  EXPECT_EQ(findIn(memory, announcing(0x10000, 10, 3)), 0);
  EXPECT_EQ(findIn(memory, announcing(0x10000, 4096, 3)), 0);
  EXPECT_EQ(findIn(memory, announcing(0x10000, 4097, 3)), 4);
}

TEST_F(FindEntryTest, tableWithoutSystemStructureEndsWithItsPage) {
  const FirmwareTable table =
      FirmwareTable({2, 4}).add(test::Baseboard{.manufacturer = "Maker"}).add(Structure(3));
  EXPECT_EQ(find(table.bytes(), 65535), 0);
}

TEST_F(FindEntryTest, everyTruncationIsDefined) {
  const std::string whole = systemTable().bytes();
  for (size_t length = 0; length <= whole.size(); ++length) {
    find(whole.substr(0, length), 2);
    for (const std::string& text : m_found.strings) EXPECT_LT(text.size(), 20u);
  }
}

TEST_F(FindEntryTest, truncatedStringsAreCutOrEmpty) {
  const std::string whole = systemTable().bytes();
  ASSERT_EQ(find(whole.substr(0, whole.find("Product") + 3), 2), 4);
  EXPECT_EQ(m_found.strings, (std::vector<std::string>{"Maker", "Pro", "", ""}));
}

TEST_F(FindEntryTest, lengthBytesBelowTheHeaderAreDefined) {
  for (const uint8_t length : std::initializer_list<uint8_t>{0, 1, 2, 3}) {
    FirmwareTable table({2, 4});
    table.add(Structure(9).claimLength(length)).add(test::System{.product = "P"});
    find(table.bytes(), 65535);
  }
}

TEST_F(FindEntryTest, lengthByteThatLeadsPastTheTableFindsNothing) {
  FirmwareTable table({2, 4});
  table.add(Structure(9).claimLength(255)).add(test::System{.product = "P"});
  EXPECT_EQ(find(table), 0);
  ASSERT_EQ(find(FirmwareTable({2, 4}).add(
                Structure(1).byte(1).byte(2).byte(0).byte(0).claimLength(255))),
            2);
  EXPECT_EQ(m_found.strings, (std::vector<std::string>{"", ""}));
}

TEST_F(FindEntryTest, stringNumberBeyondTheSetIsEmpty) {
  FirmwareTable table({2, 4});
  table.add(Structure(1).byte(1).byte(255).byte(0).byte(0).strings({"one"}));
  ASSERT_EQ(find(table), 255);
  EXPECT_EQ(m_found.strings[0], "one");
  EXPECT_EQ(m_found.strings[254], "");
}

TEST_F(FindEntryTest, missingTerminatorFindsNothing) {
  EXPECT_EQ(find(std::string("\x02\x08\0\0\x01\0\0\0", 8) + std::string(60000, 'x'), 10), 0);
}

}  // namespace
}  // namespace quenlor
