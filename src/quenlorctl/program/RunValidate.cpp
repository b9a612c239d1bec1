#include "quenlorctl/program/OutputFile.h"
#include "quenlorctl/program/Run.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

std::string verdictText(const Document& document) {
  if (document.findings().empty()) return cleanText(document.file() + ": valid") + '\n';
  std::string text;
  for (const Finding& finding : document.findings()) {
    text += cleanText(placedText(document.file(), finding.place, finding.text)) + '\n';
  }
  return text;
}

}  // namespace

void runValidate(Run& run) {
  InputSinks sinks = run.sinks([&](const Document& document, const std::string&) {
    if (!document.findings().empty()) run.worsen(kDifferent);
    if (!run.options().isQuiet) writeOutput(verdictText(document));
  });
  sinks.wantsForeign = true;
  readInputs(run.options().files, sinks);
}

}  // namespace quenlor::ctl
