// The tools agent of a VMware guest: a program that tells what the host publishes to its guests,
// one key per start. It is started by its path, without a shell.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace quenlor {

// May be asked from several threads, which take turns. A key is asked for once; an agent that had
// to be killed before it told a whole line is not started again.
class ToolsAgent {
 public:
  using Milliseconds = std::chrono::milliseconds;

  // `limit` tells how long the group that asks may take. All keys together get four fifths of it,
  // so that a group whose agent hangs still tells what it knows.
  explicit ToolsAgent(std::function<Milliseconds()> limit) : m_limit(std::move(limit)) {}

  // The key's text (agent_key), trailing blanks stripped. Nothing where the agent has none, is not
  // there or did not tell it in time.
  std::optional<std::string> ask(const char* key);

  // What has come of asking so far, from the worst to the best.
  enum class State : uint8_t {
    kNotThere,   // no program at any of its paths
    kNoProgram,  // it cannot be started
    kSilent,     // no key has a text
    kAnswered,   // some had
  };
  State state() const;
  bool wasCutOff() const;  // time ran out for at least one key

 private:
  std::optional<std::string> start(const char* key);
  Milliseconds timeLeft() const;
  bool findProgram();

  const std::function<Milliseconds()> m_limit;
  mutable std::mutex m_mutex;
  std::map<std::string, std::optional<std::string>> m_answers;
  const char* m_program = nullptr;
  Milliseconds m_spent{0};
  State m_state = State::kNotThere;
  bool m_isStuck = false;
  bool m_wasCutOff = false;
};

}  // namespace quenlor
