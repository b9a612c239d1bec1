#include "readers/dmi/DmiNames.h"

#include <cstddef>

namespace quenlor {
namespace {

using Name = std::string_view;

// Each list begins with code 0.
constexpr Name FORM_FACTORS[] = {"",        "",       "",
                                 "SIMM",    "SIP",    "Chip",
                                 "DIP",     "ZIP",    "Proprietary Card",
                                 "DIMM",    "TSOP",   "Row of chips",
                                 "RIMM",    "SODIMM", "SRIMM",
                                 "FB-DIMM", "Die",    "CAMM",
                                 "CUDIMM",  "CSODIMM"};

constexpr Name MEMORY_TYPES[] = {"",
                                 "",
                                 "",
                                 "DRAM",
                                 "EDRAM",
                                 "VRAM",
                                 "SRAM",
                                 "RAM",
                                 "ROM",
                                 "FLASH",
                                 "EEPROM",
                                 "FEPROM",
                                 "EPROM",
                                 "CDRAM",
                                 "3DRAM",
                                 "SDRAM",
                                 "SGRAM",
                                 "RDRAM",
                                 "DDR",
                                 "DDR2",
                                 "DDR2 FB-DIMM",
                                 "",
                                 "",
                                 "",
                                 "DDR3",
                                 "FBD2",
                                 "DDR4",
                                 "LPDDR",
                                 "LPDDR2",
                                 "LPDDR3",
                                 "LPDDR4",
                                 "Logical non-volatile device",
                                 "HBM",
                                 "HBM2",
                                 "DDR5",
                                 "LPDDR5",
                                 "HBM3",
                                 "MRDIMM"};

constexpr Name ERROR_CORRECTIONS[] = {"",       "other",      "",          "none",
                                      "parity", "single-bit", "multi-bit", "crc"};

// Modules with multiplexed ranks (8) are made of ordinary chips.
constexpr Name TECHNOLOGIES[] = {"",         "other",    "",       "dram", "nvdimm-n",
                                 "nvdimm-f", "nvdimm-p", "optane", "dram"};
constexpr Name kHighBandwidth = "hbm";

constexpr Name OLD_SLOTS[] = {"",
                              "other",
                              "",
                              "isa",
                              "mca",
                              "eisa",
                              "pci",
                              "pcmcia",
                              "vl-vesa",
                              "proprietary",
                              "processor card",
                              "proprietary memory card",
                              "i/o riser card",
                              "nubus",
                              "pci 66 mhz",
                              "agp",
                              "agp 2x",
                              "agp 4x",
                              "pci-x",
                              "agp 8x",
                              "m.2 socket 1-dp",
                              "m.2 socket 1-sd",
                              "m.2 socket 2",
                              "m.2 socket 3",
                              "mxm type i",
                              "mxm type ii",
                              "mxm type iii standard",
                              "mxm type iii he",
                              "mxm type iv",
                              "mxm 3.0 type a",
                              "mxm 3.0 type b",
                              "pci express gen 2 sff-8639 (u.2)",
                              "pci express gen 3 sff-8639 (u.2)",
                              "pci express mini 52-pin with keep-outs",
                              "pci express mini 52-pin without keep-outs",
                              "pci express mini 76-pin",
                              "pci express gen 4 sff-8639 (u.2)",
                              "pci express gen 5 sff-8639 (u.2)",
                              "ocp nic 3.0 small form factor",
                              "ocp nic 3.0 large form factor",
                              "ocp nic before 3.0"};

constexpr uint8_t kFlexbusSlot = 0x30;
constexpr uint8_t kFirstNewSlot = 0xA0;
constexpr Name NEW_SLOTS[] = {"pc-98/c20",
                              "pc-98/c24",
                              "pc-98/e",
                              "pc-98/local bus",
                              "pc-98/card",
                              "pci express",
                              "pci express x1",
                              "pci express x2",
                              "pci express x4",
                              "pci express x8",
                              "pci express x16",
                              "pci express gen 2",
                              "pci express gen 2 x1",
                              "pci express gen 2 x2",
                              "pci express gen 2 x4",
                              "pci express gen 2 x8",
                              "pci express gen 2 x16",
                              "pci express gen 3",
                              "pci express gen 3 x1",
                              "pci express gen 3 x2",
                              "pci express gen 3 x4",
                              "pci express gen 3 x8",
                              "pci express gen 3 x16",
                              "",
                              "pci express gen 4",
                              "pci express gen 4 x1",
                              "pci express gen 4 x2",
                              "pci express gen 4 x4",
                              "pci express gen 4 x8",
                              "pci express gen 4 x16",
                              "pci express gen 5",
                              "pci express gen 5 x1",
                              "pci express gen 5 x2",
                              "pci express gen 5 x4",
                              "pci express gen 5 x8",
                              "pci express gen 5 x16",
                              "pci express gen 6 and beyond",
                              "edsff e1",
                              "edsff e3"};

constexpr Name SLOT_WIDTHS[] = {"",       "other",  "",        "8 bit", "16 bit",
                                "32 bit", "64 bit", "128 bit", "x1",    "x2",
                                "x4",     "x8",     "x12",     "x16",   "x32"};
constexpr Name SLOT_USAGES[] = {"", "other", "", "available", "in use", "unavailable"};
constexpr Name SLOT_LENGTHS[] = {"", "other", "", "short", "long", "2.5 inch", "3.5 inch"};

constexpr Name POWER_STATUSES[] = {"", "other", "", "ok", "non-critical", "critical"};

constexpr Name kDesktop = "desktop";
constexpr Name kLaptop = "laptop";
constexpr Name kServer = "server";
constexpr Name kEmbedded = "embedded";

// Enclosures that are no machine's own (docking station, expansion chassis) have no word.
constexpr Name CHASSIS[] = {"",
                            "",
                            "",
                            kDesktop,
                            kDesktop,
                            kDesktop,
                            kDesktop,
                            kDesktop,
                            kLaptop,
                            kLaptop,
                            kLaptop,
                            "handset",
                            "",
                            kDesktop,
                            kLaptop,
                            kDesktop,
                            kDesktop,
                            kServer,
                            "",
                            "",
                            "",
                            "",
                            "",
                            kServer,
                            kDesktop,
                            kServer,
                            kServer,
                            kServer,
                            "blade",
                            "blade",
                            "tablet",
                            "convertible",
                            "convertible",
                            kEmbedded,
                            kEmbedded,
                            kDesktop,
                            kDesktop};

constexpr Name BMC_INTERFACES[] = {"", "kcs", "smic", "bt", "ssif"};

template <size_t kCount>
Name nameOf(const Name (&names)[kCount], unsigned code) {
  return code < kCount ? names[code] : Name();
}

}  // namespace

std::string_view dmiMemoryFormFactor(uint8_t code) { return nameOf(FORM_FACTORS, code); }

std::string_view dmiMemoryType(uint8_t code) { return nameOf(MEMORY_TYPES, code); }

std::string_view dmiErrorCorrection(uint8_t code) { return nameOf(ERROR_CORRECTIONS, code); }

std::string_view dmiMemoryTechnology(uint8_t technology, uint8_t memoryType) {
  const bool isHighBandwidth = dmiMemoryType(memoryType).starts_with("HBM");
  return isHighBandwidth ? kHighBandwidth : nameOf(TECHNOLOGIES, technology);
}

std::string_view dmiSlotType(uint8_t code) {
  if (code == kFlexbusSlot) return "cxl flexbus 1.0";
  return code < kFirstNewSlot ? nameOf(OLD_SLOTS, code)
                              : nameOf(NEW_SLOTS, unsigned{code} - kFirstNewSlot);
}

std::string_view dmiSlotWidth(uint8_t code) { return nameOf(SLOT_WIDTHS, code); }

std::string_view dmiSlotUsage(uint8_t code) { return nameOf(SLOT_USAGES, code); }

std::string_view dmiSlotLength(uint8_t code) { return nameOf(SLOT_LENGTHS, code); }

std::string_view dmiPowerStatus(uint8_t code) { return nameOf(POWER_STATUSES, code); }

std::string_view dmiChassis(uint8_t enclosureType) { return nameOf(CHASSIS, enclosureType); }

std::string_view dmiBmcInterface(uint8_t code) { return nameOf(BMC_INTERFACES, code); }

}  // namespace quenlor
