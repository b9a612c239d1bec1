#include "readers/pci/PciListing.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace quenlor {
namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

Rows procPciRows(const std::string& text) {
  ProcPciParser parser;
  Rows rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (auto row = parser.addLine(line.c_str())) rows.emplace_back(row->name, row->revision);
  }
  return rows;
}

std::string bus(int number, int device) {
  return "  Bus  " + std::to_string(number) + ", device  " + std::to_string(device) +
         ", function  0:\n";
}

Rows lspciRow(const std::string& line) {
  const auto row = parseLspciLine(line);
  return row ? Rows{{row->name, row->revision}} : Rows{};
}

TEST(ProcPciParser, readsTheListingOfKernel24) {
  EXPECT_EQ(procPciRows("PCI devices found:\n"
                        "  Bus  0, device   0, function  0:\n"
                        "    Host bridge: Intel Corp. 440BX/ZX - 82443BX/ZX Host bridge (rev 3).\n"
                        "      Master Capable.  Latency=64.  \n"
                        "      Prefetchable 32 bit memory at 0xe4000000 [0xe7ffffff].\n"
                        "  Bus  0, device   4, function  0:\n"
                        "    ISA bridge: Intel Corp. 82371AB PIIX4 ISA (rev 2).\n"
                        "  Bus  0, device   4, function  1:\n"
                        "    IDE interface: Intel Corp. 82371AB PIIX4 IDE (rev 1).\n"
                        "      Master Capable.  Latency=32.  \n"
                        "      I/O at 0xd800 [0xd80f].\n"
                        "  Bus  0, device  10, function  0:\n"
                        "    Ethernet controller: Intel Corp. 82557 [Ethernet Pro 100] (rev 8).\n"
                        "      IRQ 10.\n"
                        "  Bus  0, device  15, function  0:\n"
                        "    ISA bridge: ServerWorks CSB5 South Bridge (rev 147).\n"),
            (Rows{{"Intel Corp. 440BX/ZX - 82443BX/ZX Host bridge (Host bridge)", "0x03"},
                  {"Intel Corp. 82371AB PIIX4 ISA (ISA bridge)", "0x02"},
                  {"Intel Corp. 82371AB PIIX4 IDE (IDE interface)", "0x01"},
                  {"Intel Corp. 82557 [Ethernet Pro 100] (Ethernet controller)", "0x08"},
                  {"ServerWorks CSB5 South Bridge (ISA bridge)", "0x93"}}));
}

TEST(ProcPciParser, rawIdsAreNamedByTheTablesAlone) {
  EXPECT_EQ(procPciRows("  Bus  1, device   3, function  0:\n"
                        "    Host bridge: PCI device 8086:7190 (rev 3).\n"
                        "  Bus  2, device   4, function  0:\n"
                        "    SCSI storage controller: PCI device 9005:0010 (Adaptec) (rev 1).\n"
                        "      IRQ 11.\n"
                        "  Bus  3, device   1, function  0:\n"
                        "    Class 0c04: PCI device 8086:ffff (Intel Corp.) (rev 2).\n"),
            (Rows{{"Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)", "0x03"},
                  {"Adaptec AHA-2940U2/U2W", "0x01"},
                  {"Intel device", "0x02"}}));
}

TEST(ProcPciParser, rawIdsOfAnUnknownVendorGiveARowWithoutName) {
  EXPECT_EQ(procPciRows(bus(1, 3) + "    Host bridge: PCI device 1ae0:0042 (rev 3).\n"),
            (Rows{{"", "0x03"}}));
}

TEST(ProcPciParser, unknownDevicesOfKernel22AreNamedByTheIdsThatFollow) {
  EXPECT_EQ(procPciRows("PCI devices found:\n"
                        "  Bus  0, device   0, function  0:\n"
                        "    Host bridge: Intel Unknown device (rev 1).\n"
                        "      Vendor id=8086. Device id=7190.\n"
                        "      Medium devsel.  Master Capable.  Latency=64.  \n"
                        "  Bus  0, device   9, function  0:\n"
                        "    Unknown class: Unknown vendor Unknown device (rev 0).\n"
                        "      Vendor id=fffe. Device id=710.\n"
                        "      Medium devsel.  Fast back-to-back capable.  IRQ 9.  \n"
                        "  Bus  0, device  11, function  0:\n"
                        "    Ethernet controller: 3Com 3C905B 100bTX (rev 48).\n"),
            (Rows{{"Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)", "0x01"},
                  {"VMware Virtual SVGA", "0x00"},
                  {"3Com 3C905B 100bTX (Ethernet controller)", "0x30"}}));
}

TEST(ProcPciParser, unknownDeviceWithoutTableRowIsVendorAndClass) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n"
                                    "      Vendor id=8086. Device id=ffff.\n"),
            (Rows{{"Intel (Host bridge)", "0x01"}}));
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Unknown class: Intel Unknown device (rev 1).\n"
                                    "      Vendor id=8086. Device id=ffff.\n"),
            (Rows{{"Intel device", "0x01"}}));
}

