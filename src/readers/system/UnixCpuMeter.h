// Processor usage counters and load averages of the kernel's process file system.
#pragma once

#include <cstdint>
#include <string>

namespace quenlor {

// Totals of the first line of /proc/stat and the number of processor lines that follow it.
struct ProcStat {
  long long user = -1;  // clock units summed over all processors; -1: the kernel has no such column
  long long nice = -1;
  long long system = -1;
  long long idle = -1;
  long long wait = -1;
  long long processors = 0;
};

// Adds one line of /proc/stat; false when the processor lines are over.
class ProcStatParser {
 public:
  bool addLine(const char* line);
  const ProcStat& result() const { return m_result; }

 private:
  bool m_totalsSeen = false;
  ProcStat m_result;
};

// Whole seconds at the start of a /proc/uptime line; -1 when there is no number of 32 bits.
long long parseUptimeSeconds(const char* line);

// Every value is -1 (times) or -1.0 (load averages) while it is not known.
class UnixCpuMeter {
 public:
  UnixCpuMeter() { init(); }
  void init();     // forgets every value
  void refresh();  // reads /proc/stat, /proc/loadavg and /proc/uptime

  // Clock units of /proc/stat, averaged per processor.
  long long getIdleTime() const { return m_idleTime; }
  long long getWaitTime() const { return m_waitTime; }
  long long getUserTime() const { return m_userTime; }
  long long getSysTime() const { return m_sysTime; }
  float getLoadAvg1() const { return m_loadAvg1; }
  float getLoadAvg5() const { return m_loadAvg5; }
  float getLoadAvg15() const { return m_loadAvg15; }
  long long getSystemUpTime() const { return m_systemUpTime; }  // hundredths of a second

  long long readSystemUpTime();  // hundredths of a second, -1 when /proc/uptime cannot be read

 private:
  void readTimes();
  void readLoadAverages();

  long long m_idleTime = -1;
  long long m_waitTime = -1;
  long long m_userTime = -1;
  long long m_niceTime = -1;
  long long m_sysTime = -1;
  float m_loadAvg1 = -1.0F;
  float m_loadAvg5 = -1.0F;
  float m_loadAvg15 = -1.0F;
  long long m_systemUpTime = -1;
};

}  // namespace quenlor
