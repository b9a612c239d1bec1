#include "groups/firmware/MemoryWords.h"

#include <span>

namespace quenlor {
namespace {

// A word that stands for one bit, with the blank that separates it from the next.
struct BitWord {
  unsigned bit;
  const char* word;
};

constexpr BitWord DEVICE_DETAILS[] = {
    {3, "Fast-paged "},  {4, "Static column "}, {5, "Pseudo-static "}, {6, "Rambus "},
    {7, "Synchronous "}, {8, "CMOS "},          {9, "EDO "},           {10, "Window DRAM "},
    {11, "Cache DRAM "}, {12, "Non-volatile "}};
constexpr BitWord MODULE_TYPES[] = {{5, "Parity "},         {6, "ECC "}, {2, "Standard "},
                                    {3, "Fast Page Mode "}, {4, "EDO "}, {9, "Burst EDO "},
                                    {10, "SDRAM "}};

constexpr unsigned kModuleIsSimm = 1u << 7;
constexpr unsigned kModuleIsDimm = 1u << 8;

std::string wordsOf(std::span<const BitWord> words, unsigned bits) {
  std::string text;
  for (const BitWord& word : words) {
    if ((bits >> word.bit & 1) != 0) text += word.word;
  }
  return text;
}

}  // namespace

std::string deviceDetailWords(unsigned bits) { return wordsOf(DEVICE_DETAILS, bits); }

std::string moduleTypeWords(unsigned bits) { return wordsOf(MODULE_TYPES, bits); }

std::string modulePackaging(unsigned bits) {
  if ((bits & kModuleIsDimm) != 0) return "DIMM";
  return (bits & kModuleIsSimm) != 0 ? "SIMM" : "";
}

std::string withoutTrailingBlank(std::string text) {
  if (text.ends_with(' ')) text.pop_back();
  return text;
}

}  // namespace quenlor
