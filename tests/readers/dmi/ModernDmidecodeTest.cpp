// What the decoder reports of a table of today, beside what dmidecode decodes from the same bytes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "readers/dmi/DmiNames.h"
#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

using test::Structure;

constexpr char kNoProgram[] =
    "dmidecode could not be run. Install it (apt-get install dmidecode): this test compares with "
    "it.";
constexpr size_t kTableOffset = 0x20;

struct Decoded {
  int type = -1;
  std::map<std::string, std::string> fields;

  // Empty for a field that is not shown.
  std::string operator[](const std::string& name) const {
    const auto found = fields.find(name);
    return found == fields.end() ? "" : found->second;
  }
};

std::string outputOf(const std::string& commandLine) {
  FILE* stream = popen(commandLine.c_str(), "r");
  std::string output;
  char piece[4096];
  size_t count = 0;
  while ((count = std::fread(piece, 1, sizeof piece, stream)) > 0) output.append(piece, count);
  EXPECT_EQ(WEXITSTATUS(pclose(stream)), 0) << kNoProgram;
  return output;
}

std::vector<Decoded> structuresIn(const std::string& output) {
  std::vector<Decoded> structures;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    unsigned handle = 0;
    int type = 0;
    if (std::sscanf(line.c_str(), "Handle 0x%x, DMI type %d", &handle, &type) == 2) {
      structures.push_back({type, {}});
      continue;
    }
    const size_t colon = line.find(": ");
    const bool isField = line.starts_with('\t') && !line.starts_with("\t\t");
    if (structures.empty() || !isField || colon == line.npos) continue;
    structures.back().fields.emplace(line.substr(1, colon - 1), line.substr(colon + 2));
  }
  return structures;
}

std::vector<Decoded> dmidecode(const std::vector<Structure>& structures, test::Version version) {
  const std::string table = test::tableOf(structures);
  std::string dump = test::entryPoint64(version, static_cast<uint32_t>(table.size()), kTableOffset);
  dump.resize(kTableOffset, '\0');
  const std::string path = testing::TempDir() + "quenlor-modern-" + std::to_string(getpid());
  std::ofstream(path, std::ios::binary) << dump + table;
  const std::string output =
      outputOf("PATH=$PATH:/usr/sbin:/sbin LC_ALL=C dmidecode --from-dump " + path);
  std::remove(path.c_str());
  return structuresIn(output);
}

Decoded theirs(const Structure& structure, test::Version version = {3, 4}) {
  const auto all = dmidecode({structure, Structure(127)}, version);
  EXPECT_EQ(all.size(), 2u);
  return all.empty() ? Decoded{} : all.front();
}

std::string shown(const DmiText& text) { return text.value_or("Not Specified"); }

template <class Number>
std::string withUnit(std::optional<Number> value, const std::string& unit) {
  return value ? std::to_string(*value) + " " + unit : "Unknown";
}

// "32 GB", "640 kB" in KiB; nothing for texts without a number.
std::optional<uint64_t> kibibytes(const std::string& size) {
  uint64_t amount = 0;
  char unit[8] = "";
  if (std::sscanf(size.c_str(), "%lu %7s", &amount, unit) != 2) return {};
  const std::map<std::string, uint64_t> factors = {
      {"kB", 1}, {"MB", 1 << 10}, {"GB", 1 << 20}, {"TB", 1 << 30}};
  return amount * factors.at(unit);
}

TEST(ModernDmidecodeTest, bios) {
  Structure structure(0);
  structure.text("Maker").text("1.20").word(0xE000).text("02/29/2024").byte(0xFF).qword(0x08);
  structure.byte(3).byte(0x0D).byte(5).byte(27).byte(1).byte(12).word(32);
  const Decoded other = theirs(structure);
  const DmiBios ours = test::decoded({structure}).bios.value();
  EXPECT_EQ(other["Vendor"], shown(ours.vendor));
  EXPECT_EQ(other["Version"], shown(ours.version));
  EXPECT_EQ(other["Release Date"], shown(ours.date));
  EXPECT_EQ(kibibytes(other["ROM Size"]), ours.romKiB);
  EXPECT_EQ(other["BIOS Revision"], ours.revision);
  EXPECT_EQ(other["Firmware Revision"], ours.controllerRevision);
}

