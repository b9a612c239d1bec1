#include "host/CommandSpawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <vector>

namespace quenlor {
namespace {

constexpr char kShell[] = "/bin/sh";
constexpr char kNowhere[] = "/dev/null";
constexpr char kLocaleVariable[] = "LC_ALL=";
constexpr char kLocaleOfChildren[] = "LC_ALL=C";

// Our environment, in a locale whose texts the parsers know. Ours itself stays as it is.
std::vector<char*> childEnvironment() {
  std::vector<char*> variables;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    if (std::strncmp(*variable, kLocaleVariable, sizeof kLocaleVariable - 1) != 0) {
      variables.push_back(*variable);
    }
  }
  variables.push_back(const_cast<char*>(kLocaleOfChildren));
  variables.push_back(nullptr);
  return variables;
}

// What the child gets instead of our own signal state and standard streams.
class SpawnSettings {
 public:
  SpawnSettings(int input, int output, int errors) {
    posix_spawnattr_init(&m_attributes);
    posix_spawn_file_actions_init(&m_actions);
    sigset_t every;
    sigfillset(&every);
    posix_spawnattr_setsigdefault(&m_attributes, &every);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&m_attributes, &none);
    posix_spawnattr_setpgroup(&m_attributes, 0);  // a group of its own, named after the child
    posix_spawnattr_setflags(
        &m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    // The descriptors lie above 2, since prepareProcess() has opened the standard ones.
    posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&m_actions, input, STDIN_FILENO);
    if (errors >= 0) posix_spawn_file_actions_adddup2(&m_actions, errors, STDERR_FILENO);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&m_actions);
    posix_spawnattr_destroy(&m_attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  // 0, or the error number.
  int spawn(const ProgramCall& call, pid_t* pid) const {
    std::vector<char*> arguments;
    for (const std::string& argument : call.arguments) {
      arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    return posix_spawn(pid, call.path.c_str(), &m_actions, &m_attributes, arguments.data(),
                       childEnvironment().data());
  }

 private:
  posix_spawnattr_t m_attributes;
  posix_spawn_file_actions_t m_actions;
};

}  // namespace

std::optional<Pipe> makePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{OwnedDescriptor(ends[0]), OwnedDescriptor(ends[1])};
}

// A root directory without devices has no /dev/null; there a pipe that nobody writes to serves.
OwnedDescriptor openNoInput() {
  OwnedDescriptor null(::open(kNowhere, O_RDONLY | O_CLOEXEC));
  if (null.get() >= 0) return null;
  std::optional<Pipe> pipe = makePipe();
  return pipe ? std::move(pipe->readEnd) : OwnedDescriptor();
}

OwnedDescriptor openNoErrors() { return OwnedDescriptor(::open(kNowhere, O_WRONLY | O_CLOEXEC)); }

ProgramCall shellCall(const char* commandLine) { return {kShell, {"sh", "-c", commandLine}}; }

int spawnProgram(const ProgramCall& call, int input, int output, int errors, pid_t* pid) {
  return SpawnSettings(input, output, errors).spawn(call, pid);
}

}  // namespace quenlor
