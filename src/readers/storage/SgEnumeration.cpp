#include "readers/storage/SgEnumeration.h"

#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/SgEnumeration.cpp";
constexpr const char* kSgMapCommand = "sg_map -x 2>/dev/null";
constexpr size_t kSgMapLineSize = 2048;
constexpr int kLastCounter = 255;

std::string withoutLineEnd(const char* line) {
  std::string text;
  for (; *line != '\0'; ++line) {
    if (*line != '\r' && *line != '\n') text += *line;
  }
  return text;
}

// Takes one line of sg_map; false when no further line is to be read.
bool addSgMapLine(SgMap& map, const std::string& line) {
  if (!line.starts_with("/dev/")) return true;
  map.hasMapping = true;
  const size_t blank = line.find(' ');
  if (blank == std::string::npos) return false;
  if (line.find("/dev/", blank) != std::string::npos) {
    map.otherwiseReachable.insert(line.substr(0, blank));
  }
  return true;
}

void readSgMap(SgMap& map) {
  map.wasRead = true;
  CommandStream output(kSgMapCommand);
  LineReader reader(output.get(), kSgMapLineSize);
  while (reader.next()) {
    if (!addSgMapLine(map, withoutLineEnd(reader.line()))) return;
  }
}

}  // namespace

char* getNextDrive(DriveCounter& counter, const char* prefix, int letters) {
  const TraceFunction at{kSourcePath, "getNextDrive()"};
  if (counter.next == kLastCounter) {
    getCcLogHw()->traceMAX(at(), "hardware %s",
                           "we have already processed a possibly valid dev/sg255: return NULL");
    return nullptr;
  }
  if (letters != 0 && counter.next == 0) counter.next = 'a';
  const std::string name = prefix + (letters != 0 ? std::string(1, static_cast<char>(counter.next))
                                                  : std::to_string(counter.next));
  ++counter.next;
  struct stat status = {};
  if (host().stat(name.c_str(), &status) == 0) return ::strdup(name.c_str());
  counter.next = 0;
  getCcLogHw()->traceMAX(at(), "hardware %s", "return NULL");
  return nullptr;
}

int omitSGdevice(SgMap& map, CcLogWrapper* log, const char* device) {
  const TraceFunction at{kSourcePath, "omitSGdevice()"};
  if (!map.wasRead) readSgMap(map);
  const bool omitted = map.hasMapping && map.otherwiseReachable.count(device) != 0;
  log->traceMAX(at(), "hardware %s %s %d", "omitSGdevice", device, omitted ? 1 : 0);
  return omitted ? 1 : 0;
}

}  // namespace quenlor
