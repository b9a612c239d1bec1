#include "listing/PlainPrinter.h"

#include <cstdio>
#include <cstring>

#include "base/StandardOutput.h"
#include "host/Handles.h"

namespace quenlor {
namespace {

void printTo(FILE* file, const std::vector<IEntry*>& entries) {
  const PlainFormatter formatter;
  for (const IEntry* entry : entries) {
    if (entry == nullptr) continue;
    const std::string line = formatter.format(entry) + '\n';
    std::fwrite(line.data(), 1, line.size(), file);
  }
}

}  // namespace

std::string PlainFormatter::format(const IEntry* entry) const {
  if (entry == nullptr) return {};
  std::string line = entry->getEntryID() + ":\t";
  for (int i = 0; i < entry->getAttributeNumber(); ++i) line += entry->getEntryAttribute(i) + ' ';
  return line;
}

int PlainPrinter::Print(const char* fileName) {
  static const std::vector<IEntry*> kNone;
  if (fileName == nullptr) return 0;
  const std::vector<IEntry*>& entries = m_entries == nullptr ? kNone : *m_entries;
  if (std::strcmp(fileName, kStandardOutput) == 0) {
    printTo(stdout, entries);
    return 1;
  }
  const FileStream file = openFile(fileName, "w");
  if (!file) return 0;
  printTo(file.get(), entries);
  return 1;
}

}  // namespace quenlor
