#include "readers/dmi/DmiReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/readers/dmi/DmiImages.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::Structure;

constexpr char kEntryPoint[] = "/sys/firmware/dmi/tables/smbios_entry_point";
constexpr char kTable[] = "/sys/firmware/dmi/tables/DMI";

const std::string& texts(const char* name) {
  static std::string path;
  return path = std::string("/sys/class/dmi/id/") + name;
}

void addTable(FakeHost& machine, const std::string& serial = "S1") {
  const std::string table =
      test::tableOf({Structure(1).text("Maker").byte(0).byte(0).text(serial), Structure(127)});
  machine.files[kEntryPoint] = test::entryPoint64({3, 4}, 0x10000);
  machine.files[kTable] = table;
}

void addTexts(FakeHost& machine) {
  for (const auto& [name, text] : std::map<const char*, const char*>{
           {"bios_vendor", "BIOS maker\n"},
           {"bios_version", "1.0\n"},
           {"bios_date", "04/01/2024\n"},
           {"bios_release", "5.17\n"},
           {"ec_firmware_release", "1.9\n"},
           {"sys_vendor", "Maker\n"},
           {"product_name", "Product  \n"},
           {"product_version", "\n"},
           {"product_serial", "S2\n"},
           {"product_sku", "SKU\n"},
           {"product_family", "Family\n"},
           {"product_uuid", "00112233-4455-6677-8899-AABBCCDDEEFF\n"},
           {"board_vendor", "Board maker\n"},
           {"board_name", "Board\n"},
           {"board_version", "V\n"},
           {"board_serial", "B2\n"},
           {"board_asset_tag", "Tag\n"},
           {"chassis_vendor", "Case\n"},
           {"chassis_type", "10\n"},
           {"chassis_version", "C\n"},
           {"chassis_serial", "C2\n"},
           {"chassis_asset_tag", "T2\n"}}) {
    machine.files[texts(name)] = text;
  }
}

void refuse(FakeHost& machine, std::initializer_list<const char*> names) {
  for (const char* name : names) machine.openErrors[texts(name)] = EACCES;
}

void becomeUser(FakeHost& machine) {
  machine.user = 1000;
  machine.openErrors[kEntryPoint] = EACCES;
  machine.openErrors[kTable] = EACCES;
  refuse(machine, {"product_serial", "product_uuid", "board_serial", "chassis_serial"});
}

TEST(DmiReaderTest, tableIsReadOnceAndNothingElse) {
  FakeHost machine;
  addTable(machine);
  addTexts(machine);
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kTable);
  EXPECT_EQ(table.version, (DmiVersion{3, 4}));
  EXPECT_EQ(table.system->serial, "S1");
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_THAT(machine.opened, testing::ElementsAre(kEntryPoint, kTable));
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST(DmiReaderTest, addressInTheEntryPointPlaysNoRole) {
  FakeHost machine;
  addTable(machine);
  machine.files[kEntryPoint] = test::entryPoint64({3, 4}, 0x10000, 0xFFFF'FFFF'FFFF'0000);
  EXPECT_EQ(readDmi().system->serial, "S1");
}

TEST(DmiReaderTest, userGetsTheKernelsTexts) {
  FakeHost machine;
  addTable(machine);
  addTexts(machine);
  becomeUser(machine);
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kKernelTexts);
  EXPECT_FALSE(table.version);
  EXPECT_EQ(table.system->manufacturer, "Maker");
  EXPECT_FALSE(table.system->serial);
  EXPECT_FALSE(table.system->uuidText);
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(table.outcome.reason(), "serial numbers: not root; firmware table: not root");
  EXPECT_EQ(table.structureOutcome.status(), OutcomeStatus::kRefused);
  EXPECT_EQ(table.structureOutcome.reason(), "firmware table: not root");
}

TEST(DmiReaderTest, kernelsTexts) {
  FakeHost machine;
  addTexts(machine);
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kKernelTexts);
  EXPECT_EQ(table.bios->vendor, "BIOS maker");
  EXPECT_EQ(table.bios->version, "1.0");
  EXPECT_EQ(table.bios->date, "04/01/2024");
  EXPECT_EQ(table.bios->revision, "5.17");
  EXPECT_EQ(table.bios->controllerRevision, "1.9");
  EXPECT_EQ(table.system->product, "Product  ");
  EXPECT_EQ(table.system->version, "");
  EXPECT_EQ(table.system->serial, "S2");
  EXPECT_EQ(table.system->sku, "SKU");
  EXPECT_EQ(table.system->family, "Family");
  EXPECT_EQ(table.system->uuidText, "00112233-4455-6677-8899-aabbccddeeff");
  EXPECT_FALSE(table.system->uuid);
  ASSERT_EQ(table.boards.size(), 1u);
  EXPECT_EQ(table.mainBoard()->manufacturer, "Board maker");
  EXPECT_EQ(table.mainBoard()->product, "Board");
  EXPECT_EQ(table.mainBoard()->version, "V");
  EXPECT_EQ(table.mainBoard()->serial, "B2");
  EXPECT_EQ(table.mainBoard()->assetTag, "Tag");
  EXPECT_EQ(table.enclosure->manufacturer, "Case");
  EXPECT_EQ(table.enclosure->kind, 10);
  EXPECT_EQ(table.enclosure->version, "C");
  EXPECT_EQ(table.enclosure->serial, "C2");
  EXPECT_EQ(table.enclosure->assetTag, "T2");
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
}

