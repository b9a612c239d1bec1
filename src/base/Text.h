// Small text operations that several folders need.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quenlor {

inline constexpr uint32_t kReplacementCharacter = 0xFFFD;

// Appends one code point as UTF-8; surrogates and what lies above U+10FFFF become U+FFFD.
void appendUtf8(std::string& out, uint32_t codePoint);

// As strtod in the "C" locale: a decimal point is a point whatever the user's locale says.
double parseDouble(const char* text, char** end = nullptr);

// Leading decimal integer as strtol reads it (0 when there is none), held within the bounds of int.
int decimalValue(const char* text);

// The text with a question mark for each control character: what it is printed in stays one line.
std::string onOneLine(std::string_view text);

// The text without blanks, tabs, carriage returns and newlines at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace quenlor
