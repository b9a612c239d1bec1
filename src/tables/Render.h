// Texts of typed values, shared by the writers. A FILE* is never owned and never made wide.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "catalogue/Catalogue.h"

namespace quenlor {

// "VEL_UCHAR" ... "VEL_LONGLONG"; "Undefined Attrib Type" for any other code.
const char* getVelAttribTypeAsString(uint32_t code);
// One value block as writers print it, by its type code; an unknown code prints nothing.
void PrintVelAttribValueToFile(FILE* file, const unsigned char* block);
// One value block as the debug dump prints it, to standard output.
void PrintVelAttribValue(const unsigned char* block);
// "%f" with a decimal point whatever the locale; to standard output when file is null.
void PrintVelFloat(FILE* file, double value);
// The bytes as upper-case hexadecimal between double quotes.
void PrintOctetStringToFile(FILE* file, const unsigned char* bytes, uint32_t length);
// The 26 characters of a date-time.
void PrintVelTimeBlockToFile(FILE* file, const char* characters);
// A stored string (count and 32-bit characters), escaped for MIF, in the locale's encoding.
void PrintVelStringToFile(FILE* file, const unsigned char* velString);
// The same in UTF-8 whatever the locale.
void PrintVelStringAsUtf8(FILE* file, const unsigned char* velString);
// A wide text in the locale's encoding; '?' for each character that it cannot express.
std::string toLocale(const wchar_t* text);
// "\n\t\t%d = \"%s\"" for each pair of the record's enumeration table.
void PrintVelEnumToFile(FILE* file, const velAttribDef* attrib);
// Text with backslash, double quote and control characters escaped. The input itself when it is
// empty, else a new wide string (new[]) that the caller may free with delete[].
const wchar_t* dmtf_escape(const wchar_t* text);
// The program's build time as a date-time text; static storage.
const char* getBuildDate();

}  // namespace quenlor
