#include "readers/system/UnixCpuMeter.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "base/Text.h"
#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/UnixCpuMeter.cpp";
constexpr const char* kStatPath = "/proc/stat";
constexpr const char* kLoadAveragePath = "/proc/loadavg";
constexpr const char* kUptimePath = "/proc/uptime";
constexpr size_t kLineSize = 1024;
constexpr const char* kBlanks = " \t\n";
constexpr long long kHundredthsPerSecond = 100;

bool firstWordContains(const char* line, const char* text) {
  const char* start = line + std::strspn(line, kBlanks);
  const size_t length = std::strcspn(start, kBlanks);
  return std::string(start, length).find(text) != std::string::npos;
}

// The columns behind the line's name, up to the first that is no number; the rest stay as they are.
void readColumns(const char* line, std::initializer_list<long long*> columns) {
  line += std::strspn(line, kBlanks);
  line += std::strcspn(line, kBlanks);
  for (long long* column : columns) {
    char* end = nullptr;
    const long long number = std::strtoll(line, &end, 10);
    if (end == line) return;
    *column = number;
    line = end;
  }
}

// A column that the kernel does not print stays -1: dividing it would turn "absent" into 0.
long long perProcessor(long long total, long long processors) {
  return total == -1 || processors <= 0 ? -1 : total / processors;
}

}  // namespace

bool ProcStatParser::addLine(const char* line) {
  if (!m_totalsSeen) {
    m_totalsSeen = true;
    readColumns(line,
                {&m_result.user, &m_result.nice, &m_result.system, &m_result.idle, &m_result.wait});
    return true;
  }
  if (!firstWordContains(line, "cpu")) return false;
  ++m_result.processors;
  return true;
}

long long parseUptimeSeconds(const char* line) {
  char* end = nullptr;
  const long long seconds = std::strtoll(line, &end, 10);
  // 32 bits hold 68 years; what exceeds them is no up-time.
  const bool plausible = seconds >= INT_MIN && seconds <= INT_MAX;
  return end == line || !plausible ? -1 : seconds;
}

void UnixCpuMeter::init() {
  m_idleTime = m_waitTime = m_userTime = m_niceTime = m_sysTime = -1;
  m_loadAvg1 = m_loadAvg5 = m_loadAvg15 = -1.0F;
  m_systemUpTime = -1;
}

void UnixCpuMeter::refresh() {
  readTimes();
  readLoadAverages();
  m_systemUpTime = readSystemUpTime();
}

void UnixCpuMeter::readTimes() {
  const TraceFunction at{kSourcePath, "refresh()"};
  CcLogWrapper* log = getCcLogHw();
  const FileStream file = openFile(kStatPath);
  if (!file) return;
  log->traceMAX(at(), "hardware opened /proc/stat");

  ProcStatParser parser;
  LineReader reader(file.get(), kLineSize);
  if (reader.next()) {
    parser.addLine(reader.line());
    log->traceMAX(at(), "hardware Read string <%s>", reader.line());
  }
  while (reader.next() && parser.addLine(reader.line())) continue;
  const ProcStat& stat = parser.result();
  log->traceMAX(at(), "hardware number of cpu=%d", static_cast<int>(stat.processors));

  m_userTime = perProcessor(stat.user, stat.processors);
  log->traceMAX(at(), "hardware userTime: %lld", m_userTime);
  m_niceTime = perProcessor(stat.nice, stat.processors);
  log->traceMAX(at(), "hardware niceTime:  %lld", m_niceTime);
  m_sysTime = perProcessor(stat.system, stat.processors);
  log->traceMAX(at(), "hardware sysTime: %lld", m_sysTime);
  m_idleTime = perProcessor(stat.idle, stat.processors);
  log->traceMAX(at(), "hardware idleTime: %lld", m_idleTime);
  m_waitTime = perProcessor(stat.wait, stat.processors);
  log->traceMAX(at(), "hardware waitTime: %lld", m_waitTime);
}

void UnixCpuMeter::readLoadAverages() {
  const TraceFunction at{kSourcePath, "refresh()"};
  CcLogWrapper* log = getCcLogHw();
  const FileStream file = openFile(kLoadAveragePath);
  if (!file) return;
  log->traceMAX(at(), "hardware opened /proc/loadavg");

  LineReader reader(file.get(), kLineSize);
  if (!reader.next()) return;
  log->traceMAX(at(), "hardware parsing this line %s", reader.line());

  char* rest = nullptr;
  const char* word = strtok_r(reader.line(), kBlanks, &rest);
  const auto take = [&](float& average, const char* format) {
    if (word == nullptr) return;
    average = static_cast<float>(parseDouble(word));
    log->traceMAX(at(), format, word, static_cast<double>(average));
    word = strtok_r(nullptr, kBlanks, &rest);
  };
  take(m_loadAvg1, "hardware loadAvg1: %s, converted: %f ");
  take(m_loadAvg5, "hardware loadAvg5: %s, converted: %f ");
  take(m_loadAvg15, "hardware loadAvg15: %s, converted: %f ");
}

long long UnixCpuMeter::readSystemUpTime() {
  const TraceFunction at{kSourcePath, "readSystemUpTime()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware looking for /proc/uptime.");
  const FileStream file = openFile(kUptimePath);
  if (!file) {
    log->traceMIN(at(), "hardware cannot open /proc/uptime.");
    return -1;
  }
  log->traceMAX(at(), "hardware opened /proc/uptime");

  LineReader reader(file.get(), kLineSize);
  const long long seconds = reader.next() ? parseUptimeSeconds(reader.line()) : -1;
  log->traceMAX(at(), "hardware returning system uptime:  %lld", seconds);
  log->traceMAX(at(), "hardware %d days: %d hours: %d minutes: %d seconds",
                static_cast<int>(seconds / 86400), static_cast<int>(seconds % 86400 / 3600),
                static_cast<int>(seconds % 3600 / 60), static_cast<int>(seconds % 60));
  return seconds == -1 ? -1 : seconds * kHundredthsPerSecond;
}

}  // namespace quenlor
