// The inventory as a component of the DMTF Management Information Format. File names: "stdout" is
// standard output. Results: 0, or 4 or 11 when the file cannot be written (ExitStatus.h); what was
// written until then stays.
#pragma once

#include <cstdint>
#include <cstdio>

#include "catalogue/Catalogue.h"
#include "tables/VelTable.h"

namespace quenlor {

// Starts the component. Truncates an older file.
int printMifHeader(const char* fileName, const char* componentName);
// Appends a table: of a group with keys a group block (the schema) and a table block with a line
// per row, of any other group one block with the first row's values. Walks the table, which stays
// the caller's.
int printMif(const char* fileName, VelTable* table);
// Ends the component.
int printMifFooter(const char* fileName);

// The attribute blocks of the group's record, with default values; nothing for null.
void printFromGroupDef(FILE* file, const velGroupDef* group);
// The type of an attribute; an enumerated one declares its values. Nothing for an unknown id.
void printDMTFType(FILE* file, const velGroupDef* group, uint32_t attribId);
// The value that stands for "none" in a schema, by type code.
void printDefaultValue(FILE* file, uint32_t type);
// A double quote for the types whose values stand in quotes. Octet strings bring their own.
void printDoubleQuote(FILE* file, uint32_t type);

}  // namespace quenlor
