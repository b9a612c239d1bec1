// OEM strings, portable battery and hardware security (DMTF SMBIOS, types 11, 22 and 24).
#pragma once

#include <cstdint>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

// The walk over the table keeps no structure of this type; the class serves callers with a
// structure of their own.
class SMBIOSTable11Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable11Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  uint8_t getCount() const { return traced("Count:", m_count); }
  const char* getString(int n) const;  // from 1; null when there is none

 private:
  uint8_t m_count = 0;
};

class SMBIOSTable22Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable22Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getLocation() const { return traced("Location:", m_location); }
  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  const char* getManufactureDate() const { return traced("Manufacture Date:", m_manufactureDate); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }
  const char* getDeviceName() const { return traced("Device Name:", m_deviceName); }

 private:
  StringNumber m_location;
  StringNumber m_manufacturer;
  StringNumber m_manufactureDate;
  StringNumber m_serialNumber;
  StringNumber m_deviceName;
};

class SMBIOSTable24Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable24Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  // The settings byte, signed: what derives statuses from it depends on its sign.
  int8_t getHWSecStatus() const {
    return traced("HW Sec Status:", static_cast<int8_t>(m_settings));
  }

 private:
  uint8_t m_settings = 0;
};

}  // namespace quenlor
