#include "quenlorctl/program/Run.h"

#include <csignal>
#include <cstdio>
#include <new>
#include <utility>

#include "quenlorctl/program/OutputFile.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

void runCommand(Run& run) {
  switch (run.options().command) {
    case Command::kJson:
      return runJson(run);
    case Command::kRows:
      return runRows(run);
    case Command::kValidate:
      return runValidate(run);
    case Command::kDiff:
      return runDiff(run);
  }
}

// What ends a subcommand at once.
void runGuarded(Run& run) {
  try {
    runCommand(run);
    flushOutput();
  } catch (const UsageError& error) {
    run.tell(error.what());
  } catch (const OutputError& error) {
    run.tell(error.what());
  } catch (const std::bad_alloc&) {
    run.tell("out of memory");
  }
}

}  // namespace

void Run::tell(const std::string& text) {
  std::fprintf(stderr, "quenlorctl: %s\n", cleanText(text).c_str());
  worsen(kTrouble);
}

void Run::tell(const Trouble& trouble) {
  tell(placedText(trouble.file, trouble.place, trouble.text));
}

InputSinks Run::sinks(std::function<void(Document&, const std::string&)> document) {
  InputSinks sinks;
  sinks.document = std::move(document);
  sinks.trouble = [this](const Trouble& trouble) { tell(trouble); };
  return sinks;
}

std::vector<const Group*> Run::wantedGroups() const {
  std::vector<const Group*> groups;
  for (const std::string& name : m_options.groups) {
    const Group* group = findGroupName(name);
    if (group == nullptr) throw UsageError("no such group: " + name);
    groups.push_back(group);
  }
  return groups;
}

std::string placedText(const std::string& file, const Place& place, const std::string& text) {
  if (place.line == 0) return file + ": " + text;
  return file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " + text;
}

int runProgram(int argc, const char* const* argv) {
  // Whoever started the program may have them otherwise.
  std::signal(SIGPIPE, SIG_DFL);
  const CommandLineResult parsed = parseCommandLine(argc, argv);
  if (!parsed.options) return parsed.status;
  Run run(*parsed.options);
  runGuarded(run);
  return run.status();
}

}  // namespace quenlor::ctl
