#include "writers/mifUtil.h"

#include <cinttypes>
#include <map>
#include <set>
#include <vector>

#include "base/ExitStatus.h"
#include "log/CcLogWrapper.h"
#include "tables/Render.h"
#include "tables/ValueBlock.h"
#include "writers/OutputFile.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/scanengine/mifUtil.cpp";

// Modern documents are UTF-8 whatever the locale, classic ones in the locale's encoding.
enum class Form : uint8_t { kClassic, kModern };

Form formOf(const VelTable& table) { return table.isModern() ? Form::kModern : Form::kClassic; }

void printActualValue(FILE* file, const VelTableAttrib& attrib, Form form) {
  printDoubleQuote(file, attrib.getType());
  if (form == Form::kModern && attrib.getType() == VEL_STRING) {
    PrintVelStringAsUtf8(file, blockValue(attrib.getAttribPtr()));
  } else {
    PrintVelAttribValueToFile(file, attrib.getAttribPtr());
  }
  printDoubleQuote(file, attrib.getType());
}

bool isLongNumber(const velGroupDef* group, uint32_t attribId) {
  const velAttribDef* attrib = getAttribDefinitionFromId(group, attribId);
  return attrib != nullptr && attrib->type == VEL_LONGLONG;
}

// Everything of an attribute block before its value.
void printAttributeStart(FILE* file, const velGroupDef* group, uint32_t attribId, Form form) {
  const char* name = getAttribNameFromId(group, attribId);
  std::fprintf(file, "\n\tStart Attribute\n\t\tName = \"%s\"", name == nullptr ? "(null)" : name);
  std::fprintf(file, "\n\t\tID = %" PRId32, static_cast<int32_t>(attribId));
  std::fputs("\n\t\tType = ", file);
  if (form == Form::kModern && isLongNumber(group, attribId)) {
    std::fputs("Integer64", file);
  } else {
    printDMTFType(file, group, attribId);
  }
  std::fputs("\n\t\tValue = ", file);
}

void printAttributeEnd(FILE* file) { std::fputs("\n\tEnd Attribute", file); }

void printDefaultAttribute(FILE* file, const velGroupDef* group, uint32_t attribId, uint32_t type,
                           Form form) {
  printAttributeStart(file, group, attribId, form);
  printDefaultValue(file, type);
  printAttributeEnd(file);
}

void printActualAttribute(FILE* file, const velGroupDef* group, const VelTableAttrib& attrib,
                          Form form) {
  printAttributeStart(file, group, attrib.getId(), form);
  printActualValue(file, attrib, form);
  printAttributeEnd(file);
}

void printClass(FILE* file, const VelTable& table) {
  std::fprintf(file, "\n\tClass = \"MARROW|%s|%" PRId32 "\"", table.getGroupName(),
               static_cast<int32_t>(table.getGroupVersion()));
}

void printId(FILE* file, const VelTable& table) {
  std::fprintf(file, "\n\tID = %" PRId32, static_cast<int32_t>(table.getGroupId()));
}

void printGroupStart(FILE* file, const VelTable& table) {
  std::fprintf(file, "\nStart Group\n\tName = \"%s\"", table.getGroupName());
  printClass(file, table);
}

void printGroupEnd(FILE* file) { std::fputs("\nEnd Group\n", file); }

// The first row, ready to be walked, or null.
VelTableRow* firstRow(VelTable& table) {
  table.reset();
  VelTableRow* row = table.getNext();
  if (row != nullptr) row->reset();
  return row;
}

void printKeys(FILE* file, const velGroupDef& group) {
  std::fputs("\nKey = ", file);
  for (uint32_t i = 0; i < group.keyCount; ++i) {
    std::fprintf(file, i == 0 ? "%" PRId32 : ",%" PRId32, static_cast<int32_t>(group.keys[i]));
  }
}

