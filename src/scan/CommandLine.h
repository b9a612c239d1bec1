// The options of one run.
#pragma once

#include <functional>
#include <string>

#include "base/StandardOutput.h"

namespace quenlor {

struct CommandLine {
  std::string configFile;                    // -c; empty: none
  std::string outputFile = kStandardOutput;  // -o
  bool xml = true;                           // false after -m
  bool list = false;                         // -l
  bool wOption = false;                      // -w
};

// What the command line asks for: to go on with the options, or to end with a status at once.
struct CommandLineResult {
  bool finished = false;
  int status = 0;
  CommandLine options;
};

// Reads the arguments from left to right; -l calls buildEntries at its place. A usage error, and
// -h, prints the usage text to standard error.
CommandLineResult parseCommandLine(int argc, const char* const* argv,
                                   const std::function<int()>& buildEntries);

// The usage text, to standard error.
void printUsage();

}  // namespace quenlor
