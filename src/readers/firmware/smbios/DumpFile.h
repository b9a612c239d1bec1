// The text file that a structure table is saved in: four header lines, then the bytes in
// hexadecimal.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "readers/firmware/records/TableBytes.h"

namespace quenlor {

struct TableDump {
  TableBytes bytes;
  int numTables = 0;
  int revision = 0;
};

void writeDump(FILE* file, const TableBytes& bytes, int numTables, int revision);
// The whole text of a dump file; cut where the largest dump would end.
std::string readDumpText(FILE* file);
// Nothing when the text does not begin with format number 1. Numbers that are missing or beyond 31
// bits are 0 and the largest number, missing bytes are 0.
std::optional<TableDump> parseDump(std::string_view text);

}  // namespace quenlor
