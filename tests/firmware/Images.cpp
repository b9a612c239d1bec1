#include "tests/firmware/Images.h"

#include <algorithm>
#include <iterator>

namespace quenlor::test {
namespace {

constexpr Uuid kUuid = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                        0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

constexpr uint16_t kDimm = 1 << 8;
constexpr uint16_t kEcc = 1 << 6;
constexpr uint16_t kSdram = 1 << 10;
constexpr uint8_t kNotPopulated = 0x00;

// Two Pentium III sockets and memory described the old way, by controller and modules.
Firmware oldServer() {
  FirmwareTable table({2, 3});
  table.add(Bios{.vendor = "ZUM", .version = "-[QA1-1.01]-", .date = "06/28/01"});
  table.add(System{.manufacturer = "ZUM",
                   .product = "Server 342 -[867041X]-",
                   .version = "Version 5",
                   .serial = "23A0123",
                   .uuid = kUuid});
  table.add(Baseboard{"ZUM", "Main board", "Rev A", "B0001"});
  table.add(Enclosure{"ZUM", 17, "None", "23A0123", "Rack 4"});
  Processor processor{.socket = "Processor 1",
                      .family = 0x11,
                      .manufacturer = "GenuineIntel",
                      .eax = 0x683,
                      .edx = 0x0387FBFF,
                      .version = "Pentium III",
                      .voltage = 0x91,
                      .externalClock = 133,
                      .maxSpeed = 1133,
                      .currentSpeed = 1000,
                      .upgrade = 4,
                      .serial = "P0001"};
  table.add(processor);
  processor.socket = "Processor 2";
  processor.serial = "P0002";
  table.add(processor);
  table.add(MemoryController{.maximumModuleSize = 9, .slots = 4});
  table.add(MemoryModule{"J1", kDimm | kEcc | kSdram, 8});
  table.add(MemoryModule{"J2", kDimm | kEcc | kSdram, 0x87});
  table.add(MemoryModule{.socket = "J3"});
  table.add(MemoryModule{.socket = "J4"});
  table.add(Connector{"J10", 0, "Serial A", 8, 9});
  table.add(Connector{"", 0, "Keyboard", 15, 13});
  table.add(Slot{.name = "PCI 1", .id = 1});
  table.add(Slot{.name = "PCI 2", .usage = 4, .id = 2});
  table.add(OnBoardDevice{0x83, "Video"});
  table.add(HardwareSecurity{0x40});
  table.add(EndOfTable{});
  return Firmware(table);
}

void addPlainMachine(FirmwareTable& table, const std::string& serial) {
  table.add(Bios{.vendor = "Example BIOS", .version = "1.20", .date = "03/15/2009"});
  table.add(System{.manufacturer = "Example Systems",
                   .product = "Rack 2000",
                   .version = "3",
                   .serial = serial,
                   .uuid = kUuid,
                   .sku = "SKU-1",
                   .family = "Rack"});
  table.add(Baseboard{"Example Boards", "Board 20", "2.0", "BRD-" + serial});
  table.add(Enclosure{"Example Systems", 23, "1.0", "ENC-" + serial, "Asset 77"});
  table.add(Processor{.socket = "CPU 1",
                      .family = 0xB3,
                      .manufacturer = "Intel",
                      .eax = 0x10676,
                      .edx = 0xBFEBFBFF,
                      .version = "Xeon E5420",
                      .voltage = 0x8C,
                      .externalClock = 333,
                      .maxSpeed = 4000,
                      .currentSpeed = 2500,
                      .upgrade = 15,
                      .serial = "CPU-" + serial,
                      .assetTag = "CPU asset"});
}

// Memory described by array and devices, one empty socket and one device of unknown size.
Firmware server24() {
  FirmwareTable table({2, 4});
  addPlainMachine(table, "SN-2400");
  table.add(Processor{.socket = "CPU 2", .family = 2, .status = kNotPopulated, .upgrade = 2});
  table.add(MemoryArray{.maximumKB = 4 << 20, .devices = 4});
  MemoryDevice device{.size = 1024,
                      .locator = "DIMM0",
                      .bank = "BANK 0",
                      .speed = 667,
                      .manufacturer = "Example Memory",
                      .serial = "M0001",
                      .assetTag = "M-1",
                      .partNumber = "PN-1"};
  table.add(device);
  device.locator = "DIMM1";
  device.serial = "M0002";
  table.add(device);
  table.add(MemoryDevice{.locator = "DIMM2", .bank = "BANK 1", .type = 2, .detail = 4});
  table.add(MemoryDevice{.size = 0xFFFF, .locator = "DIMM3", .bank = "BANK 1", .detail = 4});
  table.add(HardwareSecurity{0xC3});
  table.add(EndOfTable{});
  return Firmware(table);
}

Firmware virtualMachine() {
  FirmwareTable table({2, 8});
  table.add(Bios{.vendor = "SeaBIOS", .version = "1.16.2", .date = "04/01/2014", .romSize = 0});
  table.add(System{.manufacturer = "QEMU",
                   .product = "Standard PC (i440FX + PIIX, 1996)",
                   .version = "pc-i440fx-7.2",
                   .uuid = kUuid});
  table.add(Enclosure{.manufacturer = "QEMU", .type = 1, .version = "pc-i440fx-7.2"});
  table.add(Processor{.socket = "CPU 0",
                      .family = 1,
                      .manufacturer = "QEMU",
                      .eax = 0x663,
                      .edx = 0x078BFBFD,
                      .version = "pc-i440fx-7.2",
                      .maxSpeed = 2000,
                      .currentSpeed = 2000,
                      .upgrade = 1});
  table.add(MemoryArray{.maximumKB = 512 << 10, .devices = 1});
  table.add(MemoryDevice{
      .size = 512, .locator = "DIMM 0", .type = 7, .detail = 2, .manufacturer = "QEMU"});
  table.add(Structure(32).raw(std::string(7, '\0')));
  table.add(EndOfTable{});
  return Firmware(table);
}

Firmware table30() {
  FirmwareTable table({3, 0});
  addPlainMachine(table, "SN-3000");
  table.add(MemoryArray{.maximumKB = 32 << 20, .devices = 2});
  MemoryDevice device{.size = 16384,
                      .locator = "DIMM_A1",
                      .type = 26,
                      .speed = 2400,
                      .manufacturer = "Example Memory",
                      .serial = "M3000"};
  table.add(device);
  device.locator = "DIMM_B1";
  table.add(device);
  table.add(EndOfTable{});
  return Firmware(table);
}

Firmware tableAt(Version version, uint32_t address, const std::string& serial) {
  FirmwareTable table(version);
  addPlainMachine(table, serial);
  table.add(MemoryArray{.maximumKB = 3 << 20, .devices = 2});
  table.add(MemoryDevice{.size = 0x8400, .locator = "DIMM0", .speed = 800});
  table.add(MemoryDevice{.size = 0x0400, .bank = "BANK 0", .speed = 800});
  table.add(EndOfTable{});
  Firmware firmware(table);
  firmware.tableAddress = address;
  return firmware;
}

Firmware tableLow() { return tableAt({2, 5}, 0xE0000, "SN-LOW"); }
Firmware tableHigh() { return tableAt({2, 6}, 0x110010, "SN-HIGH"); }

// A maker's own structures around the standard ones, and strings that nobody asks for.
Firmware oemStructures() {
  FirmwareTable table({2, 7});
  table.add(Structure(221).dword(0x01020304).text("OEM header"));
  addPlainMachine(table, "SN-OEM");
  table.add(Structure(128));
  table.add(OemStrings{{"first", "second", "third"}});
  table.add(Structure(200).raw(std::string(200, '\x7F')).strings({"a", "b"}));
  table.add(Battery{"Rear", "Example Power", "01/02/2010", "BAT-1", "Backup"});
  table.add(MemoryArray{.maximumKB = 8 << 20, .devices = 2});
  table.add(MemoryDevice{.size = 4096, .locator = "DIMM0", .bank = "BANK 0", .speed = 1333});
  table.add(Structure(255).text("last"));
  table.add(EndOfTable{});
  return Firmware(table);
}

// A board whose maker filled nothing in.
Firmware placeholders() {
  FirmwareTable table({2, 4});
  table.add(Bios{.vendor = "Example BIOS", .version = "Not Available", .date = "Unknown"});
  table.add(System{.manufacturer = "System Manufacturer",
                   .product = "System Model",
                   .version = "This is OEM version",
                   .serial = "Not Available   "});
  table.add(Baseboard{"Example Boards", "Board 1 \t ", "x.xx", "No Asset Information"});
  table.add(Enclosure{"\x01", 0x83, "caf\xC3\xA9", "Chassis Serial", "xx No Asset Information xx"});
  table.add(MemoryArray{.maximumKB = 2 << 20, .devices = 2});
  table.add(MemoryDevice{.size = 1024, .locator = "Not Available", .bank = "BANK 0"});
  table.add(MemoryDevice{.size = 1024, .locator = "DIMM1", .bank = "Not Available"});
  table.add(EndOfTable{});
  return Firmware(table);
}

// The text "_DMI_" as a constant among code ahead of the real header, as virtual machines' firmware
// has it: what follows announces 0x4000 bytes of ordinary, empty memory as the table.
Firmware falseAnchor() {
  FirmwareTable table({2, 8});
  addPlainMachine(table, "SN-REAL");
  table.add(EndOfTable{});
  Firmware firmware(table);
  const std::string code("\x90\x00\x40\x00\x10\x00\x00\x07\x00\x24", 10);
  firmware.otherMemory[0xF1234] = "_DMI_" + code;
  return firmware;
}

Firmware emptyTable() {
  Firmware firmware(FirmwareTable({2, 4}));
  firmware.announcedLength = 0;
  return firmware;
}

struct NamedFirmware {
  const char* name;
  Firmware (*make)();
};

constexpr NamedFirmware IMAGES[] = {
    {"old-server-2.3", oldServer},     {"server-2.4", server24},
    {"vm-2.8", virtualMachine},        {"table-3.0", table30},
    {"table-low", tableLow},           {"table-high", tableHigh},
    {"oem-structures", oemStructures}, {"placeholders", placeholders},
    {"false-anchor", falseAnchor},     {"empty", emptyTable},
};

}  // namespace

std::vector<std::string> firmwareNames() {
  std::vector<std::string> names;
  for (const NamedFirmware& image : IMAGES) names.emplace_back(image.name);
  return names;
}

std::optional<Firmware> firmwareNamed(const std::string& name) {
  const auto* found =
      std::find_if(std::begin(IMAGES), std::end(IMAGES),
                   [&name](const NamedFirmware& image) { return name == image.name; });
  if (found == std::end(IMAGES)) return std::nullopt;
  return found->make();
}

}  // namespace quenlor::test
