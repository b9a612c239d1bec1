// What the machine is: system, baseboard and enclosure (DMTF SMBIOS, types 1 to 3).
#pragma once

#include <array>
#include <cstdint>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

class SMBIOSTable1Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable1Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  const char* getProduct() const { return traced("Product:", m_product); }
  const char* getVersion() const { return traced("Version:", m_version); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }
  uint8_t getWakeUpType() const { return traced("Wake-up Type:", m_wakeUpType); }
  // 32 upper-case hexadecimal digits in stored byte order, in one buffer for the whole class that
  // the next call overwrites; null when all are zero.
  const char* getUUIDAsString() const;

 private:
  StringNumber m_manufacturer;
  StringNumber m_product;
  StringNumber m_version;
  StringNumber m_serialNumber;
  std::array<uint8_t, 16> m_uuid{};
  uint8_t m_wakeUpType = 0;
};

class SMBIOSTable2Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable2Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  const char* getProduct() const { return traced("Product:", m_product); }
  const char* getVersion() const { return traced("Version:", m_version); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }

 private:
  StringNumber m_manufacturer;
  StringNumber m_product;
  StringNumber m_version;
  StringNumber m_serialNumber;
};

class SMBIOSTable3Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable3Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  uint8_t getType() const { return traced("Type:", m_type); }  // the chassis lock, bit 7, included
  const char* getVersion() const { return traced("Version:", m_version); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }
  const char* getAssetTag() const { return traced("Asset Tag:", m_assetTag); }

 private:
  StringNumber m_manufacturer;
  uint8_t m_type = 0;
  StringNumber m_version;
  StringNumber m_serialNumber;
  StringNumber m_assetTag;
};

}  // namespace quenlor
