#include "readers/firmware/records/MemoryRecords.h"

namespace quenlor {
namespace {

constexpr unsigned kFirstReservedSize = 125;  // from here on sizes say why there is none
constexpr unsigned kLargestExponent = 31;     // 2^31 MB: what a 32-bit count of megabytes holds
constexpr uint16_t kUnknownDeviceSize = 0xFFFF;
constexpr uint16_t kSizeInKilobytes = 0x8000;

// Size in MB of a module's size byte; its highest bit says that the module has two banks.
int64_t moduleSizeMB(uint8_t size) {
  const unsigned exponent = size & 0x7Fu;
  if (exponent >= kFirstReservedSize || exponent > kLargestExponent) {
    return SMBIOSTable6Data::kUnknownSize;
  }
  return int64_t{1} << exponent;
}

uint32_t deviceSizeKB(uint16_t size) {
  if (size == kUnknownDeviceSize) return 0;
  const uint32_t amount = size & 0x7FFFu;
  return (size & kSizeInKilobytes) != 0 ? amount : amount * 1024;
}

int skipZeros(const TableBytes& buf, int p) {
  while (p < buf.size() && buf[p] == 0) ++p;
  return p;
}

}  // namespace

SMBIOSTable5Data::SMBIOSTable5Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable5Data.cpp") {}

int SMBIOSTable5Data::readBlock(const TableBytes& buf, int off) {
  const int end = SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_detecting, m_correcting, m_supportedInterleave, m_currentInterleave,
             m_maximumModuleSize, m_speeds, m_types, m_voltage, m_slots);
  return skipZeros(buf, end);
}

void SMBIOSTable5Data::dump() const {
  SMBIOSTableData::dump();
  print("Error Detecting Method", getErrorDetectingMethod());
  print("Error Correcting Capability", getErrorCorrectingCapability());
  print("Supported Interleave", getSupportedInterleave());
  print("Current Interleave", getCurrentInterleave());
  print("Maximum Memory Module Size", getMaximumMemoryModuleSize());
  print("Supported Speeds", getSupportedSpeeds());
  print("Supported Memory Types", getSupportedMemoryTypes());
  print("Memory Module Voltage", getMemoryModuleVoltage());
  print("Associated Memory Slots", getNumAssocMemorySlots());
}

SMBIOSTable6Data::SMBIOSTable6Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable6Data.cpp") {}

int SMBIOSTable6Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_socket, m_bankConnections, m_currentSpeed, m_memoryType,
             m_installedSize, m_enabledSize, m_errorStatus);
  return readStringSet(buf, off);
}

int64_t SMBIOSTable6Data::getInstalledSizeMB() const { return moduleSizeMB(getInstalledSize()); }

int64_t SMBIOSTable6Data::getEnabledSizeMB() const { return moduleSizeMB(getEnabledSize()); }

void SMBIOSTable6Data::dump() const {
  SMBIOSTableData::dump();
  print("Socket Designation", getSocketDesignation());
  print("Bank Connections", getBankConnections());
  print("Current Speed", getCurrentSpeed());
  print("Memory Type", getMemoryType());
  print("Installed Size MB", getInstalledSizeMB());
  print("Enabled Size MB", getEnabledSizeMB());
  print("Error Status", getErrorStatus());
}

SMBIOSTable16Data::SMBIOSTable16Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable16Data.cpp") {}

int SMBIOSTable16Data::readBlock(const TableBytes& buf, int off) {
  const int end = SMBIOSTableData::readBlock(buf, off);
  readFields(buf, off + 4, m_location, m_use, m_errorCorrection, m_maxCapacity, m_errorHandle,
             m_devices);
  return skipZeros(buf, end + 1);
}

void SMBIOSTable16Data::dump() const {
  SMBIOSTableData::dump();
  print("Location", getLocation());
  print("Use", getUse());
  print("Error Correction", getErrorCorrection());
  print("Max Capacity KB", getMaxCapacity());
  print("Error Handle", getErrorHandle());
  print("Memory Devices", getNumMemDevices());
}

SMBIOSTable17Data::SMBIOSTable17Data(int revision)
    : SMBIOSTableData(revision, "../../../src/invscan/SMBIOS/SMBIOSTable17Data.cpp") {}

int SMBIOSTable17Data::readBlock(const TableBytes& buf, int off) {
  SMBIOSTableData::readBlock(buf, off);
  const int next = readFields(buf, off + 4, m_arrayHandle, m_errorHandle, m_totalWidth, m_dataWidth,
                              m_size, m_formFactor, m_deviceSet, m_deviceLocator, m_bankLocator,
                              m_memoryType, m_typeDetail);
  // The minor number alone stands for "2.3 or later": tables of 3.0 to 3.2 have none. Meant so.
  if (majorVersion() >= 2 && minorVersion() > 2) {
    readFields(buf, next, m_speed, m_manufacturer, m_serialNumber, m_assetTag, m_partNumber);
  }
  return readStringSet(buf, off);
}

uint32_t SMBIOSTable17Data::getSizeKB() const { return traced("Size KB:", deviceSizeKB(m_size)); }

void SMBIOSTable17Data::dump() const {
  SMBIOSTableData::dump();
  print("Memory Array Handle", getMemoryArrayHandle());
  print("Memory Error Handle", getMemoryErrorHandle());
  print("Total Width", getTotalWidth());
  print("Data Width", getDataWidth());
  print("Size", getSize());
  print("Size KB", getSizeKB());
  print("Form Factor", getFormFactor());
  print("Device Set", getDeviceSet());
  print("Device Locator", getDeviceLocator());
  print("Bank Locator", getBankLocator());
  print("Memory Type", getMemoryType());
  print("Type Detail", getTypeDetail());
  print("Speed", getSpeed());
  print("Manufacturer", getManufacturer());
  print("Serial Number", getSerialNumber());
  print("Asset Tag", getAssetTag());
  print("Part Number", getPartNumber());
}

}  // namespace quenlor
