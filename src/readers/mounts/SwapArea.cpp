#include "readers/mounts/SwapArea.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>

namespace quenlor {
namespace {

constexpr std::string_view kColumns[] = {"Filename", "Type", "Size", "Used"};
constexpr std::string_view kBlanks = " \t\n\v\f\r";

// Takes the next word off the text; empty at its end.
std::string_view takeWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  return word;
}

std::optional<uint64_t> parseNumber(std::string_view word) {
  uint64_t value = 0;
  const std::errc error = std::from_chars(word.data(), word.data() + word.size(), value).ec;
  if (error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc() ? value : std::numeric_limits<uint64_t>::max();
}

}  // namespace

bool isSwapHeader(const char* line) {
  const std::string_view text = line;
  return std::any_of(std::begin(kColumns), std::end(kColumns), [text](std::string_view column) {
    return text.find(column) != std::string_view::npos;
  });
}

std::optional<SwapArea> parseSwapLine(const char* line) {
  std::string_view text = line;
  if (text.find('#') != std::string_view::npos) return std::nullopt;
  const std::string_view name = takeWord(text);
  takeWord(text);  // partition or file: both count alike
  const std::optional<uint64_t> size = parseNumber(takeWord(text));
  const std::optional<uint64_t> used = parseNumber(takeWord(text));
  if (!size || !used) return std::nullopt;
  return SwapArea{std::string(name), *size, *used};
}

}  // namespace quenlor
