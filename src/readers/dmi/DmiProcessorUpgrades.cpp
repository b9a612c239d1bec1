// Names of processors' sockets (DMTF SMBIOS 3.8, 7.5.5).
#include "readers/dmi/CodeNames.h"
#include "readers/dmi/DmiNames.h"

namespace quenlor {
namespace {

struct UpgradeName {
  uint8_t code;
  std::string_view name;
};

// In ascending order of codes.
constexpr UpgradeName PROCESSOR_UPGRADES[] = {
    {0x03, "Daughter Board"},
    {0x04, "ZIF Socket"},
    {0x05, "Replaceable Piggy Back"},
    {0x06, "None"},
    {0x07, "LIF Socket"},
    {0x08, "Slot 1"},
    {0x09, "Slot 2"},
    {0x0A, "370-pin Socket"},
    {0x0B, "Slot A"},
    {0x0C, "Slot M"},
    {0x0D, "Socket 423"},
    {0x0E, "Socket A (462)"},
    {0x0F, "Socket 478"},
    {0x10, "Socket 754"},
    {0x11, "Socket 940"},
    {0x12, "Socket 939"},
    {0x13, "Socket mPGA604"},
    {0x14, "LGA771"},
    {0x15, "LGA775"},
    {0x16, "Socket S1"},
    {0x17, "Socket AM2"},
    {0x18, "Socket F (1207)"},
    {0x19, "LGA1366"},
    {0x1A, "Socket G34"},
    {0x1B, "Socket AM3"},
    {0x1C, "Socket C32"},
    {0x1D, "LGA1156"},
    {0x1E, "LGA1567"},
    {0x1F, "PGA988A"},
    {0x20, "BGA1288"},
    {0x21, "rPGA988B"},
    {0x22, "BGA1023"},
    {0x23, "BGA1224"},
    {0x24, "LGA1155"},
    {0x25, "LGA1356"},
    {0x26, "LGA2011"},
    {0x27, "Socket FS1"},
    {0x28, "Socket FS2"},
    {0x29, "Socket FM1"},
    {0x2A, "Socket FM2"},
    {0x2B, "LGA2011-3"},
    {0x2C, "LGA1356-3"},
    {0x2D, "LGA1150"},
    {0x2E, "BGA1168"},
    {0x2F, "BGA1234"},
    {0x30, "BGA1364"},
    {0x31, "Socket AM4"},
    {0x32, "LGA1151"},
    {0x33, "BGA1356"},
    {0x34, "BGA1440"},
    {0x35, "BGA1515"},
    {0x36, "LGA3647-1"},
    {0x37, "Socket SP3"},
    {0x38, "Socket SP3r2"},
    {0x39, "LGA2066"},
    {0x3A, "BGA1392"},
    {0x3B, "BGA1510"},
    {0x3C, "BGA1528"},
    {0x3D, "LGA4189"},
    {0x3E, "LGA1200"},
    {0x3F, "LGA4677"},
    {0x40, "LGA1700"},
    {0x41, "BGA1744"},
    {0x42, "BGA1781"},
    {0x43, "BGA1211"},
    {0x44, "BGA2422"},
    {0x45, "LGA1211"},
    {0x46, "LGA2422"},
    {0x47, "LGA5773"},
    {0x48, "BGA5773"},
    {0x49, "Socket AM5"},
    {0x4A, "Socket SP5"},
    {0x4B, "Socket SP6"},
    {0x4C, "BGA883"},
    {0x4D, "BGA1190"},
    {0x4E, "BGA4129"},
    {0x4F, "LGA4710"},
    {0x50, "LGA7529"},
    {0x51, "BGA1964"},
    {0x52, "BGA1792"},
    {0x53, "BGA2049"},
    {0x54, "BGA2551"},
    {0x55, "LGA1851"},
    {0x56, "BGA2114"},
    {0x57, "BGA2833"},
};

}  // namespace

std::string_view dmiProcessorUpgrade(uint8_t code) { return nameOfCode(PROCESSOR_UPGRADES, code); }

}  // namespace quenlor
