#include "readers/virtualization/ToolsAgent.h"

#include <sys/stat.h>

#include <algorithm>
#include <iterator>

#include "host/Handles.h"
#include "readers/virtualization/AgentAnswer.h"

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;

// The agent of the first tools, and its successor, which takes the same arguments; where their
// installers and distributions put them.
constexpr const char* kPrograms[] = {"/usr/sbin/vmware-guestd", "/usr/bin/vmware-guestd",
                                     "/usr/bin/vmtoolsd", "/usr/sbin/vmtoolsd"};

// What the host publishes has some tens of characters. What is longer is no text of it.
constexpr size_t kLongestText = 4096;

constexpr mode_t kAnyExecute = S_IXUSR | S_IXGRP | S_IXOTH;

bool isProgram(const char* path) {
  struct stat status {};
  return host().stat(path, &status) == 0 && S_ISREG(status.st_mode) &&
         (status.st_mode & kAnyExecute) != 0;
}

// False for one that had to be killed, or that sits in the kernel and cannot even be killed.
bool hasEnded(int waitStatus) { return waitStatus != -1 && !wasKilled(waitStatus); }

}  // namespace

bool ToolsAgent::findProgram() {
  const auto* const found = std::find_if(std::begin(kPrograms), std::end(kPrograms), isProgram);
  if (found != std::end(kPrograms)) m_program = *found;
  return m_program != nullptr;
}

ToolsAgent::Milliseconds ToolsAgent::timeLeft() const {
  return std::max(m_limit() * 4 / 5 - m_spent, Milliseconds(0));
}

std::optional<std::string> ToolsAgent::start(const char* key) {
  CommandStream stream(m_program, {m_program, "--cmd", agentQuestion(key)});
  if (!stream) {
    m_state = std::max(m_state, State::kNoProgram);
    return std::nullopt;
  }
  m_state = std::max(m_state, State::kSilent);
  stream.endWithin(timeLeft());
  std::optional<std::string> text = readFirstLine(stream);
  const int status = stream.close();
  if (!hasEnded(status) && !(text && text->ends_with('\n'))) {
    m_isStuck = m_wasCutOff = true;
    return std::nullopt;
  }
  if (!text || exitCodeOf(status) != 0 || text->size() > kLongestText) return std::nullopt;
  stripTrailingBlanks(*text);
  m_state = State::kAnswered;
  return text;
}

std::optional<std::string> ToolsAgent::ask(const char* key) {
  const std::lock_guard lock(m_mutex);
  const auto [answer, isNew] = m_answers.try_emplace(key);
  if (!isNew || (m_program == nullptr && !findProgram())) return answer->second;
  if (m_isStuck || timeLeft().count() == 0) {
    m_wasCutOff = true;
    return answer->second;
  }
  const auto before = Clock::now();
  answer->second = start(key);
  m_spent += std::chrono::ceil<Milliseconds>(Clock::now() - before);
  return answer->second;
}

ToolsAgent::State ToolsAgent::state() const {
  const std::lock_guard lock(m_mutex);
  return m_state;
}

bool ToolsAgent::wasCutOff() const {
  const std::lock_guard lock(m_mutex);
  return m_wasCutOff;
}

}  // namespace quenlor
