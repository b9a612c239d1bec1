// The classic walk and this one over the same tables of SMBIOS 2.x: they report the same, but where
// the classic one stops at what its inventory keeps.
//
// Meant to differ, and so not generated here: UUIDs of FF bytes, families and sizes that send the
// reader to an extended field (FE, 7FFF, 80000000), structures without a final zero, and more
// processors, modules and slots than the classic inventory keeps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "readers/dmi/DmiReader.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using Facts = std::vector<std::string>;

std::string shown(const char* text) {
  return text == nullptr ? "-" : "'" + std::string(text) + "'";
}
std::string shown(const DmiText& text) { return text ? "'" + *text + "'" : "-"; }

template <class... Values>
void note(Facts& facts, const std::string& what, const Values&... values) {
  std::string fact = what;
  ((fact += " " + values), ...);
  facts.push_back(fact);
}

template <class Number>
std::string number(std::optional<Number> value) {
  return std::to_string(uint64_t{value.value_or(0)});
}

std::string number(uint64_t value) { return std::to_string(value); }

std::string hex(const std::optional<DmiUuid>& uuid) {
  if (!uuid) return "-";
  std::string text;
  for (const uint8_t byte : *uuid) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", byte);
    text += digits;
  }
  return "'" + text + "'";
}

// --- the classic walk's ---

void noteMachine(Facts& facts, const SMBIOSTable& table) {
  if (const auto* bios = table.getTable0()) {
    note(facts, "bios", shown(bios->getVendor()), shown(bios->getVersion()),
         shown(bios->getReleaseDate()), number(static_cast<uint64_t>(bios->getROMSizeKB())));
  }
  if (const auto* system = table.getTable1()) {
    note(facts, "system", shown(system->getManufacturer()), shown(system->getProduct()),
         shown(system->getVersion()), shown(system->getSerialNumber()),
         shown(system->getUUIDAsString()));
  }
  if (const auto* board = table.getTable2()) {
    note(facts, "board", shown(board->getManufacturer()), shown(board->getProduct()),
         shown(board->getVersion()), shown(board->getSerialNumber()));
  }
  if (const auto* enclosure = table.getTable3()) {
    note(facts, "enclosure", shown(enclosure->getManufacturer()),
         number(uint64_t{enclosure->getType() & 0x7Fu}), shown(enclosure->getVersion()),
         shown(enclosure->getSerialNumber()), shown(enclosure->getAssetTag()));
  }
  if (const auto* security = table.getTable24()) {
    note(facts, "security", number(uint64_t{static_cast<uint8_t>(security->getHWSecStatus())}));
  }
}

void noteProcessors(Facts& facts, const SMBIOSTable& table) {
  for (int i = 0; i < table.getTable4Total(); ++i) {
    const SMBIOSTable4Data& cpu = *table.getTable4(i);
    note(facts, "processor", shown(cpu.getSocket()), shown(cpu.getManufacturer()),
         shown(cpu.getVersion()), shown(cpu.getSerialNumber()), shown(cpu.getAssetTag()),
         number(uint64_t{cpu.getType()}), number(uint64_t{cpu.getFamily()}),
         number(uint64_t{cpu.getEAX()}), number(uint64_t{cpu.getEDX()}),
         number(uint64_t{cpu.getExternalClock()}), number(uint64_t{cpu.getMaxSpeed()}),
         number(uint64_t{cpu.getCurrentSpeed()}), number(uint64_t{cpu.getUpgrade()}),
         number(uint64_t{cpu.isPopulated()}));
  }
  for (int i = 0; i < table.getTable9Total(); ++i) {
    const SMBIOSTable9Data& slot = *table.getTable9(i);
    note(facts, "slot", shown(slot.getSlotDesignation()), number(uint64_t{slot.getSlotType()}),
         number(uint64_t{slot.getSlotDataBusWidth()}), number(uint64_t{slot.getCurrentUsage()}),
         number(uint64_t{slot.getSlotLength()}), number(uint64_t{slot.getSlotID()}));
  }
}

