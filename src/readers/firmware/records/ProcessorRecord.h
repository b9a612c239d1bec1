// Processor information (DMTF SMBIOS, type 4).
#pragma once

#include <cstdint>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

class SMBIOSTable4Data : public SMBIOSTableData {
 public:
  static constexpr uint8_t kCentralProcessor = 3;  // of getType()

  explicit SMBIOSTable4Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getSocket() const { return traced("Socket:", m_socket); }
  uint8_t getType() const { return traced("Type:", m_type); }
  uint8_t getFamily() const { return traced("Family:", m_family); }
  const char* getManufacturer() const { return traced("Manufacturer:", m_manufacturer); }
  uint32_t getEAX() const { return traced("EAX:", m_eax); }  // CPUID leaf 1
  uint32_t getEDX() const { return traced("EDX:", m_edx); }  // CPUID leaf 1, feature flags
  const char* getVersion() const { return traced("Version:", m_version); }
  uint8_t getVoltage() const { return traced("Voltage:", m_voltage); }  // raw
  double getVoltageInVolts() const;                                     // 0.0: unknown
  uint16_t getExternalClock() const { return traced("External Clock:", m_externalClock); }  // MHz
  uint16_t getMaxSpeed() const { return traced("Max Speed:", m_maxSpeed); }                 // MHz
  uint16_t getCurrentSpeed() const { return traced("Current Speed:", m_currentSpeed); }     // MHz
  uint8_t getStatus() const { return traced("Status:", m_status); }
  bool isPopulated() const { return tracedBit("Populated:", m_status, 6); }
  uint8_t getUpgrade() const { return traced("Upgrade:", m_upgrade); }
  const char* getSerialNumber() const { return traced("Serial Number:", m_serialNumber); }
  const char* getAssetTag() const { return traced("Asset Tag:", m_assetTag); }

  // Of EAX; the extended family and model bits are ignored.
  uint8_t getCPUIDFamily() const { return traced("CPUID Family:", eaxNibble(8)); }
  uint8_t getCPUIDModel() const { return traced("CPUID Model:", eaxNibble(4)); }
  uint8_t getCPUIDStepping() const { return traced("CPUID Stepping:", eaxNibble(0)); }

 private:
  uint8_t eaxNibble(unsigned shift) const { return static_cast<uint8_t>(m_eax >> shift & 0xF); }

  StringNumber m_socket;
  uint8_t m_type = 0;
  uint8_t m_family = 0;
  StringNumber m_manufacturer;
  uint32_t m_eax = 0;
  uint32_t m_edx = 0;
  StringNumber m_version;
  uint8_t m_voltage = 0;
  uint16_t m_externalClock = 0;
  uint16_t m_maxSpeed = 0;
  uint16_t m_currentSpeed = 0;
  uint8_t m_status = 0;
  uint8_t m_upgrade = 0;
  StringNumber m_serialNumber;
  StringNumber m_assetTag;
};

}  // namespace quenlor
