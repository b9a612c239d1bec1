#include "readers/processor/ProcCpuinfo.h"

#include <cstring>

#include "base/Text.h"
#include "host/Handles.h"
#include "host/LineReader.h"

namespace quenlor {

namespace {

constexpr const char* kCpuinfo = "/proc/cpuinfo";
constexpr size_t kLineSize = 256;
constexpr char kProcessor[] = "processor";

bool contains(const char* line, const char* text) { return std::strstr(line, text) != nullptr; }

}  // namespace

void parseLine(const char* line, std::string& out) {
  const char* colon = std::strchr(line, ':');
  if (colon == nullptr) return;
  out = colon[1] == '\0' ? "" : colon + 2;
}

// The order of the tests is part of the result: while the chip model is 0, every "model name" line
// behind the first counts as a "model" line.
void ProcCpuinfoParser::takeLine(const char* line) {
  ProcCpuinfo& info = m_result;
  if (std::strncmp(line, kProcessor, sizeof kProcessor - 1) == 0) {
    ++info.processorLines;
  } else if (contains(line, "siblings") && info.siblings == 1) {
    info.siblings = numberOf(line);
  } else if (contains(line, "model name") && info.modelName.empty()) {
    parseLine(line, info.modelName);
  } else if (contains(line, "cpu MHz") && info.mhz.empty()) {
    parseLine(line, info.mhz);
  } else if (contains(line, "vendor_id") && info.vendor.empty()) {
    parseLine(line, info.vendor);
  } else if (contains(line, "cpu family") && info.chipFamily == 0) {
    info.chipFamily = numberOf(line);
  } else if (contains(line, "model") && info.chipModel == 0) {
    info.chipModel = numberOf(line);
  } else if (contains(line, "stepping") && info.chipStepping == 0) {
    info.chipStepping = numberOf(line);
  } else if (contains(line, "flags") && !info.flags) {
    parseLine(line, m_value);
    info.flags = m_value;
  }
}

int ProcCpuinfoParser::numberOf(const char* line) {
  parseLine(line, m_value);
  return decimalValue(m_value.c_str());
}

ProcCpuinfo readProcCpuinfo() {
  ProcCpuinfoParser parser;
  const FileStream file = openFile(kCpuinfo);
  LineReader reader(file.get(), kLineSize);
  while (reader.next()) {
    reader.cutTrailingControl();
    parser.takeLine(reader.line());
  }
  return parser.result();
}

std::optional<int> hyperThreadedPackages(const ProcCpuinfo& cpuinfo, const TraceFunction& at) {
  CcLogWrapper* log = getCcLogHw();
  if (cpuinfo.processorLines < cpuinfo.siblings) {
    log->traceMAX(at(), "hardware %s",
                  "Hyperthreading detected but the number of CPUs is less than the number of "
                  "logical CPUs");
    log->traceMAX(at(), "hardware %s", "left the number of CPUs unchanged");
    return std::nullopt;
  }
  const int packages = cpuinfo.processorLines / cpuinfo.siblings;
  log->traceMAX(at(), "hardware %s %d", "Hyperthreading detected: Physical CPU count=", packages);
  return packages;
}

}  // namespace quenlor
