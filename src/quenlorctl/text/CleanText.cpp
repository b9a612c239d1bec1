#include "quenlorctl/text/CleanText.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "base/Text.h"
#include "base/Utf8.h"

namespace quenlor::ctl {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr Range HOSTILE[] = {
    {0x00, 0x1F},        // C0
    {0x7F, 0x9F},        // DEL, C1
    {0xAD, 0xAD},        // soft hyphen, shown only at the end of a line
    {0x61C, 0x61C},      // Arabic letter mark
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200F},    // without width; left-to-right and right-to-left marks
    {0x2028, 0x202E},    // line and paragraph separator; embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, isolates
    {0xFEFF, 0xFEFF},    // byte-order mark, without width
    {0xFFF9, 0xFFFB},    // interlinear annotations
    {0xE0000, 0xE007F},  // tags, which nothing shows
};

bool isHostile(char32_t character) {
  return std::any_of(std::begin(HOSTILE), std::end(HOSTILE), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

bool isPlainAscii(char byte) { return byte >= 0x20 && byte < 0x7F; }

template <class Replaced>
std::string rewritten(std::string_view text, Replaced isReplaced) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const auto decoded = decodeUtf8(text);
    const bool isKept = decoded && !isReplaced(decoded->first);
    appendUtf8(clean, isKept ? static_cast<uint32_t>(decoded->first) : kReplacementCharacter);
    text.remove_prefix(decoded ? decoded->second : 1);
  }
  return clean;
}

}  // namespace

std::string cleanText(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlainAscii)) return std::string(text);
  return rewritten(text, isHostile);
}

std::string validUtf8(std::string_view text) {
  return rewritten(text, [](char32_t) { return false; });
}

}  // namespace quenlor::ctl
