#include <unistd.h>

#include <optional>

#include "quenlorctl/diff/Diff.h"
#include "quenlorctl/program/OutputFile.h"
#include "quenlorctl/program/Run.h"

namespace quenlor::ctl {
namespace {

struct ReadDocument {
  Document document;
  std::string bytes;
};

// The one document of a file; nothing, and told, when it holds none or several.
std::optional<ReadDocument> readOne(Run& run, const std::string& file) {
  std::optional<ReadDocument> read;
  size_t count = 0;
  InputSinks sinks = run.sinks([&](Document& document, const std::string& bytes) {
    if (++count == 1) read = ReadDocument{std::move(document), bytes};
  });
  sinks.wantsBytes = true;
  readInputs({file}, sinks);
  if (run.status() == kTrouble) return {};
  if (count == 1) return read;
  run.tell({file, {}, count == 0 ? "no document" : "more than one document"});
  return {};
}

void compare(Run& run, const DiffOptions& terms, const Document& before, const Document& after) {
  const CommandLine& options = run.options();
  const auto facts = diffDocuments(before, after, terms);
  if (!facts.empty()) run.worsen(kDifferent);
  if (!options.isQuiet) writeOutput(options.isJson ? diffJson(facts) : diffText(facts));
}

// The first time there is nothing to compare with.
bool isFirstTime(const CommandLine& options) {
  return options.isAccepted && access(options.baseline.c_str(), F_OK) != 0;
}

void accept(const std::string& baseline, const std::string& bytes) {
  ReplacedFile file(baseline);
  file.write(bytes);
  file.write("\n");
  file.finish();
}

void compareWithBaseline(Run& run, const DiffOptions& terms) {
  const CommandLine& options = run.options();
  const auto after = readOne(run, options.files[0]);
  if (!after) return;
  if (!isFirstTime(options)) {
    const auto before = readOne(run, options.baseline);
    if (!before) return;
    compare(run, terms, before->document, after->document);
  }
  if (options.isAccepted) accept(options.baseline, after->bytes);
}

}  // namespace

void runDiff(Run& run) {
  const CommandLine& options = run.options();
  const DiffOptions terms{options.isAll, run.wantedGroups()};
  if (!options.baseline.empty()) return compareWithBaseline(run, terms);
  const auto before = readOne(run, options.files[0]);
  const auto after = readOne(run, options.files[1]);
  if (before && after) compare(run, terms, before->document, after->document);
}

}  // namespace quenlor::ctl
