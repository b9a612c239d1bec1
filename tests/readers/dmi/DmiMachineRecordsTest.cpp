#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

// Type 0 up to the field at 13, extension byte 2.
Structure bios(uint8_t romSize) {
  Structure out(0);
  return out.text("Vendor")
      .text("1.2")
      .word(0xE000)
      .text("03/15/2019")
      .byte(romSize)
      .qword(0)
      .byte(0)
      .byte(0x08);
}

DmiBios biosOf(const Structure& structure) { return test::decoded({structure}).bios.value(); }

TEST(DmiMachineRecordsTest, biosTexts) {
  const DmiBios found = biosOf(bios(15));
  EXPECT_EQ(found.vendor, "Vendor");
  EXPECT_EQ(found.version, "1.2");
  EXPECT_EQ(found.date, "03/15/2019");
  EXPECT_EQ(found.romKiB, 1024u);
}

TEST(DmiMachineRecordsTest, largeRomsHaveAFieldOfTheirOwn) {
  const auto romKiB = [](uint16_t extended) {
    return biosOf(bios(0xFF).dword(0xFFFFFFFF).word(extended)).romKiB;
  };
  EXPECT_EQ(romKiB(32), 32u * 1024);
  EXPECT_EQ(romKiB(1 << 14 | 2), 2u * 1024 * 1024);
  EXPECT_FALSE(romKiB(2 << 14 | 2));
  EXPECT_FALSE(romKiB(3 << 14 | 2));
  EXPECT_EQ(biosOf(bios(0xFF)).romKiB, 16u * 1024);
  EXPECT_EQ(biosOf(bios(7).dword(0xFFFFFFFF).word(32)).romKiB, 512u);
}

TEST(DmiMachineRecordsTest, revisionsAreDecimalAndNeedBothNumbers) {
  EXPECT_EQ(biosOf(bios(7).byte(5).byte(17).byte(1).byte(0)).revision, "5.17");
  EXPECT_EQ(biosOf(bios(7).byte(5).byte(17).byte(1).byte(0)).controllerRevision, "1.0");
  EXPECT_FALSE(biosOf(bios(7).byte(0xFF).byte(17)).revision);
  EXPECT_FALSE(biosOf(bios(7).byte(5).byte(0xFF)).revision);
  EXPECT_FALSE(biosOf(bios(7).byte(5)).revision);
  EXPECT_FALSE(biosOf(bios(7)).controllerRevision);
}

TEST(DmiMachineRecordsTest, virtualMachineBit) {
  const auto isVirtual = [](unsigned extension) {
    Structure out(0);
    out.text("V").byte(0).word(0).byte(0).byte(0).qword(0).byte(0).byte(extension);
    return biosOf(out).isVirtualMachine;
  };
  EXPECT_EQ(isVirtual(0x10), true);
  EXPECT_EQ(isVirtual(0xEF), false);
  EXPECT_FALSE(test::decoded({Structure(0).raw(std::string(14, '\0'))}).bios->isVirtualMachine);
}

TEST(DmiMachineRecordsTest, systemOf20HasFourTexts) {
  Structure structure(1);
  structure.text("Maker").text("Product").text("V").text("S1");
  const DmiSystem system = test::decoded({structure}, {2, 0}).system.value();
  EXPECT_EQ(system.manufacturer, "Maker");
  EXPECT_EQ(system.product, "Product");
  EXPECT_EQ(system.version, "V");
  EXPECT_EQ(system.serial, "S1");
  EXPECT_FALSE(system.uuid);
  EXPECT_FALSE(system.uuidText);
  EXPECT_FALSE(system.sku);
  EXPECT_FALSE(system.family);
}

TEST(DmiMachineRecordsTest, systemUuidIsNoneWhenAllBitsAreEqual) {
  const auto uuid = [](char byte) {
    return test::decoded({Structure(1).dword(0).raw(std::string(16, byte)).byte(6)}).system->uuid;
  };
  EXPECT_FALSE(uuid('\x00'));
  EXPECT_FALSE(uuid('\xFF'));
  EXPECT_TRUE(uuid('\x11'));
}

