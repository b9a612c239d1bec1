#include "quenlorctl/json/JsonDocument.h"
#include "quenlorctl/program/OutputFile.h"
#include "quenlorctl/program/Run.h"

namespace quenlor::ctl {

void runJson(Run& run) {
  const JsonOptions options{run.options().isPretty, run.options().isRaw};
  const auto write = [&](const Document& document, const std::string&) {
    writeOutput(jsonDocument(document, options) + '\n');
  };
  readInputs(run.options().files, run.sinks(write));
}

}  // namespace quenlor::ctl
