// The subcommands and their options.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quenlor::ctl {

enum class Command : uint8_t { kJson, kRows, kValidate, kDiff };

struct CommandLine {
  Command command = Command::kJson;
  std::vector<std::string> files;   // none: standard input
  std::vector<std::string> groups;  // --group; none: all
  bool isPretty = false;            // json
  bool isRaw = false;               // json, rows
  bool isCsv = false;               // rows
  std::string splitFolder;          // rows --split; empty: standard output
  std::string host;                 // rows --host; empty: the document's own
  bool isQuiet = false;             // validate, diff
  bool isAll = false;               // diff
  bool isJson = false;              // diff
  std::string baseline;             // diff --baseline; empty: none
  bool isAccepted = false;          // diff --accept
};

// What the arguments ask for, or the status with which the program ends at once: after --help and
// --version, which are written to standard output, and after a usage error, told on standard error.
struct CommandLineResult {
  std::optional<CommandLine> options;
  int status = 0;
};

CommandLineResult parseCommandLine(int argc, const char* const* argv);

}  // namespace quenlor::ctl
