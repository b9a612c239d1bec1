// The shared SMBIOS table of a FakeHost's firmware, for the life of this object.
#pragma once

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Firmware.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {

class FirmwareScope {
 public:
  FirmwareScope(FakeHost& host, const FirmwareTable& table) {
    host.files["/dev/mem"] = Firmware(table).memory();
    SMBIOSTable::initializeGlobalTable(1);
  }
  ~FirmwareScope() { SMBIOSTable::terminateGlobalTable(); }
  FirmwareScope(const FirmwareScope&) = delete;
  FirmwareScope& operator=(const FirmwareScope&) = delete;
};

}  // namespace quenlor::test
