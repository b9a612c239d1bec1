// Memory controller and module of older firmware, memory array and device of newer (DMTF SMBIOS,
// types 5, 6, 16 and 17).
#pragma once

#include <cstdint>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

class SMBIOSTable5Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable5Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  uint8_t getErrorDetectingMethod() const { return traced("Error Detecting:", m_detecting); }
  uint8_t getErrorCorrectingCapability() const { return traced("Error Correcting:", m_correcting); }
  uint8_t getSupportedInterleave() const {
    return traced("Supported Interleave:", m_supportedInterleave);
  }
  uint8_t getCurrentInterleave() const {
    return traced("Current Interleave:", m_currentInterleave);
  }
  // The exponent n of 2^n MB as it stands in the structure.
  uint8_t getMaximumMemoryModuleSize() const {
    return traced("Maximum Memory Module Size:", m_maximumModuleSize);
  }
  uint16_t getSupportedSpeeds() const { return traced("Supported Speeds:", m_speeds); }
  uint16_t getSupportedMemoryTypes() const { return traced("Supported Memory Types:", m_types); }
  uint8_t getMemoryModuleVoltage() const { return traced("Memory Module Voltage:", m_voltage); }
  uint8_t getNumAssocMemorySlots() const { return traced("Associated Memory Slots:", m_slots); }

 private:
  uint8_t m_detecting = 0;
  uint8_t m_correcting = 0;
  uint8_t m_supportedInterleave = 0;
  uint8_t m_currentInterleave = 0;
  uint8_t m_maximumModuleSize = 0;
  uint16_t m_speeds = 0;
  uint16_t m_types = 0;
  uint8_t m_voltage = 0;
  uint8_t m_slots = 0;
};

class SMBIOSTable6Data : public SMBIOSTableData {
 public:
  static constexpr int64_t kUnknownSize = -1;  // not determinable, not enabled or not installed

  explicit SMBIOSTable6Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getSocketDesignation() const { return traced("Socket Designation:", m_socket); }
  uint8_t getBankConnections() const { return traced("Bank Connections:", m_bankConnections); }
  uint8_t getCurrentSpeed() const { return traced("Current Speed:", m_currentSpeed); }  // ns
  uint16_t getMemoryType() const { return traced("Memory Type:", m_memoryType); }
  uint8_t getInstalledSize() const { return traced("Installed Size:", m_installedSize); }  // raw
  uint8_t getEnabledSize() const { return traced("Enabled Size:", m_enabledSize); }        // raw
  uint8_t getErrorStatus() const { return traced("Error Status:", m_errorStatus); }
  int64_t getInstalledSizeMB() const;  // or kUnknownSize
  int64_t getEnabledSizeMB() const;    // or kUnknownSize

 private:
  StringNumber m_socket;
  uint8_t m_bankConnections = 0;
  uint8_t m_currentSpeed = 0;
  uint16_t m_memoryType = 0;
  uint8_t m_installedSize = 0;
  uint8_t m_enabledSize = 0;
  uint8_t m_errorStatus = 0;
};

class SMBIOSTable16Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable16Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  uint8_t getLocation() const { return traced("Location:", m_location); }
  uint8_t getUse() const { return traced("Use:", m_use); }
  uint8_t getErrorCorrection() const { return traced("Error Correction:", m_errorCorrection); }
  uint32_t getMaxCapacity() const { return traced("Max Capacity:", m_maxCapacity); }  // KB
  uint16_t getErrorHandle() const { return traced("Error Handle:", m_errorHandle); }
  uint16_t getNumMemDevices() const { return traced("Memory Devices:", m_devices); }

 private:
  uint8_t m_location = 0;
  uint8_t m_use = 0;
  uint8_t m_errorCorrection = 0;
  uint32_t m_maxCapacity = 0;
  uint16_t m_errorHandle = 0;
  uint16_t m_devices = 0;
};

class SMBIOSTable17Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable17Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  uint16_t getMemoryArrayHandle() const { return traced("Memory Array Handle:", m_arrayHandle); }
  uint16_t getMemoryErrorHandle() const { return traced("Memory Error Handle:", m_errorHandle); }
  uint16_t getTotalWidth() const { return traced("Total Width:", m_totalWidth); }  // bits
  uint16_t getDataWidth() const { return traced("Data Width:", m_dataWidth); }     // bits
  uint16_t getSize() const { return traced("Size:", m_size); }                     // raw
  uint32_t getSizeKB() const;  // 0: empty socket or unknown
  uint8_t getFormFactor() const { return traced("Form Factor:", m_formFactor); }
  uint8_t getDeviceSet() const { return traced("Device Set:", m_deviceSet); }
  const char* getDeviceLocator() const { return traced("Device Locator:", m_deviceLocator); }
  const char* getBankLocator() const { return traced("Bank Locator:", m_bankLocator); }
  uint8_t getMemoryType() const { return traced("Memory Type:", m_memoryType); }
  uint16_t getTypeDetail() const { return traced("Type Detail:", m_typeDetail); }
  uint16_t getSpeed() const { return traced("Speed:", m_speed); }  // MHz
  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }
  const char* getAssetTag() const { return traced("Asset Tag:", m_assetTag); }
  const char* getPartNumber() const { return traced("Part Number:", m_partNumber); }

 private:
  uint16_t m_arrayHandle = 0;
  uint16_t m_errorHandle = 0;
  uint16_t m_totalWidth = 0;
  uint16_t m_dataWidth = 0;
  uint16_t m_size = 0;
  uint8_t m_formFactor = 0;
  uint8_t m_deviceSet = 0;
  StringNumber m_deviceLocator;
  StringNumber m_bankLocator;
  uint8_t m_memoryType = 0;
  uint16_t m_typeDetail = 0;
  uint16_t m_speed = 0;
  StringNumber m_manufacturer;
  StringNumber m_serialNumber;
  StringNumber m_assetTag;
  StringNumber m_partNumber;
};

}  // namespace quenlor
