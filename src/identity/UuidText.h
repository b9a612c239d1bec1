// Texts of UUIDs, and those that identify nothing.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace quenlor {

// Where each byte of the text lies in the firmware's table since SMBIOS 2.6, which stores the first
// three fields with their bytes reversed (DMTF DSP0134, 7.2.1).
inline constexpr std::array<size_t, 16> kSwappedUuidOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                             8, 9, 10, 11, 12, 13, 14, 15};

// Of 32 hexadecimal digits the usual form, in groups of 8, 4, 4, 4 and 12. At least 20 digits.
std::string uuidOfDigits(std::string digits);

// True for what boards come with whose maker gave them no identity: a constant of the maker's, or
// all bytes equal. The usual form, in lower case.
bool isConstantUuid(std::string_view uuid);

}  // namespace quenlor
