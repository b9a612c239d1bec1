// The only file that knows the library that reads arguments.
#include "quenlorctl/program/CommandLine.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "quenlorctl/program/Status.h"
#include "quenlorctl/program/Version.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

constexpr const char* kFooter =
    "FILE is XML, gzip or Zstandard of it, several documents one after another, or a tar of "
    "these;\n"
    "\"-\" and no FILE mean standard input. Status: 0 done, same, valid; 1 different, invalid;\n"
    "2 trouble. Manual: quenlorctl(1).";

class Arguments {
 public:
  Arguments() {
    m_app.set_version_flag("--version", std::string("quenlorctl ") + kVersion);
    m_app.require_subcommand(1);
    m_app.footer(kFooter);
    addJson();
    addRows();
    addValidate();
    addDiff();
  }

  CommandLineResult parse(int argc, const char* const* argv) {
    try {
      m_app.parse(argc, argv);
      checkDiff();
    } catch (const CLI::Success& success) {  // help and version
      return {{}, m_app.exit(success)};
    } catch (const CLI::ParseError& error) {
      std::cerr << "quenlorctl: " << cleanText(error.what()) << "\nTry \"quenlorctl --help\".\n";
      return {{}, kTrouble};
    }
    return {m_options, kDone};
  }

 private:
  CLI::App* command(const char* name, const char* what, Command which) {
    CLI::App* sub = m_app.add_subcommand(name, what);
    sub->footer(kFooter);
    sub->callback([this, which] { m_options.command = which; });
    return sub;
  }

  void addFiles(CLI::App* sub) {
    sub->add_option("FILE", m_options.files, "documents")->type_name("");
  }

  void addGroups(CLI::App* sub) {
    sub->add_option("--group", m_options.groups, "only this group; may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false);
  }

  void addJson() {
    CLI::App* sub = command("json", "each document as one JSON object", Command::kJson);
    sub->add_flag("--pretty", m_options.isPretty, "over many lines, indented");
    sub->add_flag("--raw", m_options.isRaw, "values as texts, as the document has them");
    addFiles(sub);
  }

  void addRows() {
    CLI::App* sub = command("rows", "each row as one line", Command::kRows);
    sub->add_option_function<std::string>(
           "--format", [this](const std::string& name) { m_options.isCsv = name == "csv"; },
           "ndjson (default) or csv")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"ndjson", "csv"}));
    addGroups(sub);
    sub->add_option("--split", m_options.splitFolder, "a file per group in this directory")
        ->type_name("DIR");
    sub->add_option("--host", m_options.host, "key of the host, instead of the document's own")
        ->type_name("KEY");
    sub->add_flag("--raw", m_options.isRaw, "csv: no apostrophe in front of formulas");
    addFiles(sub);
  }

  void addValidate() {
    CLI::App* sub = command("validate", "check documents", Command::kValidate);
    sub->add_flag("--quiet", m_options.isQuiet, "only the status");
    addFiles(sub);
  }

  void addDiff() {
    CLI::App* sub = command("diff", "what differs between two documents", Command::kDiff);
    sub->add_flag("--all", m_options.isAll, "values that change by themselves too");
    sub->add_flag("--json", m_options.isJson, "a list of JSON objects");
    sub->add_flag("--quiet", m_options.isQuiet, "only the status");
    addGroups(sub);
    CLI::Option* baseline = sub->add_option("--baseline", m_options.baseline,
                                            "compare with this file, the accepted state");
    baseline->type_name("FILE");
    sub->add_flag("--accept", m_options.isAccepted, "make the new document the baseline")
        ->needs(baseline);
    sub->add_option("FILE", m_options.files, "OLD and NEW; with --baseline only NEW")
        ->type_name("OLD NEW");
  }

  void checkDiff() const {
    if (m_options.command != Command::kDiff) return;
    const size_t wanted = m_options.baseline.empty() ? 2 : 1;
    if (m_options.files.size() != wanted) {
      throw CLI::ValidationError("diff", wanted == 2 ? "two documents are needed: OLD NEW"
                                                     : "one document is needed: NEW");
    }
  }

  CLI::App m_app{"Reads, checks and compares inventory documents of quenlor.", "quenlorctl"};
  CommandLine m_options;
};

}  // namespace

CommandLineResult parseCommandLine(int argc, const char* const* argv) {
  return Arguments().parse(argc, argv);
}

}  // namespace quenlor::ctl