TEST(ProcPciParser, unknownVendorAndClassGiveNoRow) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Unknown class: Unknown vendor Unknown device (rev 1).\n"
                                    "      Vendor id=1ae0. Device id=42.\n"),
            Rows{});
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Unknown vendor Unknown device (rev 1).\n"
                                    "      Vendor id=1ae0. Device id=42.\n"),
            (Rows{{"(Host bridge)", "0x01"}}));
}

TEST(ProcPciParser, knownDeviceOfAnUnknownClassHasNoClassText) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Unknown class: Intel 82443BX (rev 2).\n"),
            (Rows{{"Intel 82443BX", "0x02"}}));
}

TEST(ProcPciParser, idsMayFollowLater) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n"
                                    "      Medium devsel.\n"
                                    "\n"
                                    "      Vendor id=8086. Device id=7190.\n"),
            (Rows{{"Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)", "0x01"}}));
}

TEST(ProcPciParser, nextBusLineEndsTheWaitForIds) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n" + bus(0, 2) +
                        "    ISA bridge: Intel 82371AB (rev 2).\n"
                        "      Vendor id=8086. Device id=7190.\n"),
            (Rows{{"Intel 82371AB (ISA bridge)", "0x02"}}));
}

TEST(ProcPciParser, labelsWithoutNumbersNameNoDevice) {
  for (const char* ids : {"      Vendor id=\n", "      Vendor id=. Device id=7190.\n",
                          "      Vendor id=8086. Device id=\n", "      Vendor id= Device id=\n",
                          "      Vendor id=8086.\n", "      Device id=7190.\n"}) {
    EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n" + ids),
              Rows{})
        << ids;
  }
}

TEST(ProcPciParser, hugeIdsAreUnknown) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n"
                                    "      Vendor id=ffffffffffffffffffff8086. Device id=7190.\n"),
            (Rows{{"(Host bridge)", "0x01"}}));
}

TEST(ProcPciParser, sameDeviceTwiceInARowIsReportedOnce) {
  const std::string device = "    Host bridge: Intel Corp. 440BX (rev 3).\n";
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(0, 1) + device).size(), 1U);
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(0, 2) + device).size(), 2U);
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(1, 1) + device).size(), 2U);
  // Only in a row: another device in between makes it a new one.
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(0, 2) + device + bus(0, 1) + device).size(), 3U);
}

TEST(ProcPciParser, duplicatesAmongUnknownDevicesAreReportedOnce) {
  const std::string device =
      "    Host bridge: Intel Unknown device (rev 1).\n      Vendor id=8086. Device id=7190.\n";
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(0, 1) + device).size(), 1U);
  EXPECT_EQ(procPciRows(bus(0, 1) + device + bus(0, 3) + device).size(), 2U);
}

TEST(ProcPciParser, functionsOfOneDeviceDifferByName) {
  EXPECT_EQ(procPciRows(bus(0, 4) + "    ISA bridge: Intel 82371AB (rev 2).\n" + bus(0, 4) +
                        "    IDE interface: Intel 82371AB (rev 1).\n")
                .size(),
            2U);
}

TEST(ProcPciParser, revisionIsZeroWithoutOne) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel 440BX.\n"),
            (Rows{{"Intel 440BX. (Host bridge)", "0x00"}}));
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel 440BX (rev ).\n"),
            (Rows{{"Intel 440BX (Host bridge)", "0x00"}}));
}

TEST(ProcPciParser, revisionHonoursThePrefixOfItsBase) {
  const auto revision = [](const std::string& number) {
    return procPciRows(bus(0, 1) + "    Host bridge: X (rev " + number + ").\n")[0].second;
  };
  EXPECT_EQ(revision("10"), "0x0A");
  EXPECT_EQ(revision("0x10"), "0x10");
  EXPECT_EQ(revision("010"), "0x08");
  EXPECT_EQ(revision("255"), "0xFF");
}

TEST(ProcPciParser, revisionHasFourCharactersAtMost) {
  const auto revision = [](const std::string& number) {
    return procPciRows(bus(0, 1) + "    Host bridge: X (rev " + number + ").\n")[0].second;
  };
  EXPECT_EQ(revision("256"), "0x10");
  EXPECT_EQ(revision("-1"), "0xFF");
  EXPECT_EQ(revision("99999999999999999999999999").size(), 4U);
}

TEST(ProcPciParser, revisionRightBehindTheColonCutsNothing) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: (rev 3).\n"),
            (Rows{{"(rev 3). (Host bridge)", "0x03"}}));
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge:  (rev 3).\n"),
            (Rows{{" (Host bridge)", "0x03"}}));
}

TEST(ProcPciParser, revisionBeforeTheColonIsNotSeen) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    (rev 5) bridge: Intel 440BX.\n"),
            (Rows{{"Intel 440BX. ((rev 5) bridge)", "0x00"}}));
}

TEST(ProcPciParser, rawIdsCountAnywhereBeforeTheRevision) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    PCI device 8086:ffff: Intel (rev 3).\n"),
            (Rows{{"Intel device", "0x03"}}));
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: X (rev 3) PCI device 8086:ffff.\n"),
            (Rows{{"X (Host bridge)", "0x03"}}));
}