TEST(ModernDmidecodeTest, systemBoardAndEnclosure) {
  std::string uuid;
  for (char byte = 1; byte <= 16; ++byte) uuid += byte;
  Structure system(1);
  system.text("Maker").text("Product").text("V3").text("S1").raw(uuid).byte(6).text("SKU").text(
      "Family");
  const Decoded otherSystem = theirs(system);
  const DmiSystem oursSystem = test::decoded({system}).system.value();
  EXPECT_EQ(otherSystem["Manufacturer"], shown(oursSystem.manufacturer));
  EXPECT_EQ(otherSystem["Product Name"], shown(oursSystem.product));
  EXPECT_EQ(otherSystem["Version"], shown(oursSystem.version));
  EXPECT_EQ(otherSystem["Serial Number"], shown(oursSystem.serial));
  EXPECT_EQ(otherSystem["UUID"], oursSystem.uuidText);
  EXPECT_EQ(otherSystem["SKU Number"], shown(oursSystem.sku));
  EXPECT_EQ(otherSystem["Family"], shown(oursSystem.family));
  Structure board(2);
  board.text("Maker")
      .text("Board")
      .text("V")
      .text("S2")
      .text("Tag")
      .byte(9)
      .text("Here")
      .word(3)
      .byte(10)
      .byte(0);
  const Decoded otherBoard = theirs(board);
  const DmiBoard oursBoard = test::decoded({board}).boards.at(0);
  EXPECT_EQ(otherBoard["Product Name"], shown(oursBoard.product));
  EXPECT_EQ(otherBoard["Asset Tag"], shown(oursBoard.assetTag));
  EXPECT_EQ(otherBoard["Location In Chassis"], shown(oursBoard.location));
  EXPECT_EQ(otherBoard["Type"] == "Motherboard", oursBoard.kind == 10);
  Structure enclosure(3);
  enclosure.text("Maker").byte(0x97).text("V").text("S3").text("Tag").dword(0x03030303).dword(0);
  enclosure.byte(2).byte(2).byte(1).byte(3).raw("abc").text("SKU-3");
  const Decoded otherEnclosure = theirs(enclosure);
  const DmiEnclosure oursEnclosure = test::decoded({enclosure}).enclosure.value();
  EXPECT_EQ(otherEnclosure["Type"], "Rack Mount Chassis");
  EXPECT_EQ(oursEnclosure.kind, 0x17);
  EXPECT_EQ(otherEnclosure["Height"], withUnit(oursEnclosure.heightUnits, "U"));
  EXPECT_EQ(otherEnclosure["SKU Number"], shown(oursEnclosure.sku));
  EXPECT_EQ(otherEnclosure["Asset Tag"], shown(oursEnclosure.assetTag));
}

TEST(ModernDmidecodeTest, processor) {
  Structure structure(4);
  structure.text("CPU 1").byte(3).byte(0xB3).text("Maker").dword(0x606A6).dword(0xBFEBFBFF);
  structure.text("Brand").byte(0x90).word(100).word(4000).word(2100).byte(0x41).byte(0x36);
  structure.word(16).word(17).word(18).text("S").text("Tag").text("Part").byte(0xFF).byte(0xFF);
  structure.byte(0xFF).word(0xFC).word(0xB3).word(300).word(288).word(600);
  const Decoded other = theirs(structure);
  const DmiProcessor ours = test::decoded({structure}).processors.at(0);
  EXPECT_EQ(other["Socket Designation"], shown(ours.socket));
  EXPECT_EQ(other["Family"], dmiProcessorFamily(*ours.family, ""));
  EXPECT_EQ(other["Manufacturer"], shown(ours.manufacturer));
  EXPECT_EQ(other["Version"], shown(ours.version));
  EXPECT_EQ(other["External Clock"], withUnit(ours.externalClockMhz, "MHz"));
  EXPECT_EQ(other["Max Speed"], withUnit(ours.maxMhz, "MHz"));
  EXPECT_EQ(other["Current Speed"], withUnit(ours.currentMhz, "MHz"));
  EXPECT_EQ(other["Status"].starts_with("Populated"), ours.isPopulated);
  EXPECT_EQ(other["Upgrade"], "Socket " + std::string(dmiProcessorUpgrade(*ours.upgrade)));
  EXPECT_EQ(other["Serial Number"], shown(ours.serial));
  EXPECT_EQ(other["Asset Tag"], shown(ours.assetTag));
  EXPECT_EQ(other["Part Number"], shown(ours.partNumber));
  EXPECT_EQ(other["Core Count"], std::to_string(ours.cores.value()));
  EXPECT_EQ(other["Core Enabled"], std::to_string(ours.enabledCores.value()));
  EXPECT_EQ(other["Thread Count"], std::to_string(ours.threads.value()));
}

