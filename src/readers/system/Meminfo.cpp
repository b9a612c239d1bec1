#include "readers/system/Meminfo.h"

#include <cstdlib>
#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/MemoryGroup.cpp";
constexpr const char* kPath = "/proc/meminfo";
constexpr size_t kLineSize = 256;

bool contains(const char* line, const char* label) { return std::strstr(line, label) != nullptr; }

}  // namespace

long parseVal(char* line) {
  char* rest = nullptr;
  if (strtok_r(line, " \n", &rest) == nullptr) return 0;
  const char* value = strtok_r(nullptr, " \t:", &rest);
  return value == nullptr ? 0 : std::strtol(value, nullptr, 10);
}

int getFromMeminfo(unsigned long* totalPhys, unsigned long* freePhys, unsigned long* totalVirt,
                   unsigned long* freeVirt) {
  const TraceFunction at{kSourcePath, "getFromMeminfo()"};
  CcLogWrapper* log = getCcLogHw();
  const FileStream file = openFile(kPath);
  LineReader reader(file.get(), kLineSize);
  if (!reader.next()) {
    log->traceMIN(at(), "hardware %s %d", "Could not open file /proc/meminfo:return=", 0);
    return 0;
  }

  do {
    char* line = reader.line();
    const auto value = [line] { return static_cast<unsigned long>(parseVal(line)); };
    if (contains(line, "MemTotal: ")) {
      const unsigned long total = value();
      if (total == *totalPhys) {
        log->traceMAX(at(),
                      "hardware MemTotal=%lu matches sysinfo data, so exiting from "
                      "getFromMeminfo, return=%d",
                      total, 0);
        return 0;
      }
      *totalPhys = *totalVirt = total;
    } else if (contains(line, "MemFree: ")) {
      *freePhys = *freeVirt = value();
    } else if (contains(line, "SwapTotal: ")) {
      *totalVirt += value();
    } else if (contains(line, "SwapFree: ")) {
      *freeVirt += value();
    }
  } while (reader.next());
  return 1;
}

}  // namespace quenlor