void noteMemory(Facts& facts, const SMBIOSTable& table) {
  if (const auto* controller = table.getTable5()) {
    note(facts, "controller", number(uint64_t{controller->getMaximumMemoryModuleSize()}),
         number(uint64_t{controller->getNumAssocMemorySlots()}));
  }
  for (int i = 0; i < table.getTable6Total(); ++i) {
    const SMBIOSTable6Data& module = *table.getTable6(i);
    note(facts, "module", shown(module.getSocketDesignation()),
         number(uint64_t{module.getMemoryType()}),
         number(static_cast<uint64_t>(std::max<int64_t>(module.getInstalledSizeMB(), 0))));
  }
  if (const auto* array = table.getTable16()) {
    note(facts, "array", number(uint64_t{array->getMaxCapacity()}),
         number(uint64_t{array->getNumMemDevices()}));
  }
  for (int i = 0; i < table.getTable17Total(); ++i) {
    const SMBIOSTable17Data& device = *table.getTable17(i);
    note(facts, "device", number(uint64_t{device.getSizeKB()}), shown(device.getDeviceLocator()),
         shown(device.getBankLocator()), number(uint64_t{device.getFormFactor()}),
         number(uint64_t{device.getMemoryType()}), number(uint64_t{device.getTypeDetail()}),
         shown(device.getManufacturer()), shown(device.getSerialNumber()),
         shown(device.getAssetTag()), shown(device.getPartNumber()),
         number(uint64_t{device.getSpeed()}));
  }
}

Facts factsOf(const SMBIOSTable& table) {
  Facts facts;
  noteMachine(facts, table);
  noteProcessors(facts, table);
  noteMemory(facts, table);
  return facts;
}

// --- this walk's ---

void noteMachine(Facts& facts, const DmiTable& table) {
  if (const auto& bios = table.bios) {
    note(facts, "bios", shown(bios->vendor), shown(bios->version), shown(bios->date),
         number(bios->romKiB));
  }
  if (const auto& system = table.system) {
    note(facts, "system", shown(system->manufacturer), shown(system->product),
         shown(system->version), shown(system->serial), hex(system->uuid));
  }
  if (const DmiBoard* board = table.mainBoard()) {
    note(facts, "board", shown(board->manufacturer), shown(board->product), shown(board->version),
         shown(board->serial));
  }
  if (const auto& enclosure = table.enclosure) {
    note(facts, "enclosure", shown(enclosure->manufacturer), number(enclosure->kind),
         shown(enclosure->version), shown(enclosure->serial), shown(enclosure->assetTag));
  }
  if (table.hardwareSecurity) note(facts, "security", number(table.hardwareSecurity));
}

void noteProcessors(Facts& facts, const DmiTable& table) {
  for (const DmiProcessor& cpu : table.processors) {
    note(facts, "processor", shown(cpu.socket), shown(cpu.manufacturer), shown(cpu.version),
         shown(cpu.serial), shown(cpu.assetTag), number(cpu.kind), number(cpu.family),
         number(cpu.idEax), number(cpu.idEdx), number(cpu.externalClockMhz), number(cpu.maxMhz),
         number(cpu.currentMhz), number(cpu.upgrade), number(uint64_t{cpu.isPopulated}));
  }
  for (const DmiSlot& slot : table.slots) {
    note(facts, "slot", shown(slot.designation), number(slot.kind), number(slot.width),
         number(slot.usage), number(slot.length), number(slot.id));
  }
}

