// Listings of drives as commands and old drivers print them: no text may crash their parsers.
#include <cstddef>
#include <cstdint>
#include <string>

#include "readers/storage/FdiskOutput.h"
#include "readers/storage/RaidStatus.h"
#include "readers/storage/StorageText.h"
#include "readers/storage/TapeBackup.h"
#include "readers/storage/ideinfo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> lines;
  for (const std::string_view line : quenlor::splitTokens(text, "\n")) {
    lines.push_back(std::string(line) + "\n");
    quenlor::parseLogicalGeometry(lines.back());
    quenlor::getExactMatch(lines.back().c_str(), "save");
  }
  quenlor::parseFdiskListing(lines, "/dev/hda");
  quenlor::parseDac960Status(lines);
  quenlor::parseCompaqVolumes(lines);
  quenlor::parseCcissMounts(lines);
  return 0;
}
