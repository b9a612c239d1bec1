// Words for the bits of memory types in firmware records (DMTF SMBIOS 2.0 to 2.4).
#pragma once

#include <string>

namespace quenlor {

// Type detail of a memory device (type 17): "Synchronous ", each word with a blank behind it.
std::string deviceDetailWords(unsigned bits);
// Current memory type of a memory module (type 6): "ECC SDRAM ".
std::string moduleTypeWords(unsigned bits);
// DIMM, SIMM or nothing, of the same bits.
std::string modulePackaging(unsigned bits);

std::string withoutTrailingBlank(std::string text);

}  // namespace quenlor