TEST(ModernDmidecodeTest, cache) {
  for (const uint32_t size : {0x80000000u | 40000u, 3u << 20}) {
    Structure structure(7);
    structure.text("L3").word(0x0182).word(0xFFFF).word(0xFFFF).word(2).word(2).byte(0).byte(5);
    structure.byte(5).byte(8).dword(size).dword(size - 16384);
    const Decoded other = theirs(structure);
    const DmiCache ours = test::decoded({structure}).caches.at(0);
    EXPECT_EQ(other["Socket Designation"], shown(ours.designation));
    EXPECT_EQ(other["Configuration"],
              "Enabled, Not Socketed, Level " + std::to_string(ours.level.value()));
    EXPECT_EQ(kibibytes(other["Maximum Size"]), ours.maxKiB);
    EXPECT_EQ(kibibytes(other["Installed Size"]), ours.installedKiB);
  }
}

TEST(ModernDmidecodeTest, slot) {
  Structure structure(9);
  structure.text("PCIe 1").byte(0xB6).byte(0x0D).byte(4).byte(4).word(7).byte(0x0C).byte(1);
  structure.word(1).byte(0x3B).byte(0x1A).byte(16).byte(0);
  const Decoded other = theirs(structure);
  const DmiSlot ours = test::decoded({structure}).slots.at(0);
  char address[32];
  std::snprintf(address, sizeof address, "%04x:%02x:%02x.%x", ours.address->segment,
                ours.address->bus, ours.address->device, ours.address->function);
  EXPECT_EQ(other["Designation"], shown(ours.designation));
  EXPECT_EQ(other["Bus Address"], address);
  EXPECT_EQ(other["Type"], "x16 PCI Express 3 x16");
  EXPECT_EQ(dmiSlotType(*ours.kind), "pci express gen 3 x16");
  EXPECT_EQ(dmiSlotWidth(*ours.width), "x16");
  EXPECT_EQ(other["Current Usage"], "In Use");
  EXPECT_EQ(dmiSlotUsage(*ours.usage), "in use");
  EXPECT_EQ(other["Length"], "Long");
  EXPECT_EQ(dmiSlotLength(*ours.length), "long");
}

TEST(ModernDmidecodeTest, memoryArray) {
  Structure structure(16);
  structure.byte(3)
      .byte(3)
      .byte(6)
      .dword(0x80000000)
      .word(0xFFFE)
      .word(24)
      .qword(uint64_t{6} << 40);
  const Decoded other = theirs(structure);
  const DmiMemoryArray ours = test::decoded({structure}).memoryArrays.at(0);
  EXPECT_EQ(kibibytes(other["Maximum Capacity"]), ours.maxKiB);
  EXPECT_EQ(other["Number Of Devices"], std::to_string(ours.slots.value()));
  EXPECT_EQ(other["Error Correction Type"], "Multi-bit ECC");
  EXPECT_EQ(dmiErrorCorrection(*ours.errorCorrection), "multi-bit");
}

Structure memoryDevice(uint16_t size, uint32_t extended, uint8_t formFactor, uint8_t type) {
  Structure out(17);
  out.word(0).word(0xFFFE).word(80).word(64).word(size).byte(formFactor).byte(0).text("DIMM A1");
  out.text("Bank 0").byte(type).word(0x80).word(4800).text("Maker").text("S").text("Tag");
  out.text("Part").byte(2).dword(extended).word(4400).word(1100).word(1100).word(1100).byte(3);
  return out.raw(std::string(0x54 - 0x29, '\0')).dword(0).dword(0);
}

