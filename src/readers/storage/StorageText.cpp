#include "readers/storage/StorageText.h"

#include <cstring>
#include <limits>

#include "host/LineReader.h"

namespace quenlor {
namespace {

constexpr uint64_t kLargest = std::numeric_limits<uint64_t>::max();

bool isPadding(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code <= ' ';
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

void trim2(char* text) {
  if (text == nullptr) return;
  const std::string result = trimmed(text);
  std::memcpy(text, result.c_str(), result.size() + 1);
}

std::string trimmed(const std::string& text) {
  std::string_view rest(text.c_str());
  while (!rest.empty() && isPadding(rest.front())) rest.remove_prefix(1);
  while (!rest.empty() && isPadding(rest.back())) rest.remove_suffix(1);
  return std::string(rest);
}

std::vector<std::string_view> splitTokens(std::string_view text, std::string_view delimiters) {
  std::vector<std::string_view> tokens;
  size_t begin = text.find_first_not_of(delimiters);
  while (begin != std::string_view::npos) {
    const size_t end = text.find_first_of(delimiters, begin);
    tokens.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(delimiters, end);
  }
  return tokens;
}

std::string_view tokenAt(const std::vector<std::string_view>& tokens, size_t index) {
  return index < tokens.size() ? tokens[index] : std::string_view();
}

uint64_t leadingNumber(std::string_view text) {
  while (!text.empty() && isPadding(text.front())) text.remove_prefix(1);
  uint64_t number = 0;
  for (const char character : text) {
    if (!isDigit(character)) break;
    const auto digit = static_cast<uint64_t>(character - '0');
    if (number > (kLargest - digit) / 10) return kLargest;
    number = number * 10 + digit;
  }
  return number;
}

uint64_t saturatingProduct(std::initializer_list<uint64_t> factors) {
  bool overflowed = false;
  uint64_t product = 1;
  for (const uint64_t factor : factors) {
    if (factor == 0) return 0;
    if (__builtin_mul_overflow(product, factor, &product)) overflowed = true;
  }
  return overflowed ? kLargest : product;
}

std::vector<std::string> readLines(FILE* stream, size_t bufferSize, const char* text) {
  std::vector<std::string> lines;
  LineReader reader(stream, bufferSize);
  while (reader.next()) {
    if (std::strstr(reader.line(), text) != nullptr) lines.emplace_back(reader.line());
  }
  return lines;
}

}  // namespace quenlor
