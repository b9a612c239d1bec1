#include "readers/storage/TapeBackup.h"

#include <cstring>
#include <string_view>

#include "host/Handles.h"
#include "host/LineReader.h"

namespace quenlor {
namespace {

constexpr const char* kProcessListCommand = "/bin/ps -ef";
constexpr size_t kLineSize = 256;

bool isBackupProcess(const char* line) {
  return getExactMatch(line, "save") == 1 || std::strstr(line, "save -s") != nullptr ||
         getExactMatch(line, "recover") == 1 || getExactMatch(line, "nsrclone") == 1 ||
         getExactMatch(line, "nsrstage") == 1;
}

}  // namespace

// Only the first occurrence counts: a user named like the word hides the command at the line's end.
int getExactMatch(const char* line, const char* word) {
  const char* found = std::strstr(line, word);
  if (found == nullptr) return 0;
  std::string_view rest(found);
  const size_t newline = rest.find('\n');
  if (newline != std::string_view::npos) rest = rest.substr(0, newline);
  return rest == word ? 1 : 0;
}

int isUltrium_tape_LT4772_running() {
  CommandStream processes(kProcessListCommand);
  LineReader reader(processes.get(), kLineSize);
  while (reader.next()) {
    if (isBackupProcess(reader.line())) return 1;
  }
  return 0;
}

}  // namespace quenlor
