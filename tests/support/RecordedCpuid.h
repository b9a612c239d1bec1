// CPUID of a recorded machine's processors: cpuid.txt (tests/recorded/README.md).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"

namespace quenlor::test {

class RecordedCpuid {
 public:
  RecordedCpuid() = default;
  // Throws std::runtime_error for a line of no known form.
  explicit RecordedCpuid(const std::string& text);

  // As Host::cpuid on that processor.
  bool answer(uint32_t cpu, uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) const;
  // Processors that the recording names, ascending.
  std::vector<uint32_t> processors() const;

 private:
  struct Line {
    uint32_t leaf = 0;
    std::optional<uint32_t> subleaf;  // nothing: the answer does not depend on it
    CpuidRegisters answer;
  };

  static Line parseLine(const std::string& line);
  const Line* find(uint32_t cpu, uint32_t leaf, uint32_t subleaf) const;

  std::map<uint32_t, std::vector<Line>> m_lines;  // later lines win
};

}  // namespace quenlor::test
