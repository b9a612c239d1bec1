#include "tests/support/RecordedCpuid.h"

#include <sstream>
#include <stdexcept>

#include "tests/support/RecordedTree.h"

namespace quenlor::test {
namespace {

constexpr unsigned kLeafIsInput = 1;     // bits of a line's first number: which registers the
constexpr unsigned kSubleafIsInput = 4;  // processor looked at
constexpr uint32_t kRange = 0xFFFF0000u;

}  // namespace

RecordedCpuid::Line RecordedCpuid::parseLine(const std::string& line) {
  std::istringstream words(line);
  words >> std::hex;
  uint32_t mask = 0;
  uint32_t in[4] = {};
  uint32_t out[4] = {};
  std::string arrow;
  words >> mask >> in[0] >> in[1] >> in[2] >> in[3] >> arrow >> out[0] >> out[1] >> out[2] >>
      out[3];
  if (!words || arrow != "=>" || (mask & kLeafIsInput) == 0) {
    throw std::runtime_error("cpuid.txt, unknown line: " + line);
  }
  Line parsed{in[0], {}, {out[0], out[1], out[2], out[3]}};
  if ((mask & kSubleafIsInput) != 0) parsed.subleaf = in[2];
  return parsed;
}

RecordedCpuid::RecordedCpuid(const std::string& text) {
  std::istringstream stream(text);
  std::vector<uint32_t> current;
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (line.starts_with("processor ")) {
      current = recordedNumbers(line.substr(10));
      for (const uint32_t cpu : current) m_lines[cpu];
      continue;
    }
    const Line parsed = parseLine(line);
    if (current.empty()) throw std::runtime_error("cpuid.txt, no processor before: " + line);
    for (const uint32_t cpu : current) m_lines[cpu].push_back(parsed);
  }
}

const RecordedCpuid::Line* RecordedCpuid::find(uint32_t cpu, uint32_t leaf,
                                               uint32_t subleaf) const {
  const auto lines = m_lines.find(cpu);
  if (lines == m_lines.end()) return nullptr;
  for (auto line = lines->second.rbegin(); line != lines->second.rend(); ++line) {
    if (line->leaf == leaf && line->subleaf.value_or(subleaf) == subleaf) return &*line;
  }
  return nullptr;
}

bool RecordedCpuid::answer(uint32_t cpu, uint32_t leaf, uint32_t subleaf,
                           CpuidRegisters* out) const {
  *out = {};
  if (const Line* line = find(cpu, leaf, subleaf)) {
    *out = line->answer;
    return true;
  }
  // A leaf within its range that was not recorded is one that says nothing.
  const Line* range = find(cpu, leaf & kRange, 0);
  return range != nullptr && leaf <= range->answer.eax;
}

std::vector<uint32_t> RecordedCpuid::processors() const {
  std::vector<uint32_t> numbers;
  for (const auto& [cpu, lines] : m_lines) numbers.push_back(cpu);
  return numbers;
}

}  // namespace quenlor::test
