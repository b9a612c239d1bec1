// The machine's identity, from firmware memory and the shared SMBIOS table.
#pragma once

#include "base/String.h"

namespace quenlor {

// Filled by the constructor. Without firmware data manufacturer and product are "Linux", the rest
// empty.
class smbiosinfo {
 public:
  smbiosinfo();
  virtual ~smbiosinfo() = default;

  const String& serialNumber() const { return m_serialNumber; }
  const String& manufacturer() const { return m_manufacturer; }
  const String& type() const { return m_type; }
  const String& product() const { return m_product; }
  const String& version() const { return m_version; }

 private:
  void getSmbiosInfo();
  void readEntryPointStrings();
  void readSharedTable();

  String m_serialNumber;
  String m_manufacturer;
  String m_type;
  String m_product;
  String m_version;
};

}  // namespace quenlor
