#include "writers/xmlUtil.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

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

// What stands around a value.
struct Tags {
  std::string start;
  std::string end;
};

// An id that the group's record lacks gets an element without a name: the fault is to be seen.
Tags makeTags(const velGroupDef* group, uint32_t id) {
  const ElementName name(spaceOut(getAttribNameFromId(group, id)));
  const std::string element = name.get();
  return {"\n\t\t<" + element + (isKey(group, id) != 0 ? " IsKey=\"1\">" : ">"),
          "</" + element + ">"};
}

// The tags of a table's attributes, made when the first row needs them.
class AttributeTags {
 public:
  explicit AttributeTags(const velGroupDef* group) : m_group(group) {}
  const Tags& of(uint32_t id) {
    const auto [found, isNew] = m_tags.try_emplace(id);
    if (isNew) found->second = makeTags(m_group, id);
    return found->second;
  }

 private:
  const velGroupDef* m_group;
  std::unordered_map<uint32_t, Tags> m_tags;
};

void print(FILE* file, const std::string& text) { std::fwrite(text.data(), 1, text.size(), file); }

void printAttribute(FILE* file, const velGroupDef* group, const Tags& tags,
                    const VelTableAttrib& attrib) {
  print(file, tags.start);
  printValue(file, group, attrib);
  print(file, tags.end);
}

void printRow(FILE* file, const VelTable& table, const char* groupElement, AttributeTags& tags,
              VelTableRow& row) {
  const velGroupDef* group = table.getGroupDefinitionFromId();
  std::fprintf(file, "\n\n\t<%s version=\"%" PRId32 "\">", groupElement,
               static_cast<int32_t>(table.getGroupVersion()));
  row.reset();
  while (const VelTableAttrib* attrib = row.getNext()) {
    printAttribute(file, group, tags.of(attrib->getId()), *attrib);
  }
  std::fprintf(file, "\n\t</%s>", groupElement);
}

// A group without keys is a single-instance group: rows after the first are left out, and meant so.
void printRows(FILE* file, VelTable& table) {
  const velGroupDef* group = table.getGroupDefinitionFromId();
  const bool keyed = group != nullptr && group->keys != nullptr;
  const ElementName groupElement(spaceOut(table.getGroupName()));
  AttributeTags tags(group);
  table.reset();
  while (VelTableRow* row = table.getNext()) {
    printRow(file, table, groupElement.get(), tags, *row);
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
    std::fputs(pair->text, file);
    return 1;
  }
  return 0;
}

void PrintVelAttribStringToXMLFile(FILE* file, const unsigned char* block) {
  UTF8XMLEncoding(readText(blockValue(block)).c_str()).printx(file);
}

}  // namespace quenlor
