#include "readers/topology/CpuinfoBlocks.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "base/Text.h"

namespace quenlor {
namespace {

struct NumberKey {
  std::string_view key;
  std::optional<uint32_t> CpuinfoBlock::*field;
};

constexpr NumberKey NUMBER_KEYS[] = {
    {"processor", &CpuinfoBlock::processor}, {"physical id", &CpuinfoBlock::physicalId},
    {"core id", &CpuinfoBlock::coreId},      {"siblings", &CpuinfoBlock::siblings},
    {"cpu cores", &CpuinfoBlock::cores},     {"cpu family", &CpuinfoBlock::family},
    {"model", &CpuinfoBlock::model},         {"stepping", &CpuinfoBlock::stepping},
};

struct TextKey {
  std::string_view key;
  std::string CpuinfoBlock::*field;
};

constexpr TextKey TEXT_KEYS[] = {
    {"vendor_id", &CpuinfoBlock::vendor},
    {"model name", &CpuinfoBlock::modelName},
    {"microcode", &CpuinfoBlock::microcode},
};

std::optional<uint32_t> wholeNumber(std::string_view text) {
  uint32_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return number;
}

bool contains(const std::vector<uint32_t>& sorted, uint32_t number) {
  return std::binary_search(sorted.begin(), sorted.end(), number);
}

}  // namespace

void CpuinfoParser::take(std::string_view piece) {
  m_pending += piece;
  size_t begin = 0;
  for (size_t end = m_pending.find('\n'); end != std::string::npos;
       end = m_pending.find('\n', begin)) {
    takeLine(std::string_view(m_pending).substr(begin, end - begin));
    begin = end + 1;
  }
  m_pending.erase(0, begin);
}

void CpuinfoParser::finish() {
  takeLine(m_pending);
  m_pending.clear();
}

void CpuinfoParser::takeFlags(std::string_view value) {
  CpuinfoBlock& block = m_blocks.back();
  if (block.physicalId && !m_packages.insert(*block.physicalId).second) return;
  block.flags = value;
}

void CpuinfoParser::takeLine(std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view key = trimmed(line.substr(0, colon));
  const std::string_view value = trimmed(line.substr(colon + 1));
  if (key == "processor") m_blocks.emplace_back();
  if (m_blocks.empty()) return;
  if (key == "flags") takeFlags(value);
  for (const NumberKey& number : NUMBER_KEYS) {
    if (key == number.key) m_blocks.back().*number.field = wholeNumber(value);
  }
  for (const TextKey& text : TEXT_KEYS) {
    if (key == text.key) m_blocks.back().*text.field = value;
  }
}

const CpuinfoBlock* blockOfPackage(const std::vector<CpuinfoBlock>& blocks,
                                   std::optional<uint32_t> physicalId,
                                   const std::vector<uint32_t>& processors) {
  const auto ofPackage = std::find_if(blocks.begin(), blocks.end(), [&](const auto& block) {
    return physicalId && block.physicalId == physicalId;
  });
  if (ofPackage != blocks.end()) return &*ofPackage;
  const auto ofProcessor = std::find_if(blocks.begin(), blocks.end(), [&](const auto& block) {
    return !block.physicalId && block.processor && contains(processors, *block.processor);
  });
  return ofProcessor == blocks.end() ? nullptr : &*ofProcessor;
}

}  // namespace quenlor
