// The XML inventory document. File names: "stdout" is standard output. Results: 0, or 4 or 11 when
// the file cannot be written (ExitStatus.h); what was written until then stays.
#pragma once

#include <cstdint>
#include <cstdio>

#include "catalogue/Catalogue.h"
#include "tables/VelTable.h"

namespace quenlor {

// Starts the document: XML declaration and start tag of the root. Truncates an older file.
int printXMLHeader(const char* fileName, const char* rootName);
// Appends a table: an element per row; of a group without keys the first row only. Walks the table,
// which stays the caller's.
int printXML(const char* fileName, VelTable* table);
// Ends the document: end tag of the root.
int printXMLFooter(const char* fileName, const char* rootName);

// A catalogue name as element name: only what XML allows there, a leading digit behind '_'; empty
// for null. The caller frees it with free().
char* spaceOut(const char* name);
// 1 when the attribute is a key of the group, else 0.
int isKey(const velGroupDef* group, uint32_t attribId);
// Writes the text of an enumerated number and returns 1; 0 when the value has no such text. The
// only place where texts stand for numbers: a VEL_ULONG whose attribute's record has a table.
int PrintEnumActual(FILE* file, const velGroupDef* group, uint32_t attribId,
                    const unsigned char* block);
// Writes a VEL_STRING block as UTF-8, escaped.
void PrintVelAttribStringToXMLFile(FILE* file, const unsigned char* block);

}  // namespace quenlor
