#include "readers/dmi/DmiMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "readers/dmi/DmiReader.h"
#include "tests/readers/dmi/DmiImages.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::Structure;

constexpr char kMemory[] = "/dev/mem";
constexpr size_t kMemorySize = 0x200000;

// An old machine: a character device /dev/mem, nothing of /sys/firmware/dmi.
class DmiMemoryTest : public testing::Test {
 protected:
  DmiMemoryTest() : m_memory(kMemorySize, '\0') {
    machine.devices[kMemory].type = S_IFCHR;
    machine.devices[kMemory].map = [this](size_t length,
                                          off_t offset) -> std::optional<std::string> {
      const auto start = static_cast<size_t>(offset);
      if (start + length > m_memory.size()) return {};
      return m_memory.substr(start, length);
    };
  }

  void put(size_t address, const std::string& bytes) {
    m_memory.replace(address, bytes.size(), bytes);
  }

  void addTable(size_t address = 0xE8010) {
    const std::string table = test::tableOf({Structure(1).byte(0).byte(0).byte(0).text("S1")});
    put(address, table);
    put(0xF5430, test::entryPoint32({2, 3}, static_cast<uint16_t>(table.size()), 1,
                                    static_cast<uint32_t>(address)));
  }

  bool wasOpened() const {
    return std::find(machine.opened.begin(), machine.opened.end(), kMemory) != machine.opened.end();
  }

  FakeHost machine;
  std::string m_memory;
};

TEST_F(DmiMemoryTest, oldKernelsTableIsFoundInMemory) {
  addTable();
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kTable);
  EXPECT_EQ(table.version, (DmiVersion{2, 3}));
  EXPECT_EQ(table.system->serial, "S1");
  EXPECT_EQ(std::count(machine.opened.begin(), machine.opened.end(), kMemory), 1);
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.openMappings(), 0);
}

TEST_F(DmiMemoryTest, entryPointMayLieInTheLastParagraph) {
  const std::string table = test::tableOf({Structure(1).byte(0).byte(0).byte(0).text("S9")});
  put(0x100000, table);
  put(0xFFFE0, test::entryPoint64({3, 0}, static_cast<uint32_t>(table.size()), 0x100000));
  EXPECT_EQ(readDmi().system->serial, "S9");
}

TEST_F(DmiMemoryTest, isNotOpenedByAUser) {
  addTable();
  machine.user = 1000;
  EXPECT_FALSE(readDmi().system);
  EXPECT_FALSE(wasOpened());
}

TEST_F(DmiMemoryTest, isNotOpenedWhereTheKernelHasItsOwnDirectory) {
  addTable();
  machine.directories["/sys/firmware/dmi"] = {};
  EXPECT_FALSE(readDmi().system);
  EXPECT_FALSE(wasOpened());
}

TEST_F(DmiMemoryTest, isNotOpenedUnderLockdown) {
  addTable();
  EXPECT_FALSE(readDmi(true).system);
  EXPECT_FALSE(wasOpened());
  EXPECT_TRUE(readDmi(false).system);
}

TEST_F(DmiMemoryTest, isNotOpenedUnlessItIsACharacterDevice) {
  machine.devices.clear();
  addTable();
  machine.files[kMemory] = m_memory;
  EXPECT_FALSE(readDmi().system);
  EXPECT_FALSE(wasOpened());
  EXPECT_EQ(machine.files.count(kMemory), 1u);
}

TEST_F(DmiMemoryTest, missingDeviceIsNotMade) {
  machine.devices.clear();
  EXPECT_FALSE(readDmi().system);
  EXPECT_EQ(machine.files.count(kMemory), 0u);
}

TEST_F(DmiMemoryTest, isNotOpenedInAnEncryptedGuestOfAmd) {
  addTable();
  machine.cpuidLeaves[{1, 0}] = {0, 0, 1u << 31, 0};
  machine.cpuidLeaves[{0x8000001F, 0}] = {1u << 1, 0, 0, 0};
  EXPECT_FALSE(readDmi().system);
  EXPECT_FALSE(wasOpened());
}

// The same leaf on bare metal says that the processor could encrypt guests.
TEST_F(DmiMemoryTest, hostThatCanEncryptGuestsIsNone) {
  addTable();
  machine.cpuidLeaves[{1, 0}] = {};
  machine.cpuidLeaves[{0x8000001F, 0}] = {0xFF, 0, 0, 0};
  EXPECT_TRUE(readDmi().system);
}

TEST_F(DmiMemoryTest, isNotOpenedInAnEncryptedGuestOfIntel) {
  addTable();
  machine.cpuidLeaves[{0x21, 0}] = {0, 0x65746E49, 0x20202020, 0x5844546C};
  EXPECT_TRUE(isEncryptedGuest());
  EXPECT_FALSE(readDmi().system);
  EXPECT_FALSE(wasOpened());
}

TEST_F(DmiMemoryTest, pagesThatTheKernelRefusesAreNoTable) {
  addTable();
  const auto map = machine.devices[kMemory].map;
  machine.devices[kMemory].map = [map](size_t length, off_t offset) -> std::optional<std::string> {
    return offset >= 0xF0000 ? map(length, offset) : std::nullopt;
  };
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kNone);
  EXPECT_EQ(machine.openMappings(), 0);
}

TEST_F(DmiMemoryTest, efiSystabTellsTheAddress) {
  const std::string table = test::tableOf({Structure(1).byte(0).byte(0).byte(0).text("EFI")});
  put(0x181000, table);
  put(0x180FF8,
      test::entryPoint64({3, 2}, static_cast<uint32_t>(table.size()), 0x181000).substr(0, 8));
  put(0x180F00, test::entryPoint64({3, 2}, static_cast<uint32_t>(table.size()), 0x181000));
  machine.files["/sys/firmware/efi/systab"] = "ACPI20=0x7ff\nSMBIOS3=0x180f00\nSMBIOS=0x1000\n";
  EXPECT_EQ(readDmi().system->serial, "EFI");
}

TEST_F(DmiMemoryTest, absurdAddressesAreNoTable) {
  for (const uint64_t address : {uint64_t{0xFFFFFFFFFFFFFFFF}, uint64_t{1} << 63, uint64_t{0}}) {
    put(0xF0000, test::entryPoint64({3, 2}, 0xFFFFFFFF, address));
    EXPECT_FALSE(readDmi().system);
  }
}

TEST_F(DmiMemoryTest, memoryWithoutEntryPointHasNoTable) {
  EXPECT_EQ(readDmi().outcome.status(), OutcomeStatus::kNoSource);
}

TEST(DmiMemoryTextTest, efiSystab) {
  EXPECT_EQ(parseEfiSystab("ACPI20=0x1\nSMBIOS=0xf05b0\n"), 0xF05B0u);
  EXPECT_EQ(parseEfiSystab("SMBIOS=0x1\nSMBIOS3=0x7B5F2000\n"), 0x7B5F2000u);
  EXPECT_FALSE(parseEfiSystab("ACPI=0x1\n"));
  EXPECT_FALSE(parseEfiSystab("XSMBIOS=0x1\n"));
  EXPECT_FALSE(parseEfiSystab("SMBIOS="));
  EXPECT_FALSE(parseEfiSystab("SMBIOS=0xzz"));
  EXPECT_FALSE(parseEfiSystab(""));
}

}  // namespace
}  // namespace quenlor
