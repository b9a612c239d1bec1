// Small text and number helpers that the parsers of drive listings share.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// Trims blanks and control characters at both ends of a text, in place; null is allowed.
void trim2(char* text);
// The same for a string; the text ends at its first NUL byte.
std::string trimmed(const std::string& text);

// Parts between runs of the delimiters, without empty ones.
std::vector<std::string_view> splitTokens(std::string_view text, std::string_view delimiters);
// Part at an index; empty where the line ends sooner.
std::string_view tokenAt(const std::vector<std::string_view>& tokens, size_t index);

// Decimal number at the start of a text, blanks before it skipped: 0 without a digit, the largest
// number where it does not fit.
uint64_t leadingNumber(std::string_view text);

// Product of all factors; the largest number where it does not fit.
uint64_t saturatingProduct(std::initializer_list<uint64_t> factors);

// The pieces of a stream, as fgets with this buffer size returns them, that contain a text; all of
// them by default, none for a null stream.
std::vector<std::string> readLines(FILE* stream, size_t bufferSize, const char* text = "");

}  // namespace quenlor
