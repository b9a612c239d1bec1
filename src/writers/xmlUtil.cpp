#include "writers/xmlUtil.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "base/ExitStatus.h"
#include "log/CcLogWrapper.h"
#include "tables/Render.h"
#include "tables/ValueBlock.h"
#include "writers/OutputFile.h"
#include "xmltree/UTF8XMLEncoding.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/scanengine/xmlUtil.cpp";

struct MallocDeleter {
  void operator()(char* text) const { std::free(text); }
};
using ElementName = std::unique_ptr<char, MallocDeleter>;

// The locale's idea of a letter must not decide what a document looks like.
bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool mayStartName(char c) { return isLetter(c) || c == '_' || c == ':'; }
bool mayContinueName(char c) { return mayStartName(c) || isDigit(c) || c == '.' || c == '-'; }

void printValue(FILE* file, const velGroupDef* group, const VelTableAttrib& attrib) {
  const unsigned char* block = attrib.getAttribPtr();
  if (PrintEnumActual(file, group, attrib.getId(), block) != 0) return;
  if (attrib.getType() == VEL_STRING) {
    PrintVelAttribStringToXMLFile(file, block);
  } else {
    PrintVelAttribValueToFile(file, block);
  }
}

// An id that the group's record lacks gets an element without a name: the fault is to be seen.
void printAttribute(FILE* file, const velGroupDef* group, const VelTableAttrib& attrib) {
  const uint32_t id = attrib.getId();
  const ElementName name(spaceOut(getAttribNameFromId(group, id)));
  std::fprintf(file, isKey(group, id) != 0 ? "\n\t\t<%s IsKey=\"1\">" : "\n\t\t<%s>", name.get());
  printValue(file, group, attrib);
  std::fprintf(file, "</%s>", name.get());
}

void printRow(FILE* file, const VelTable& table, const char* groupElement, VelTableRow& row) {
  const velGroupDef* group = table.getGroupDefinitionFromId();
  std::fprintf(file, "\n\n\t<%s version=\"%" PRId32 "\">", groupElement,
               static_cast<int32_t>(table.getGroupVersion()));
  row.reset();
  while (const VelTableAttrib* attrib = row.getNext()) printAttribute(file, group, *attrib);
  std::fprintf(file, "\n\t</%s>", groupElement);
}

// A group without keys is a single-instance group: rows after the first are left out, and meant so.
void printRows(FILE* file, VelTable& table) {
  const velGroupDef* group = table.getGroupDefinitionFromId();
  const bool keyed = group != nullptr && group->keys != nullptr;
  const ElementName groupElement(spaceOut(table.getGroupName()));
  table.reset();
  while (VelTableRow* row = table.getNext()) {
    printRow(file, table, groupElement.get(), *row);
    if (!keyed) break;
  }
}

}  // namespace

int printXMLHeader(const char* fileName, const char* rootName) {
  OutputFile output(fileName);
  if (const int code = output.create(); code != kExitSuccess) return code;
  std::fprintf(output.stream(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<%s>\n", rootName);
  return output.finish();
}

int printXML(const char* fileName, VelTable* table) {
  const TraceFunction at{kSourcePath, "printXML()"};
  getCcLogHw()->traceMidEntry(at(), "hardware");
  OutputFile output(fileName);
  int code = output.appendPatiently(at, "xmlUtil", "HARDWAREXML");
  if (code == kExitSuccess) {
    printRows(output.stream(), *table);
    code = output.finish();
  }
  getCcLogHw()->traceMidExit(at(), "hardware return rc = %d", code);
  return code;
}

int printXMLFooter(const char* fileName, const char* rootName) {
  OutputFile output(fileName);
  if (const int code = output.append(); code != kExitSuccess) return code;
  std::fprintf(output.stream(), "\n\n</%s>\n", rootName);
  return output.finish();
}

char* spaceOut(const char* name) {
  std::string element;
  for (; name != nullptr && *name != '\0'; ++name) {
    if (element.empty() && isDigit(*name)) element += '_';
    if (element.empty() ? mayStartName(*name) : mayContinueName(*name)) element += *name;
  }
  return strdup(element.c_str());
}

int isKey(const velGroupDef* group, uint32_t attribId) {
  if (group == nullptr || group->keys == nullptr) return 0;
  const uint32_t* end = group->keys + group->keyCount;
  return std::find(group->keys, end, attribId) != end ? 1 : 0;
}

int PrintEnumActual(FILE* file, const velGroupDef* group, uint32_t attribId,
                    const unsigned char* block) {
  if (blockType(block) != VEL_ULONG) return 0;
  const velAttribDef* attrib = getAttribDefinitionFromId(group, attribId);
  if (attrib == nullptr || attrib->enumTable == nullptr) return 0;
  const auto value = readNumber<uint32_t>(blockValue(block));
  for (const velEnumDef* pair = attrib->enumTable; pair->value != kCatalogueEnd; ++pair) {
    if (pair->value != value) continue;
    std::fprintf(file, "%s", pair->text);
    return 1;
  }
  return 0;
}

void PrintVelAttribStringToXMLFile(FILE* file, const unsigned char* block) {
  UTF8XMLEncoding(readText(blockValue(block)).c_str()).printx(file);
}

}  // namespace quenlor