TEST(DmiReaderTest, noPathIsOpenedTwice) {
  FakeHost machine;
  addTexts(machine);
  readDmi();
  std::vector<std::string> paths = machine.opened;
  std::sort(paths.begin(), paths.end());
  EXPECT_EQ(std::adjacent_find(paths.begin(), paths.end()), paths.end());
}

TEST(DmiReaderTest, missingTextsAreAbsent) {
  FakeHost machine;
  machine.files[texts("sys_vendor")] = "Maker";
  const DmiTable table = readDmi();
  EXPECT_EQ(table.system->manufacturer, "Maker");
  EXPECT_FALSE(table.system->product);
  EXPECT_FALSE(table.enclosure->kind);
}

TEST(DmiReaderTest, chassisTypeThatIsNoNumberIsAbsent) {
  FakeHost machine;
  for (const char* text : {"x\n", "\n", "300\n", "-1\n"}) {
    machine.files[texts("chassis_type")] = text;
    EXPECT_FALSE(readDmi().enclosure->kind) << text;
  }
}

// Micro machines have no firmware at all.
TEST(DmiReaderTest, machineWithoutFirmwareTableIsNoSource) {
  const FakeHost machine;
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kNone);
  EXPECT_FALSE(table.system);
  EXPECT_TRUE(table.boards.empty());
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kNoSource);
}

// Containers see an empty directory instead of /sys/firmware, but the host's class directory.
TEST(DmiReaderTest, containerWithMaskedFirmwareGetsTheTexts) {
  FakeHost machine;
  machine.directories["/sys/firmware"] = {};
  addTexts(machine);
  const DmiTable table = readDmi();
  EXPECT_EQ(table.system->manufacturer, "Maker");
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_EQ(table.structureOutcome.status(), OutcomeStatus::kNoSource);
}

TEST(DmiReaderTest, everythingRefusedIsRefused) {
  FakeHost machine;
  addTable(machine);
  becomeUser(machine);
  EXPECT_EQ(readDmi().outcome.status(), OutcomeStatus::kRefused);
}

TEST(DmiReaderTest, tableThatOnlyItsSecondFileRefusesIsRefused) {
  FakeHost machine;
  addTable(machine);
  addTexts(machine);
  machine.openErrors[kTable] = EACCES;
  EXPECT_EQ(readDmi().source, DmiSource::kKernelTexts);
}

TEST(DmiReaderTest, entryPointThatIsNoneLeavesTheTexts) {
  FakeHost machine;
  addTable(machine);
  addTexts(machine);
  machine.files[kEntryPoint] = "_SM_";
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kKernelTexts);
  EXPECT_EQ(table.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(table.outcome.reason(), "firmware table: no entry point");
}

TEST(DmiReaderTest, tableThatCannotBeReadLeavesTheTexts) {
  FakeHost machine;
  addTable(machine);
  addTexts(machine);
  machine.openErrors[kTable] = EIO;
  const DmiTable table = readDmi();
  EXPECT_EQ(table.source, DmiSource::kKernelTexts);
  EXPECT_EQ(table.outcome.reason(), "firmware table: unreadable");
}

TEST(DmiReaderTest, fifoInPlaceOfTheTableIsNotWaitedFor) {
  FakeHost machine;
  addTable(machine);
  machine.files.erase(kTable);
  machine.devices[kTable].type = S_IFIFO;
  EXPECT_EQ(readDmi().outcome.status(), OutcomeStatus::kFailed);
}

TEST(DmiReaderTest, tableAbove64KiBIsReadWhole) {
  FakeHost machine;
  std::vector<Structure> structures(1500, Structure(200).raw(std::string(100, 'x')));
  structures.push_back(Structure(1).byte(0).byte(0).byte(0).text("behind"));
  machine.files[kTable] = test::tableOf(structures);
  ASSERT_GT(machine.files[kTable].size(), 0x20000u);
  machine.files[kEntryPoint] = test::entryPoint64({3, 4}, 0x100000);
  EXPECT_EQ(readDmi().system->serial, "behind");
}

}  // namespace
}  // namespace quenlor
