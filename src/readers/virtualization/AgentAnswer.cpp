#include "readers/virtualization/AgentAnswer.h"

#include <sys/wait.h>

#include <cctype>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr size_t kFirstLineSize = 300;
// No agent text comes near it; a command that never ends its line shall not fill the memory.
constexpr size_t kMaxLineSize = size_t{1} << 20;

// An agent that has told its line has nothing more to do.
constexpr std::chrono::seconds kTimeAfterLine{1};

}  // namespace

std::string agentQuestion(const char* key) { return std::string("info-get guestinfo.") + key; }

std::optional<std::string> readFirstLine(CommandStream& command) {
  FILE* stream = command.get();
  std::string line;
  line.reserve(kFirstLineSize);
  bool ended = false;
  bool any = false;
  for (int character = std::getc(stream); character != EOF; character = std::getc(stream)) {
    any = true;
    if (!ended && line.size() < kMaxLineSize) line.push_back(static_cast<char>(character));
    if (character == '\n' && !std::exchange(ended, true)) command.endWithin(kTimeAfterLine);
  }
  if (!any) return std::nullopt;
  return line.substr(0, line.find('\0'));
}

void stripTrailingBlanks(std::string& text) {
  while (text.size() > 1 && std::isspace(static_cast<unsigned char>(text.back())) != 0) {
    text.pop_back();
  }
}

int exitCodeOf(int waitStatus) {
  return static_cast<int8_t>((static_cast<unsigned>(waitStatus) >> 8) & 0xFFu);
}

bool wasKilled(int waitStatus) {
  return waitStatus != -1 && WIFSIGNALED(waitStatus) && WTERMSIG(waitStatus) == SIGKILL;
}

double finiteNumber(const std::string& text) {
  const double value = parseDouble(text.c_str());
  return std::isfinite(value) ? value : 0;
}

}  // namespace quenlor