void noteMemory(Facts& facts, const DmiTable& table) {
  if (const auto& controller = table.memoryController) {
    note(facts, "controller", number(controller->moduleLimitExponent), number(controller->slots));
  }
  for (const DmiMemoryModule& module : table.memoryModules) {
    note(facts, "module", shown(module.socket), number(module.kinds), number(module.installedMiB));
  }
  if (!table.memoryArrays.empty()) {
    note(facts, "array", number(table.memoryArrays[0].maxKiB), number(table.memoryArrays[0].slots));
  }
  for (const DmiMemoryDevice& device : table.memoryDevices) {
    note(facts, "device", number(device.sizeKiB), shown(device.locator), shown(device.bankLocator),
         number(device.formFactor), number(device.kind), number(device.details),
         shown(device.manufacturer), shown(device.serial), shown(device.assetTag),
         shown(device.partNumber), number(device.speedMts));
  }
}

Facts factsOf(const DmiTable& table) {
  Facts facts;
  noteMachine(facts, table);
  noteProcessors(facts, table);
  noteMemory(facts, table);
  return facts;
}

DmiTable decodedOf(const test::FirmwareTable& table) {
  const auto size = static_cast<uint16_t>(table.bytes().size());
  return decodeDmi(test::entryPoint32(table.version(), size, table.count()), table.bytes());
}

// --- generated tables ---

class Generator {
 public:
  explicit Generator(unsigned seed) : m_random(seed) {}

  test::FirmwareTable table() {
    test::FirmwareTable out({2, static_cast<uint8_t>(upTo(8))});
    if (upTo(9) != 0) addBios(out);  // firmware begins with it, where it has one
    for (unsigned i = upTo(40); i > 0; --i) addAny(out);
    out.add(test::EndOfTable{});
    return out;
  }

 private:
  unsigned upTo(unsigned last) { return static_cast<unsigned>(m_random() % (last + 1)); }
  uint8_t byte() { return static_cast<uint8_t>(upTo(255)); }
  uint16_t word() { return static_cast<uint16_t>(upTo(0xFFFE)); }

  std::string text() {
    std::string out(upTo(20), ' ');
    for (char& c : out) c = static_cast<char>(' ' + upTo('~' - ' '));
    return out;
  }

  void addBios(test::FirmwareTable& out) {
    out.add(test::Bios{.vendor = text(), .version = text(), .date = text(), .romSize = byte()});
  }

  void addAny(test::FirmwareTable& out) {
    static constexpr void (Generator::*kKinds[])(test::FirmwareTable&) = {
        &Generator::addSystem,    &Generator::addBoard,  &Generator::addEnclosure,
        &Generator::addProcessor, &Generator::addSlot,   &Generator::addOldMemory,
        &Generator::addArray,     &Generator::addDevice, &Generator::addDevice,
        &Generator::addOthers};
    (this->*kKinds[upTo(std::size(kKinds) - 1)])(out);
  }

  void addSystem(test::FirmwareTable& out) {
    test::Uuid uuid{};
    if (upTo(3) != 0) std::generate(uuid.begin(), uuid.end(), [this] { return byte(); });
    out.add(test::System{text(), text(), text(), text(), uuid, text(), text()});
  }
  void addBoard(test::FirmwareTable& out) {
    out.add(test::Baseboard{text(), text(), text(), text()});
  }
  void addEnclosure(test::FirmwareTable& out) {
    out.add(test::Enclosure{text(), byte(), text(), text(), text()});
  }
  void addProcessor(test::FirmwareTable& out) {
    out.add(test::Processor{.socket = text(),
                            .type = byte(),
                            .family = static_cast<uint8_t>(upTo(0xFD)),
                            .manufacturer = text(),
                            .eax = static_cast<uint32_t>(m_random()),
                            .edx = static_cast<uint32_t>(m_random()),
                            .version = text(),
                            .voltage = byte(),
                            .externalClock = word(),
                            .maxSpeed = word(),
                            .currentSpeed = word(),
                            .status = byte(),
                            .upgrade = byte(),
                            .serial = text(),
                            .assetTag = text(),
                            .partNumber = text()});
  }
  void addSlot(test::FirmwareTable& out) {
    if (m_slots++ < 20) out.add(test::Slot{text(), byte(), byte(), byte(), byte(), word()});
  }
  void addOldMemory(test::FirmwareTable& out) {
    if (upTo(1) == 0) {
      out.add(test::MemoryController{byte(), static_cast<uint8_t>(upTo(16))});
    } else if (m_modules++ < 12) {
      out.add(test::MemoryModule{text(), word(), byte()});
    }
  }
  void addArray(test::FirmwareTable& out) {
    out.add(test::MemoryArray{static_cast<uint32_t>(m_random()) & 0x7FFFFFFF, word()});
  }
  void addDevice(test::FirmwareTable& out) {
    uint16_t size = static_cast<uint16_t>(upTo(0xFFFF));
    if (size == 0x7FFF) size = 0x7FFE;
    out.add(test::MemoryDevice{size, byte(), text(), text(), byte(), word(), word(), text(), text(),
                               text(), text()});
  }
  void addOthers(test::FirmwareTable& out) {
    out.add(
        test::Structure(static_cast<uint8_t>(128 + upTo(127))).raw(text()).strings({"x" + text()}));
    out.add(test::OemStrings{{"x" + text(), "y" + text()}});
    out.add(test::HardwareSecurity{byte()});
  }

