#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "readers/firmware/machine/smbiosinfo.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::Checksum;
using test::Firmware;
using test::FirmwareTable;
using test::SharedTable;
using test::Structure;

struct MachineTexts {
  std::string manufacturer, product, serialNumber, version, type;
  friend bool operator==(const MachineTexts&, const MachineTexts&) = default;
};

void PrintTo(const MachineTexts& texts, std::ostream* out) {
  *out << texts.manufacturer << '|' << texts.product << '|' << texts.serialNumber << '|'
       << texts.version << '|' << texts.type;
}

MachineTexts identity() {
  const smbiosinfo info;
  return {info.manufacturer().str(), info.product().str(), info.serialNumber().str(),
          info.version().str(), info.type().str()};
}

FirmwareTable system(const test::System& described) { return FirmwareTable({2, 4}).add(described); }

// Through the checked entry point alone, without a shared table.
MachineTexts identityByEntryPoint(const Firmware& firmware) {
  test::FakeHost machine;
  machine.files["/dev/mem"] = firmware.memory();
  const MachineTexts found = identity();
  EXPECT_EQ(machine.openDescriptors(), 0);
  EXPECT_EQ(machine.openMappings(), 0);
  return found;
}

MachineTexts identityByEntryPoint(const FirmwareTable& table) {
  return identityByEntryPoint(Firmware(table));
}

MachineTexts identityByBoth(const Firmware& firmware) {
  const SharedTable shared(firmware);
  return identity();
}

TEST(Smbiosinfo, withoutFirmwareTheMachineIsLinux) {
  test::FakeHost machine;
  EXPECT_EQ(identity(), (MachineTexts{"Linux", "Linux", "", "", ""}));
  EXPECT_TRUE(machine.files.empty());
}

TEST(Smbiosinfo, withoutPrivilegeTheMachineIsLinux) {
  test::FakeHost machine;
  machine.devices["/dev/mem"].deniedAccessModes = {0, 2};
  SMBIOSTable::initializeGlobalTable(1);
  EXPECT_EQ(identity(), (MachineTexts{"Linux", "Linux", "", "", ""}));
  SMBIOSTable::terminateGlobalTable();
}

TEST(Smbiosinfo, entryPointPathTakesTheVersionAsType) {
  EXPECT_EQ(identityByEntryPoint(system({"Maker", "Product", "V1", "S1", {}})),
            (MachineTexts{"Maker", "Product", "S1", "", "V1"}));
}

TEST(Smbiosinfo, sharedTableAddsTheVersion) {
  EXPECT_EQ(identityByBoth(Firmware(system({"Maker", "Product", "V1", "S1", {}}))),
            (MachineTexts{"Maker", "Product", "S1", "V1", "V1"}));
}

// The entry point's first anchor has a bad checksum; the other search does not need it.
TEST(Smbiosinfo, sharedTableAloneGivesNoType) {
  Firmware firmware(system({"Maker", "Product", "V1", "S1", {}}));
  firmware.entryPointChecksum = Checksum::kWrong;
  EXPECT_EQ(identityByEntryPoint(firmware), (MachineTexts{"Linux", "Linux", "", "", ""}));
  EXPECT_EQ(identityByBoth(firmware), (MachineTexts{"Maker", "Product", "S1", "V1", ""}));
}

TEST(Smbiosinfo, missingManufacturerIsLinux) {
  EXPECT_EQ(identityByEntryPoint(system({.product = "Product"})),
            (MachineTexts{"Linux", "Product", "", "", ""}));
  EXPECT_EQ(identityByEntryPoint(system({.serial = "S1"})),
            (MachineTexts{"Linux", "Linux", "S1", "", ""}));
}

TEST(Smbiosinfo, missingProductIsTheManufacturer) {
  EXPECT_EQ(identityByEntryPoint(system({.manufacturer = "Maker"})),
            (MachineTexts{"Maker", "Maker", "", "", ""}));
}

TEST(Smbiosinfo, structureWithoutStringNumbersLeavesTheDefaults) {
  EXPECT_EQ(identityByEntryPoint(FirmwareTable({2, 4}).add(Structure(1).dword(0))),
            (MachineTexts{"Linux", "Linux", "", "", ""}));
}

// The two searches may find different tables: here the shared one is announced further ahead.
TEST(Smbiosinfo, sharedTableSuppliesWhatTheStructureHasNoStringsFor) {
  Firmware firmware(FirmwareTable({2, 4}).add(Structure(1).dword(0)));
  Firmware shared(system({"Maker", "Product", "V1", "S1", {}}));
  firmware.otherMemory[0xE4000] = shared.table.bytes();
  firmware.otherMemory[0xF1001] = shared.entryPoint(0xE4000).substr(16);
  EXPECT_EQ(identityByEntryPoint(firmware), (MachineTexts{"Linux", "Linux", "", "", ""}));
  EXPECT_EQ(identityByBoth(firmware), (MachineTexts{"Maker", "Product", "S1", "V1", ""}));
}