// Every attribute of the group's record, with default values.
void printWholeRecord(FILE* file, const velGroupDef* group, Form form) {
  if (group == nullptr || group->attribs == nullptr) return;
  for (const velAttribDef* attrib = group->attribs; attrib->id != kCatalogueEnd; ++attrib) {
    printDefaultAttribute(file, group, attrib->id, attrib->type, form);
  }
}

// Ids of the attributes that any row has, with their types in the catalogue's order.
std::vector<const velAttribDef*> attributesInUse(const velGroupDef& group, VelTable& table) {
  std::set<uint32_t> ids;
  table.reset();
  while (VelTableRow* row = table.getNext()) {
    row->reset();
    while (const VelTableAttrib* attrib = row->getNext()) ids.insert(attrib->getId());
  }
  std::vector<const velAttribDef*> used;
  for (const velAttribDef* attrib = group.attribs; attrib->id != kCatalogueEnd; ++attrib) {
    if (ids.count(attrib->id) != 0) used.push_back(attrib);
  }
  return used;
}

// Modern rows leave out what is not known, each its own: the schema lists what any of them has, and
// every row has a place for each, empty where it knows nothing.
void printModernKeyedGroup(FILE* file, const velGroupDef& group, VelTable& table) {
  printGroupStart(file, table);
  for (const velAttribDef* attrib : attributesInUse(group, table)) {
    printDefaultAttribute(file, &group, attrib->id, attrib->type, Form::kModern);
  }
  if (table.getNumRows() == 0) printWholeRecord(file, &group, Form::kModern);
  printKeys(file, group);
  printGroupEnd(file);
}

void printModernRow(FILE* file, VelTableRow& row, const std::vector<const velAttribDef*>& places) {
  std::map<uint32_t, const VelTableAttrib*> values;
  row.reset();
  while (const VelTableAttrib* attrib = row.getNext()) values[attrib->getId()] = attrib;
  std::fputs("\n{", file);
  const char* separator = "";
  for (const velAttribDef* place : places) {
    std::fputs(separator, file);
    const auto value = values.find(place->id);
    if (value != values.end()) printActualValue(file, *value->second, Form::kModern);
    separator = ",";
  }
  std::fputs("}", file);
}

// The schema lists the attributes that the first row has; without a row, all of the record's.
void printKeyedGroup(FILE* file, const velGroupDef& group, VelTable& table) {
  printGroupStart(file, table);  // without an ID line, which only the table block has
  if (VelTableRow* row = firstRow(table)) {
    while (const VelTableAttrib* attrib = row->getNext()) {
      printDefaultAttribute(file, &group, attrib->getId(), attrib->getType(), Form::kClassic);
    }
  } else {
    printFromGroupDef(file, &group);
  }
  printKeys(file, group);
  printGroupEnd(file);
}

void printTableRow(FILE* file, VelTableRow& row) {
  std::fputs("\n{", file);
  row.reset();
  const char* separator = "";
  while (const VelTableAttrib* attrib = row.getNext()) {
    std::fputs(separator, file);
    printActualValue(file, *attrib, Form::kClassic);
    separator = ",";
  }
  std::fputs("}", file);
}

template <class PrintRow>
void printTable(FILE* file, VelTable& table, PrintRow printRow) {
  std::fprintf(file, "\nStart Table\n\tName = \"%s Table\"", table.getGroupName());
  printId(file, table);
  printClass(file, table);
  table.reset();
  while (VelTableRow* row = table.getNext()) printRow(*row);
  std::fputs("\nEnd Table\n", file);
}

void printKeyedBlocks(FILE* file, const velGroupDef& group, VelTable& table) {
  if (formOf(table) == Form::kClassic) {
    printKeyedGroup(file, group, table);
    printTable(file, table, [file](VelTableRow& row) { printTableRow(file, row); });
    return;
  }
  printModernKeyedGroup(file, group, table);
  const auto places = attributesInUse(group, table);
  printTable(file, table, [&](VelTableRow& row) { printModernRow(file, row, places); });
}

