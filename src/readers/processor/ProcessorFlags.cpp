#include "readers/processor/ProcessorFlags.h"

#include <cstring>

#include "log/CcLogWrapper.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ProcessorGroup.cpp";

constexpr uint32_t bit(unsigned number) { return 1u << number; }

}  // namespace

const X86Flag IntelX86Flags[24] = {
    {"fpu", bit(0)},  {"vme", bit(1)},    {"de", bit(2)},    {"pse", bit(3)},  {"tsc", bit(4)},
    {"msr", bit(5)},  {"pae", bit(6)},    {"mce", bit(7)},   {"cx8", bit(8)},  {"apic", bit(9)},
    {"sep", bit(11)}, {"mtrr", bit(12)},  {"pge", bit(13)},  {"mca", bit(14)}, {"cmov", bit(15)},
    {"pat", bit(16)}, {"pse36", bit(17)}, {"psn", bit(18)},  {"mmx", bit(23)}, {"fxsr", bit(24)},
    {"sse", bit(25)}, {"xmm", bit(25)},   {"sse2", bit(26)}, {"ht", bit(28)},
};

uint32_t makeCPUflagsFromString(const char* flags) {
  const TraceFunction at{kSourcePath, "makeCPUflagsFromString()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s %s", "parsing CPU flags line:", flags);
  uint32_t value = 0;
  int index = 0;
  for (const X86Flag& flag : IntelX86Flags) {
    log->traceMAX(at(), "hardware %s %d", "for desc:i=", index++);
    if (std::strstr(flags, flag.name) != nullptr) value |= flag.mask;
  }
  log->traceMAX(at(), "hardware %s %08x", "flagVal=", value);
  return value;
}

}  // namespace quenlor