TEST(DmiMachineRecordsTest, systemSkuAndFamily) {
  Structure structure(1);
  structure.dword(0).raw(std::string(16, '\x01')).byte(6).text("SKU1").text("Family");
  const DmiSystem system = test::decoded({structure}).system.value();
  EXPECT_EQ(system.sku, "SKU1");
  EXPECT_EQ(system.family, "Family");
}

TEST(DmiMachineRecordsTest, firmwareTextsStayAsTheyAre) {
  Structure structure(1);
  structure.text("To Be Filled By O.E.M.").text("  \xFFPro\x01").text(" ").byte(9);
  const DmiSystem system = test::decoded({structure}).system.value();
  EXPECT_EQ(system.manufacturer, "To Be Filled By O.E.M.");
  EXPECT_EQ(system.product, "  \xFFPro\x01");
  EXPECT_EQ(system.version, " ");
  EXPECT_FALSE(system.serial);
}

TEST(DmiMachineRecordsTest, board) {
  Structure structure(2);
  structure.text("Maker")
      .text("Board")
      .text("V")
      .text("S")
      .text("Tag")
      .byte(0x09)
      .text("Slot 1")
      .word(3)
      .byte(0x0A);
  const DmiTable table = test::decoded({structure});
  ASSERT_EQ(table.boards.size(), 1u);
  const DmiBoard& board = table.boards[0];
  EXPECT_EQ(board.manufacturer, "Maker");
  EXPECT_EQ(board.product, "Board");
  EXPECT_EQ(board.version, "V");
  EXPECT_EQ(board.serial, "S");
  EXPECT_EQ(board.assetTag, "Tag");
  EXPECT_EQ(board.location, "Slot 1");
  EXPECT_TRUE(board.isHosting);
  EXPECT_EQ(board.kind, 0x0A);
}

TEST(DmiMachineRecordsTest, boardOfEightBytesIsOne) {
  const DmiTable table = test::decoded({Structure(2).text("Maker").text("Board").byte(0).byte(0)});
  ASSERT_EQ(table.boards.size(), 1u);
  EXPECT_EQ(table.boards[0].product, "Board");
  EXPECT_FALSE(table.boards[0].assetTag);
  EXPECT_FALSE(table.boards[0].isHosting);
}

Structure boardNamed(const std::string& name, uint8_t features, uint8_t kind) {
  Structure out(2);
  return out.byte(0).text(name).byte(0).byte(0).byte(0).byte(features).byte(0).word(0).byte(kind);
}

TEST(DmiMachineRecordsTest, mainBoardIsTheHostingOneThenAMotherboardThenTheFirst) {
  const Structure riser = boardNamed("riser", 0, 9);
  const Structure motherboard = boardNamed("motherboard", 0x04, 0x0A);
  const Structure hosting = boardNamed("hosting", 0x01, 0x0C);
  EXPECT_EQ(test::decoded({riser, motherboard, hosting}).mainBoard()->product, "hosting");
  EXPECT_EQ(test::decoded({riser, motherboard}).mainBoard()->product, "motherboard");
  EXPECT_EQ(test::decoded({riser, riser}).mainBoard()->product, "riser");
  EXPECT_EQ(test::decoded(std::vector<Structure>{}).mainBoard(), nullptr);
}

// Type 3 up to the security status at 0C, with texts.
Structure enclosure(uint8_t kind) {
  Structure out(3);
  return out.text("Maker").byte(kind).text("V").text("S").text("Tag").dword(0x02030303);
}

DmiEnclosure enclosureOf(const Structure& structure) {
  return test::decoded({structure}).enclosure.value();
}

TEST(DmiMachineRecordsTest, enclosure) {
  const DmiEnclosure found = enclosureOf(enclosure(0x83));
  EXPECT_EQ(found.manufacturer, "Maker");
  EXPECT_EQ(found.version, "V");
  EXPECT_EQ(found.serial, "S");
  EXPECT_EQ(found.assetTag, "Tag");
  EXPECT_EQ(found.kind, 3);
  EXPECT_FALSE(found.heightUnits);
  EXPECT_FALSE(found.sku);
  EXPECT_FALSE(enclosureOf(enclosure(0x80)).kind);
}

TEST(DmiMachineRecordsTest, heightOfZeroAndFFIsUnknown) {
  const auto height = [](uint8_t units) {
    return enclosureOf(enclosure(23).dword(0).byte(units)).heightUnits;
  };
  EXPECT_EQ(height(2), 2);
  EXPECT_FALSE(height(0));
  EXPECT_FALSE(height(0xFF));
}

