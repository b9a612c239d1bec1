#include "readers/topology/CpuList.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr unsigned kWordBits = 32;
constexpr size_t kMostWords = (kLargestCpuNumber + 1) / kWordBits;

std::optional<uint32_t> wholeNumber(std::string_view text, int base) {
  uint32_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return number;
}

// Takes what stands before the first comma off the text.
std::string_view takePart(std::string_view& text) {
  const size_t comma = text.find(',');
  const std::string_view part = text.substr(0, comma);
  text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
  return part;
}

bool addRange(std::string_view range, CpuList& numbers) {
  const size_t dash = range.find('-');
  const std::optional<uint32_t> first = wholeNumber(range.substr(0, dash), 10);
  const std::optional<uint32_t> last =
      dash == std::string_view::npos ? first : wholeNumber(range.substr(dash + 1), 10);
  if (!first || !last || *last < *first || *last > kLargestCpuNumber) return false;
  for (uint32_t number = *first; number <= *last; ++number) numbers.push_back(number);
  return numbers.size() <= 2 * size_t{kLargestCpuNumber};
}

void addWord(uint32_t word, size_t index, CpuList& numbers) {
  for (unsigned bit = 0; bit < kWordBits; ++bit) {
    if ((word >> bit & 1) != 0) numbers.push_back(static_cast<uint32_t>(index * kWordBits + bit));
  }
}

}  // namespace

std::optional<CpuList> parseCpuList(std::string_view text) {
  CpuList numbers;
  std::string_view rest = trimmed(text);
  if (rest.ends_with(',')) return std::nullopt;
  while (!rest.empty()) {
    if (!addRange(takePart(rest), numbers)) return std::nullopt;
  }
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

std::optional<CpuList> parseCpuMap(std::string_view text) {
  std::string_view rest = trimmed(text);
  if (rest.empty() || rest.ends_with(',')) return std::nullopt;
  std::vector<uint32_t> words;
  while (!rest.empty()) {
    const std::optional<uint32_t> word = wholeNumber(takePart(rest), 16);
    if (!word || words.size() == kMostWords) return std::nullopt;
    words.push_back(*word);
  }
  CpuList numbers;
  for (size_t index = 0; index < words.size(); ++index) {
    addWord(words[words.size() - 1 - index], index, numbers);
  }
  return numbers;
}

}  // namespace quenlor