  std::mt19937 m_random;
  unsigned m_slots = 0;
  unsigned m_modules = 0;
};

constexpr unsigned kTables = 10000;

// The table alone, not the whole first megabyte: the walk is what is compared.
class WalkedTable {
 public:
  explicit WalkedTable(const test::FirmwareTable& table) : m_shared(small(table)) {}
  const SMBIOSTable& operator*() const { return *globalSMBIOSTable; }

 private:
  static test::Firmware small(const test::FirmwareTable& table) {
    test::Firmware firmware(table);
    firmware.tableAddress = 0xF0000;
    return firmware;
  }
  test::SharedTable m_shared;
};

TEST(ClassicWalkTest, generatedTablesTellTheSame) {
  size_t facts = 0;
  for (unsigned seed = 0; seed < kTables && !HasFailure(); ++seed) {
    const test::FirmwareTable table = Generator(seed).table();
    ASSERT_LT(table.bytes().size(), 0xA000u);
    const WalkedTable classic(table);
    const Facts expected = factsOf(*classic);
    EXPECT_EQ(factsOf(decodedOf(table)), expected) << "seed " << seed;
    facts += expected.size();
  }
  EXPECT_GT(facts, 10 * kTables);
}

class ClassicImages : public testing::TestWithParam<std::string> {};

TEST_P(ClassicImages, tellTheSame) {
  const test::Firmware firmware = *test::firmwareNamed(GetParam());
  const test::SharedTable shared(firmware);
  const Facts expected = factsOf(*globalSMBIOSTable);
  EXPECT_FALSE(expected.empty());
  EXPECT_EQ(factsOf(decodedOf(firmware.table)), expected);
}

INSTANTIATE_TEST_SUITE_P(ClassicWalkTest, ClassicImages,
                         testing::Values("old-server-2.3", "server-2.4", "vm-2.8", "table-low",
                                         "table-high", "oem-structures", "placeholders",
                                         "false-anchor"));

// The classic rules look at the minor number alone, and so lose fields of 3.0 to 3.2.
TEST(ClassicWalkTest, tablesOf30TellMoreThanTheClassicWalkSays) {
  const test::Firmware firmware = *test::firmwareNamed("table-3.0");
  const test::SharedTable shared(firmware);
  EXPECT_EQ(globalSMBIOSTable->getTable1()->getUUIDAsString(), nullptr);
  const DmiTable table = decodedOf(firmware.table);
  EXPECT_EQ(table.system->uuidText, "33221100-5544-7766-8899-aabbccddeeff");
  EXPECT_EQ(table.memoryDevices.at(0).serial, "M3000");
}

}  // namespace
}  // namespace quenlor