TEST(DmiMachineRecordsTest, enclosureSkuStandsBehindItsElements) {
  const Structure none = enclosure(23).dword(0).byte(2).byte(1).byte(0).byte(3).text("SKU-0");
  EXPECT_EQ(enclosureOf(none).sku, "SKU-0");
  const Structure two =
      enclosure(23).dword(0).byte(2).byte(1).byte(2).byte(3).raw("aBCdEF").text("SKU-2");
  EXPECT_EQ(enclosureOf(two).sku, "SKU-2");
  const Structure wrong = enclosure(23).dword(0).byte(2).byte(1).byte(255).byte(255).text("SKU-3");
  EXPECT_FALSE(enclosureOf(wrong).sku);
}

TEST(DmiMachineRecordsTest, managementInterface) {
  const auto interface = [](uint8_t code) {
    const Structure structure = Structure(38).byte(code).byte(0x20).word(0).qword(0xCA3);
    return test::decoded({structure}).management.value();
  };
  EXPECT_EQ(interface(1).interface, DmiBmcInterface::kKcs);
  EXPECT_EQ(interface(4).interface, DmiBmcInterface::kSsif);
  EXPECT_FALSE(interface(0).interface);
  EXPECT_FALSE(interface(5).interface);
  EXPECT_EQ(interface(1).specMajor, 2);
  EXPECT_EQ(interface(1).specMinor, 0);
}

Structure powerSupply(uint16_t watts, uint16_t bits) {
  Structure out(39);
  out.byte(1).text("Bay 1").text("PSU").text("Maker").text("S9").text("T9").text("P9").text("R9");
  return out.word(watts).word(bits);
}

TEST(DmiMachineRecordsTest, powerSupply) {
  const DmiTable table = test::decoded({powerSupply(1100, 3 << 7 | 1 << 1 | 1)});
  ASSERT_EQ(table.powerSupplies.size(), 1u);
  const DmiPowerSupply& supply = table.powerSupplies[0];
  EXPECT_EQ(supply.location, "Bay 1");
  EXPECT_EQ(supply.name, "PSU");
  EXPECT_EQ(supply.manufacturer, "Maker");
  EXPECT_EQ(supply.serial, "S9");
  EXPECT_EQ(supply.assetTag, "T9");
  EXPECT_EQ(supply.partNumber, "P9");
  EXPECT_EQ(supply.revision, "R9");
  EXPECT_EQ(supply.maxWatts, 1100);
  EXPECT_EQ(supply.isPresent, true);
  EXPECT_EQ(supply.isUnplugged, false);
  EXPECT_EQ(supply.status, 3);
}

TEST(DmiMachineRecordsTest, powerOf8000IsUnknown) {
  EXPECT_FALSE(test::decoded({powerSupply(0x8000, 0)}).powerSupplies[0].maxWatts);
  EXPECT_FALSE(test::decoded({powerSupply(0, 0)}).powerSupplies[0].maxWatts);
}

Structure tpm(const std::string& vendor) {
  return Structure(43).raw(vendor).byte(2).byte(0).qword(0).byte(0).qword(1 << 3).dword(0);
}

TEST(DmiMachineRecordsTest, tpm) {
  const DmiTpm found = test::decoded({tpm("INTC")}).tpm.value();
  EXPECT_EQ(found.vendor, "INTC");
  EXPECT_EQ(found.specMajor, 2);
  EXPECT_EQ(found.specMinor, 0);
  EXPECT_EQ(found.isSupported, true);
}

TEST(DmiMachineRecordsTest, tpmVendorIsFilledUpWithBlanksOrZeros) {
  EXPECT_EQ(test::decoded({tpm("STM ")}).tpm->vendor, "STM");
  EXPECT_EQ(test::decoded({tpm(std::string("IFX\0", 4))}).tpm->vendor, "IFX");
  EXPECT_FALSE(test::decoded({tpm(std::string(4, '\0'))}).tpm->vendor);
  EXPECT_FALSE(test::decoded({tpm("    ")}).tpm->vendor);
}

}  // namespace
}  // namespace quenlor