TEST(ProcPciParser, tabsInFrontBelongToNoClassText) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "\t \tHost bridge: Intel 440BX (rev 3).\n"),
            (Rows{{"Intel 440BX (Host bridge)", "0x03"}}));
}

TEST(ProcPciParser, busAndDeviceAreDecimal) {
  const std::string device = "    Host bridge: Intel 440BX (rev 3).\n";
  EXPECT_EQ(procPciRows("Bus 010, device 012, function 0:\n" + device +
                        "Bus 10, device 12, function 0:\n" + device)
                .size(),
            1U);
}

TEST(ProcPciParser, idsAreTakenOnce) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    Host bridge: Intel Unknown device (rev 1).\n"
                                    "      Vendor id=8086. Device id=7190.\n"
                                    "      Vendor id=8086. Device id=7113.\n")
                .size(),
            1U);
}

TEST(ProcPciParser, lineWithoutColonInPlaceOfTheDescriptionYieldsNothing) {
  EXPECT_EQ(procPciRows(bus(0, 1) + "    garbage\n    Host bridge: Intel 440BX (rev 3).\n"),
            Rows{});
}

TEST(ProcPciParser, busLineInPlaceOfTheDescriptionStartsAnew) {
  EXPECT_EQ(procPciRows(bus(0, 1) + bus(0, 2) + "    Host bridge: Intel 440BX (rev 3).\n"),
            (Rows{{"Intel 440BX (Host bridge)", "0x03"}}));
}

TEST(ProcPciParser, busLineNeedsAllItsWords) {
  const std::string device = "    Host bridge: Intel 440BX (rev 3).\n";
  EXPECT_EQ(procPciRows("  Bus 0, device 1:\n" + device), Rows{});
  EXPECT_EQ(procPciRows("  Bus 0, function 1:\n" + device), Rows{});
  EXPECT_EQ(procPciRows("  device 0, function 1:\n" + device), Rows{});
  EXPECT_EQ(procPciRows("Bus device function\n" + device).size(), 1U);
}

TEST(ProcPciParser, rubbishYieldsNothing) {
  EXPECT_EQ(procPciRows(""), Rows{});
  EXPECT_EQ(procPciRows("\n\n\n"), Rows{});
  EXPECT_EQ(procPciRows("Vendor id=8086. Device id=7190.\n: \n(rev 3)\n"), Rows{});
  EXPECT_EQ(procPciRows(bus(0, 1) + ": \n"), (Rows{{" ()", "0x00"}}));
}

TEST(ParseLspciLine, readsVendorDeviceAndRevision) {
  EXPECT_EQ(lspciRow("00:07.1 \"IDE interface\" \"Intel Corporation\" \"82371AB/EB/MB PIIX4 IDE\" "
                     "-r01 -p8a \"VMware\" \"Virtual Machine Chipset\"\n"),
            (Rows{{"Intel Corporation 82371AB/EB/MB PIIX4 IDE", "0x01"}}));
}

TEST(ParseLspciLine, revisionIsEmptyWithoutOne) {
  EXPECT_EQ(lspciRow("00:0f.0 \"VGA compatible controller\" \"VMware\" \"SVGA II Adapter\" -p00 "
                     "\"VMware\" \"SVGA II Adapter\"\n"),
            (Rows{{"VMware SVGA II Adapter", ""}}));
}

TEST(ParseLspciLine, quotesOfAnEmptyClassCount) {
  EXPECT_EQ(lspciRow("0 \"\" \"v\" \"d\" -r01\n"), (Rows{{"v d", "0x01"}}));
}

TEST(ParseLspciLine, revisionKeepsTheDigitsAsPrinted) {
  EXPECT_EQ(lspciRow("0 \"c\" \"v\" \"d\" -rab \"\" \"\"\n"), (Rows{{"v d", "0xab"}}));
  EXPECT_EQ(lspciRow("0 \"c\" \"v\" \"d\" -rab\n"), (Rows{{"v d", "0xab"}}));
  EXPECT_EQ(lspciRow("0 \"c\" \"v\" \"d\" -rab"), (Rows{{"v d", "0xab"}}));
  EXPECT_EQ(lspciRow("0 \"c\" \"v\" \"d\" -r \"\" \"\""), (Rows{{"v d", ""}}));
}

TEST(ParseLspciLine, firstOptionTextOfTheLineCountsEvenInsideAName) {
  EXPECT_EQ(lspciRow("0 \"c\" \"v\" \"Bus-ready card\" -r01 \"\" \"\"\n"),
            (Rows{{"v Bus-ready card", "0xeady"}}));
}

TEST(ParseLspciLine, linesWithoutAllQuotesYieldNothing) {
  for (const char* line :
       {"", "\n", "rubbish", "\"", "0 \"", "0 \"c\"", "0 \"c\" \"v\"", "0 \"c\" \"v\" \"",
        "0 \"c\" \"v\" \"d", "0 \"c\" \"\" \"d\"", "0 \"c\" \"v\" \"\"", "-r01", "0 c v d -r01"}) {
    EXPECT_EQ(lspciRow(line), Rows{}) << line;
  }
}

}  // namespace
}  // namespace quenlor
