// What sits on the board: connectors, slots and on-board devices (DMTF SMBIOS, types 8 to 10).
#pragma once

#include <cstdint>

#include "readers/firmware/records/SMBIOSTableData.h"

namespace quenlor {

class SMBIOSTable8Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable8Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getInternalDesignator() const {
    return traced("Internal Designator:", m_internalDesignator);
  }
  uint8_t getInternalConnectorType() const {
    return traced("Internal Connector Type:", m_internalConnectorType);
  }
  const char* getExternalDesignator() const {
    return traced("External Designator:", m_externalDesignator);
  }
  uint8_t getExternalConnectorType() const {
    return traced("External Connector Type:", m_externalConnectorType);
  }
  uint8_t getPortType() const { return traced("Port Type:", m_portType); }

 private:
  StringNumber m_internalDesignator;
  uint8_t m_internalConnectorType = 0;
  StringNumber m_externalDesignator;
  uint8_t m_externalConnectorType = 0;
  uint8_t m_portType = 0;
};

class SMBIOSTable9Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable9Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  const char* getSlotDesignation() const { return traced("Slot Designation:", m_designation); }
  uint8_t getSlotType() const { return traced("Slot Type:", m_type); }
  uint8_t getSlotDataBusWidth() const { return traced("Slot Data Bus Width:", m_dataBusWidth); }
  uint8_t getCurrentUsage() const { return traced("Current Usage:", m_currentUsage); }
  uint8_t getSlotLength() const { return traced("Slot Length:", m_length); }
  uint16_t getSlotID() const { return traced("Slot ID:", m_id); }
  uint8_t getSlotCharacteristics1() const {
    return traced("Characteristics 1:", m_characteristics1);
  }
  uint8_t getSlotCharacteristics2() const {
    return traced("Characteristics 2:", m_characteristics2);
  }

 private:
  StringNumber m_designation;
  uint8_t m_type = 0;
  uint8_t m_dataBusWidth = 0;
  uint8_t m_currentUsage = 0;
  uint8_t m_length = 0;
  uint16_t m_id = 0;
  uint8_t m_characteristics1 = 0;
  uint8_t m_characteristics2 = 0;
};

// Only the first device of the structure.
class SMBIOSTable10Data : public SMBIOSTableData {
 public:
  explicit SMBIOSTable10Data(int revision);
  int readBlock(const TableBytes& buf, int off);
  void dump() const override;

  uint8_t getDeviceType() const { return traced("Device Type:", m_deviceType); }  // raw
  uint8_t getDeviceTypeActual() const {
    return traced("Device Type Actual:", static_cast<uint8_t>(m_deviceType & 0x7F));
  }
  bool isEnabled() const { return tracedBit("Enabled:", m_deviceType, 7); }
  const char* getDescription() const { return traced("Description:", m_description); }

 private:
  uint8_t m_deviceType = 0;
  StringNumber m_description;
};

}  // namespace quenlor
