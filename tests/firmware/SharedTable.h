// A machine with given firmware whose structure table is the shared one.
#pragma once

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Firmware.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {

class SharedTable {
 public:
  explicit SharedTable(const Firmware& firmware) {
    machine.files["/dev/mem"] = firmware.memory();
    SMBIOSTable::initializeGlobalTable(1);
  }
  explicit SharedTable(const FirmwareTable& table) : SharedTable(Firmware(table)) {}
  SharedTable(const SharedTable&) = delete;
  SharedTable& operator=(const SharedTable&) = delete;
  ~SharedTable() { SMBIOSTable::terminateGlobalTable(); }

  FakeHost machine;
};

}  // namespace quenlor::test
