// BIOS information (DMTF SMBIOS, type 0).
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

class SMBIOSTable0Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable0Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getVendor() const { return traced("Vendor:", m_vendor); }
  const char* getVersion() const { return traced("Version:", m_version); }
  const char* getReleaseDate() const { return traced("Release Date:", m_releaseDate); }
  uint16_t getStartAddrSeg() const { return traced("Start Addr Seg:", m_startAddrSeg); }
  uint32_t getCharacteristicsLow() const { return traced("Characteristics:", m_low); }
  uint32_t getCharacteristicsHigh() const { return traced("Characteristics High:", m_high); }
  uint8_t getExtensionByte1() const { return traced("Extension Byte 1:", m_extension1); }
  int getROMSizeKB() const;

  // The release date as YYYY-MM-DD in a new text (malloc) that the caller frees; a date of unknown
  // form unchanged; null without a release date.
  char* getReleaseDateAsYYYYMMDD() const;
  // The same text as a string.
  std::optional<std::string> releaseDate() const;
  // Local midnight of the release date; 0 without one.
  time_t getReleaseDateAsTimeT() const;

  bool isISASupported() const { return tracedBit("ISA:", m_low, 4); }
  bool isMCASupported() const { return tracedBit("MCA:", m_low, 5); }
  bool isEISASupported() const { return tracedBit("EISA:", m_low, 6); }
  bool isPCISupported() const { return tracedBit("PCI:", m_low, 7); }
  bool isPCMCIASupported() const { return tracedBit("PCMCIA:", m_low, 8); }
  bool isPnPSupported() const { return tracedBit("PnP:", m_low, 9); }
  bool isAPMSupported() const { return tracedBit("APM:", m_low, 10); }
  bool isFlashableBIOS() const { return tracedBit("Flashable BIOS:", m_low, 11); }
  bool isBIOSShadowing() const { return tracedBit("BIOS Shadowing:", m_low, 12); }
  bool isVLVESASupported() const { return tracedBit("VL-VESA:", m_low, 13); }
  bool isESCDSupported() const { return tracedBit("ESCD:", m_low, 14); }
  bool isCDBootSupported() const { return tracedBit("CD Boot:", m_low, 15); }
  bool isSelectableBoot() const { return tracedBit("Selectable Boot:", m_low, 16); }
  bool isBIOSROMSocketed() const { return tracedBit("BIOS ROM Socketed:", m_low, 17); }
  bool isPCCardBootable() const { return tracedBit("PC Card Boot:", m_low, 18); }
  bool isEnhancedDiskDrive() const { return tracedBit("Enhanced Disk Drive:", m_low, 19); }
  bool isACPISupported() const { return tracedBit("ACPI:", m_extension1, 0); }
  bool isUSBLegacySupported() const { return tracedBit("USB Legacy:", m_extension1, 1); }
  bool isAGPSupported() const { return tracedBit("AGP:", m_extension1, 2); }
  bool isI2OBootSupported() const { return tracedBit("I2O Boot:", m_extension1, 3); }
  bool isLS120BootSupported() const { return tracedBit("LS-120 Boot:", m_extension1, 4); }
  bool isATAPIZipBootSupported() const { return tracedBit("ATAPI ZIP Boot:", m_extension1, 5); }
  bool is1394BootSupported() const { return tracedBit("1394 Boot:", m_extension1, 6); }
  bool isSmartBatteryBIOS() const { return tracedBit("Smart Battery:", m_extension1, 7); }

 private:
  StringNumber m_vendor;
  StringNumber m_version;
  uint16_t m_startAddrSeg = 0;
  StringNumber m_releaseDate;
  uint8_t m_romSize = 0;
  uint32_t m_low = 0;   // characteristics, first four bytes
  uint32_t m_high = 0;  // characteristics, last four bytes
  uint8_t m_extension1 = 0;
};

}  // namespace quenlor
