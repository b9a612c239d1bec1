// Commands whose output is read, none of which can hang the scan.
#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/CommandSpawn.h"

namespace quenlor {

// Starts commands and reaps them. May be used from several threads; one stream by one thread at a
// time. Must outlive the streams that it gave out.
class CommandRunner {
 public:
  // Told of a command line whose output was cut off while more of it could come.
  using OnCutOff = std::function<void(const std::string& commandLine)>;

  // ceiling: the time that a command may take, counted from its start.
  explicit CommandRunner(std::chrono::milliseconds ceiling = std::chrono::seconds(60),
                         OnCutOff onCutOff = {});
  ~CommandRunner();
  CommandRunner(const CommandRunner&) = delete;
  CommandRunner& operator=(const CommandRunner&) = delete;

  // Runs the line with /bin/sh in a process group of its own: standard input from /dev/null,
  // standard output to the returned stream, standard error to /dev/null, LC_ALL=C, default signals.
  // When the ceiling or 32 MiB of output are reached the group is killed, and the output ends with
  // what was written by then. Null, with errno, only when no shell could be started, or none is to
  // be any more. finish() closes the stream.
  FILE* start(const char* commandLine);

  // The same for a program by its path, without a shell; arguments[0] is the name that it is told.
  // Null, with errno, also where the path is none of a program.
  FILE* startProgram(const char* path, const std::vector<std::string>& arguments);

  // Closes a stream of start() and gives the wait status of the shell. Output not read is thrown
  // away, a command that goes on past the ceiling is killed. -1 when the stream is none of ours or
  // the child cannot even be killed (stuck in the kernel).
  int finish(FILE* stream);

  // What is wanted of a stream's command has been read: it has only so much time left to end, and
  // nobody is told when it does not.
  void limit(FILE* stream, std::chrono::milliseconds rest);

  // Kills all commands that have not ended, those that finish() waits for too, and lets no other
  // start: who has lost one may want the next. Open streams are still to be finished; reading them
  // ends with what was written by now.
  void killAll();

 private:
  class Groups;
  class Child;
  using Clock = std::chrono::steady_clock;

  // told: what the one who hears of a cut-off output is told.
  FILE* start(const ProgramCall& call, const std::string& told);

  const std::chrono::milliseconds m_ceiling;
  const OnCutOff m_onCutOff;
  const std::unique_ptr<Groups> m_groups;  // outlives the children
  std::mutex m_mutex;
  std::unordered_map<FILE*, std::unique_ptr<Child>> m_children;
};

}  // namespace quenlor