TEST(Smbiosinfo, longTextsAreCut) {
  const std::string forty = "0123456789012345678901234567890123456789";
  const std::string large(300, 'x');
  const MachineTexts found = identityByEntryPoint(system({large, large, forty, forty, {}}));
  EXPECT_EQ(found.serialNumber, forty.substr(0, 32));
  EXPECT_EQ(found.type, forty.substr(0, 32));
  EXPECT_EQ(found.manufacturer, large.substr(0, 255));
  EXPECT_EQ(found.product, large.substr(0, 255));
}

TEST(Smbiosinfo, sharedTableReplacesOnlyByValidTexts) {
  const MachineTexts found = identityByBoth(
      Firmware(system({"System Manufacturer", "Product  ", "Not Available", "\x01", {}})));
  EXPECT_EQ(found, (MachineTexts{"System Manufacturer", "Product", "\x01", "", "Not Available"}));
}

TEST(Smbiosinfo, machineTypeComesFromTheProductOfOneMaker) {
  const MachineTexts found = identityByBoth(*test::firmwareNamed("old-server-2.3"));
  EXPECT_EQ(found, (MachineTexts{"ZUM", "Server 342 -[867041X]-", "23A0123", "Version 5", "8670"}));
  EXPECT_EQ(identityByEntryPoint(system({"ZUM", "8670A1X", "V1", "S1", {}})).type, "8670");
}

TEST(Smbiosinfo, productWithoutMachineTypeEmptiesTheType) {
  EXPECT_EQ(identityByEntryPoint(system({"ZUM", "Server", "V1", "S1", {}})).type, "");
}

TEST(Smbiosinfo, longerMakersNamesKeepTheirVersionAsType) {
  EXPECT_EQ(identityByEntryPoint(system({"ZUMX", "8670A1X", "V1", "S1", {}})).type, "V1");
  EXPECT_EQ(identityByEntryPoint(system({"zum", "8670A1X", "V1", "S1", {}})).type, "V1");
}

TEST(Smbiosinfo, tableThatCannotBeMappedLeavesTheDefaults) {
  Firmware firmware(system({"Maker", "Product", "V1", "S1", {}}));
  std::string memory = firmware.memory();
  memory.replace(firmware.entryPointAddress, 32, firmware.entryPoint(0xFFFF0000));
  test::FakeHost machine;
  machine.files["/dev/mem"] = memory;
  EXPECT_EQ(identity(), (MachineTexts{"Linux", "Linux", "", "", ""}));
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST(Smbiosinfo, tablesAnywhereInMemory) {
  EXPECT_EQ(identityByBoth(*test::firmwareNamed("table-low")).serialNumber, "SN-LOW");
  EXPECT_EQ(identityByBoth(*test::firmwareNamed("table-high")).serialNumber, "SN-HIGH");
  EXPECT_EQ(identityByEntryPoint(*test::firmwareNamed("table-high")).serialNumber, "SN-HIGH");
  EXPECT_EQ(identityByBoth(*test::firmwareNamed("false-anchor")).serialNumber, "SN-REAL");
  EXPECT_EQ(identityByEntryPoint(*test::firmwareNamed("empty")).manufacturer, "Linux");
}

// The records of the class's own, behind what all of them begin with.
std::vector<std::string> ownRecords(const test::CapturedTraces& traces) {
  const std::string place = " com/smbiosinfo.cpp getSmbiosInfo() hardware ";
  std::vector<std::string> own;
  for (const std::string& record : traces.texts()) {
    const size_t at = record.find(place);
    if (at != record.npos)
      own.push_back(record.substr(0, at) + ' ' + record.substr(at + place.size()));
  }
  return own;
}

TEST(Smbiosinfo, tracesBothPaths) {
  const test::CapturedTraces traces;
  identityByBoth(Firmware(system({"Maker", "Product", "V1", "S1", {}})));
  EXPECT_EQ(ownRecords(traces), (std::vector<std::string>{
                                    "MID entry smbiosinfo",
                                    "MAX Find table entry point",
                                    "MAX -->SerialNumber=S1",
                                    "MAX -->Type=V1",
                                    "MAX -->Manufacturer=Maker",
                                    "MAX Product retrieved for linux intel=Product",
                                    "MAX use SMBIOSTable1Data",
                                    "MAX SMBIOS TABLE 1 IS AVAILABLE!",
                                    "MID exit smbiosinfo",
                                }));
}

TEST(Smbiosinfo, tracesWhatIsNotThere) {
  const test::CapturedTraces traces;
  {
    test::FakeHost machine;
    identity();
  }
  EXPECT_EQ(ownRecords(traces), (std::vector<std::string>{
                                    "MID entry smbiosinfo",
                                    "MIN Cannot find table entry point",
                                    "MAX SMBIOS TABLE 1 IS NOT AVAILABLE!",
                                    "MID exit smbiosinfo",
                                }));
}

TEST(Smbiosinfo, tracesNoTextsOfAStructureWithoutAny) {
  const test::CapturedTraces traces;
  identityByEntryPoint(*test::firmwareNamed("empty"));
  EXPECT_EQ(ownRecords(traces), (std::vector<std::string>{
                                    "MID entry smbiosinfo",
                                    "MAX Find table entry point",
                                    "MAX SMBIOS TABLE 1 IS NOT AVAILABLE!",
                                    "MID exit smbiosinfo",
                                }));
}

}  // namespace
}  // namespace quenlor
