// One run of a subcommand: what it was asked, what it has met.
#pragma once

#include <string>
#include <vector>

#include "quenlorctl/input/Inputs.h"
#include "quenlorctl/program/CommandLine.h"
#include "quenlorctl/program/Status.h"

namespace quenlor::ctl {

class Run {
 public:
  explicit Run(const CommandLine& options) : m_options(options) {}

  const CommandLine& options() const { return m_options; }
  int status() const { return m_status; }
  // The worst status wins.
  void worsen(int status) { m_status = status > m_status ? status : m_status; }

  // One line on standard error, cleaned for terminals; the status becomes trouble.
  void tell(const std::string& text);
  void tell(const Trouble& trouble);

  // Sinks that tell troubles and give documents to the callee.
  InputSinks sinks(std::function<void(Document&, const std::string&)> document);

  // The groups of --group; throws UsageError for a name that is none.
  std::vector<const Group*> wantedGroups() const;

 private:
  const CommandLine& m_options;
  int m_status = kDone;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "file:line:column: text", or "file: text".
std::string placedText(const std::string& file, const Place& place, const std::string& text);

// The subcommands. They may throw UsageError and OutputError.
void runJson(Run& run);
void runRows(Run& run);
void runValidate(Run& run);
void runDiff(Run& run);

// The whole program; returns its status.
int runProgram(int argc, const char* const* argv);

}  // namespace quenlor::ctl