TEST(ModernDmidecodeTest, memoryDevice) {
  for (const uint32_t megabytes : {32768u, 65536u, 24576u, 2097152u}) {
    const Structure structure = megabytes < 0x7FFF
                                    ? memoryDevice(static_cast<uint16_t>(megabytes), 0, 9, 0x22)
                                    : memoryDevice(0x7FFF, megabytes, 9, 0x22);
    const Decoded other = theirs(structure);
    const DmiMemoryDevice ours = test::decoded({structure}).memoryDevices.at(0);
    EXPECT_EQ(kibibytes(other["Size"]), ours.sizeKiB) << megabytes;
    EXPECT_EQ(other["Total Width"], withUnit(ours.totalBits, "bits"));
    EXPECT_EQ(other["Data Width"], withUnit(ours.dataBits, "bits"));
    EXPECT_EQ(other["Locator"], shown(ours.locator));
    EXPECT_EQ(other["Bank Locator"], shown(ours.bankLocator));
    EXPECT_EQ(other["Speed"], withUnit(ours.speedMts, "MT/s"));
    EXPECT_EQ(other["Configured Memory Speed"], withUnit(ours.configuredMts, "MT/s"));
    EXPECT_EQ(other["Manufacturer"], shown(ours.manufacturer));
    EXPECT_EQ(other["Serial Number"], shown(ours.serial));
    EXPECT_EQ(other["Asset Tag"], shown(ours.assetTag));
    EXPECT_EQ(other["Part Number"], shown(ours.partNumber));
    EXPECT_EQ(other["Rank"], std::to_string(ours.rank.value()));
    EXPECT_EQ(other["Configured Voltage"], "1.1 V");
    EXPECT_EQ(ours.configuredMillivolts, 1100);
    EXPECT_EQ(other["Memory Technology"], "DRAM");
    EXPECT_EQ(dmiMemoryTechnology(*ours.technology, *ours.kind), "dram");
  }
}

TEST(ModernDmidecodeTest, powerSupplyManagementAndTpm) {
  Structure supply(39);
  supply.byte(1).text("Bay").text("PSU").text("Maker").text("S").text("T").text("P").text("R");
  supply.word(1100).word(0x11A2).word(0xFFFF).word(0xFFFF).word(0xFFFF);
  const Decoded otherSupply = theirs(supply);
  const DmiPowerSupply ours = test::decoded({supply}).powerSupplies.at(0);
  EXPECT_EQ(otherSupply["Location"], shown(ours.location));
  EXPECT_EQ(otherSupply["Name"], shown(ours.name));
  EXPECT_EQ(otherSupply["Manufacturer"], shown(ours.manufacturer));
  EXPECT_EQ(otherSupply["Serial Number"], shown(ours.serial));
  EXPECT_EQ(otherSupply["Model Part Number"], shown(ours.partNumber));
  EXPECT_EQ(otherSupply["Max Power Capacity"], withUnit(ours.maxWatts, "W"));
  EXPECT_EQ(otherSupply["Status"], "Present, OK");
  EXPECT_EQ(dmiPowerStatus(ours.status.value()), "ok");
  EXPECT_EQ(otherSupply["Plugged"] == "Yes", ours.isUnplugged == false);
  const Structure bmc =
      Structure(38).byte(1).byte(0x20).byte(0x20).byte(0xFF).qword(0xCA3).byte(0).byte(0);
  EXPECT_EQ(theirs(bmc)["Interface Type"], "KCS (Keyboard Control Style)");
  EXPECT_EQ(test::decoded({bmc}).management->interface, DmiBmcInterface::kKcs);
  const Structure tpm =
      Structure(43).raw("INTC").byte(2).byte(0).qword(0).byte(0).qword(8).dword(0);
  EXPECT_EQ(theirs(tpm)["Vendor ID"], test::decoded({tpm}).tpm->vendor);
  EXPECT_EQ(theirs(tpm)["Specification Version"], "2.0");
}

std::string lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// Names without a code of their own on the other side: "Unknown", "Other", "Reserved".
bool isName(const std::string& text) {
  return !text.empty() && text[0] != '<' && text != "Unknown" && text != "Other" &&
         text != "Reserved" && text != "None";
}

TEST(ModernDmidecodeTest, memoryTypesAndFormFactors) {
  std::vector<Structure> structures;
  for (unsigned code = 0; code <= 0x40; ++code) {
    structures.push_back(
        memoryDevice(1024, 0, static_cast<uint8_t>(code), static_cast<uint8_t>(code)));
  }
  const auto all = dmidecode(structures, {3, 4});
  unsigned names = 0;
  for (unsigned code = 0; code <= 0x40; ++code) {
    const std::string type = all.at(code)["Type"];
    if (isName(type)) {
      EXPECT_EQ(lower(dmiMemoryType(static_cast<uint8_t>(code))), lower(type)) << code;
      ++names;
    }
    const std::string form = all.at(code)["Form Factor"];
    if (isName(form)) {
      EXPECT_EQ(lower(dmiMemoryFormFactor(static_cast<uint8_t>(code))), lower(form)) << code;
      ++names;
    }
  }
  EXPECT_GT(names, 40u);
}

}  // namespace
}  // namespace quenlor