// A group without keys is a single-instance group: rows after the first are left out, and meant so.
void printKeylessGroup(FILE* file, const velGroupDef* group, VelTable& table) {
  printGroupStart(file, table);
  printId(file, table);
  if (VelTableRow* row = firstRow(table)) {
    while (const VelTableAttrib* attrib = row->getNext()) {
      printActualAttribute(file, group, *attrib, formOf(table));
    }
  } else {
    printWholeRecord(file, group, formOf(table));
  }
  printGroupEnd(file);
}

void printBlocks(FILE* file, VelTable& table) {
  const velGroupDef* group = table.getGroupDefinitionFromId();
  if (group != nullptr && group->keys != nullptr) {
    printKeyedBlocks(file, *group, table);
  } else {
    printKeylessGroup(file, group, table);
  }
}

}  // namespace

int printMifHeader(const char* fileName, const char* componentName) {
  OutputFile output(fileName);
  if (const int code = output.create(); code != kExitSuccess) return code;
  std::fprintf(output.stream(), "Start Component\nName = \"%s\"", componentName);
  return output.finish();
}

int printMif(const char* fileName, VelTable* table) {
  const TraceFunction at{kSourcePath, "printMif()"};
  getCcLogHw()->traceMidEntry(at(), "hardware");
  OutputFile output(fileName);
  int code = output.appendPatiently(at, "mifUtil", "HARDWAREMIF");
  if (code == kExitSuccess) {
    printBlocks(output.stream(), *table);
    code = output.finish();
  }
  getCcLogHw()->traceMidExit(at(), "hardware return rc = %d", code);
  return code;
}

int printMifFooter(const char* fileName) {
  OutputFile output(fileName);
  if (const int code = output.append(); code != kExitSuccess) return code;
  std::fputs("\nEnd Component\n", output.stream());
  return output.finish();
}

void printFromGroupDef(FILE* file, const velGroupDef* group) {
  printWholeRecord(file, group, Form::kClassic);
}

void printDMTFType(FILE* file, const velGroupDef* group, uint32_t attribId) {
  const velAttribDef* attrib = getAttribDefinitionFromId(group, attribId);
  if (group == nullptr || attrib == nullptr) return;
  if (attrib->enumTable != nullptr) {
    std::fprintf(file, "Start ENUM\n\t\tName = \"%s-%s\"", group->name, attrib->name);
    PrintVelEnumToFile(file, attrib);
    std::fputs("\n\t\tEnd ENUM", file);
    return;
  }
  switch (attrib->type) {
    case VEL_USHORT:
    case VEL_ULONG:
    case VEL_ULONGLONG:
    case VEL_LONGLONG:
      std::fputs("Integer", file);
      break;
    case VEL_STRING:
      std::fprintf(file, "String(%" PRIu32 ")", attrib->length);
      break;
    default:
      std::fputs("String(64)", file);
      break;
  }
}

void printDefaultValue(FILE* file, uint32_t type) {
  switch (type) {
    case VEL_UCHAR:
    case VEL_UQUAD:
    case VEL_STRING:
    case VEL_DATETIME:
      std::fputs("\"\"", file);
      break;
    case VEL_FLOAT:
    case VEL_DOUBLE:  // the type code itself as the value: receivers know 5.000000 and 6.000000
      std::fputs("\"", file);
      PrintVelFloat(file, type);
      std::fputs("\"", file);
      break;
    default:
      std::fputs("-1", file);
      break;
  }
}

void printDoubleQuote(FILE* file, uint32_t type) {
  switch (type) {
    case VEL_UCHAR:
    case VEL_UQUAD:
    case VEL_FLOAT:
    case VEL_DOUBLE:
    case VEL_STRING:
    case VEL_DATETIME:
      std::fputc('"', file);
      break;
    default:
      break;
  }
}

}  // namespace quenlor
