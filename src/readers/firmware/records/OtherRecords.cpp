#include "readers/firmware/records/OtherRecords.h"

namespace quenlor {

SMBIOSTable11Data::SMBIOSTable11Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable11Data.cpp") {}

int SMBIOSTable11Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_count);
  return readStringSet(buf, off);
}

const char* SMBIOSTable11Data::getString(int n) const {
  return n < 1 || n > UINT8_MAX ? nullptr
                                : traced("String:", StringNumber{static_cast<uint8_t>(n)});
}

void SMBIOSTable11Data::dump() const {
  SMBIOSTableData::dump();
  print("Count", getCount());
  for (int n = 1; n <= m_count; ++n) print("String", getString(n));
}

SMBIOSTable22Data::SMBIOSTable22Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable22Data.cpp") {}

int SMBIOSTable22Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_location, m_manufacturer, m_manufactureDate, m_serialNumber,
             m_deviceName);
  return readStringSet(buf, off);
}

void SMBIOSTable22Data::dump() const {
  SMBIOSTableData::dump();
  print("Location", getLocation());
  print("Manufacturer", getManufacturer());
  print("Manufacture Date", getManufactureDate());
  print("Serial Number", getSerialNumber());
  print("Device Name", getDeviceName());
}

SMBIOSTable24Data::SMBIOSTable24Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable24Data.cpp") {}

int SMBIOSTable24Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_settings);
  return readStringSet(buf, off);
}

void SMBIOSTable24Data::dump() const {
  SMBIOSTableData::dump();
  print("HW Security Settings", getHWSecStatus());
}

}  // namespace quenlor
