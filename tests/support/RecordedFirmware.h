// The SMBIOS table of a recorded machine from lines that a person reads: firmware.txt
// (tests/recorded/README.md).
#pragma once

#include <string>

namespace quenlor::test {

struct RecordedFirmware {
  std::string entryPoint;  // of the 64-bit kind, unless the text asks for the other
  std::string table;
};

// Throws std::runtime_error for a line of no known form, and for a field that does not stand where
// its line says.
RecordedFirmware parseRecordedFirmware(const std::string& text);

}  // namespace quenlor::test
