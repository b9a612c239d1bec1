// What the processor and partition groups take from /proc/cpuinfo.
#pragma once

#include <optional>
#include <string>

#include "log/CcLogWrapper.h"

namespace quenlor {

// A missing file leaves every value as it is here.
struct ProcCpuinfo {
  int processorLines = 0;
  int siblings = 1;  // logical processors of a package
  std::string vendor;
  std::string modelName;
  std::string mhz;
  int chipFamily = 0;
  int chipModel = 0;
  int chipStepping = 0;
  std::optional<std::string> flags;  // what the first 255 characters of the line hold of it
};

// Text behind the first colon and the one character after it; empty where the line ends before
// that. A line without a colon leaves out as it is.
void parseLine(const char* line, std::string& out);

// Takes over one line after the other, each a piece of at most 255 characters.
class ProcCpuinfoParser {
 public:
  void takeLine(const char* line);
  const ProcCpuinfo& result() const { return m_result; }

 private:
  int numberOf(const char* line);

  ProcCpuinfo m_result;
  std::string
      m_value;  // text of the last line that had a colon, also for a later one that has none
};

ProcCpuinfo readProcCpuinfo();

// Processor lines divided by siblings, traced as the caller's; nothing when there are fewer lines
// than siblings. Only for a processor with hyper-threading: at least two siblings.
std::optional<int> hyperThreadedPackages(const ProcCpuinfo& cpuinfo, const TraceFunction& at);

}  // namespace quenlor
