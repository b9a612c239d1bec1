#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <memory>

#include "quenlorctl/program/OutputFile.h"
#include "quenlorctl/program/Run.h"
#include "quenlorctl/rows/RowWriter.h"
#include "quenlorctl/text/CleanText.h"

namespace quenlor::ctl {
namespace {

constexpr mode_t kFolderMode = 0700;

// Where rows go: standard output, or a file per group that is put in its place at the end.
class RowOutput {
 public:
  RowOutput(std::string folder, bool isCsv) : m_folder(std::move(folder)), m_isCsv(isCsv) {
    if (!m_folder.empty() && mkdir(m_folder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
      throw OutputError(m_folder + ": " + std::strerror(errno));
    }
  }

  void write(const Group& group, const std::string& row) {
    auto [place, isNew] = m_files.try_emplace(&group);
    if (isNew && !m_folder.empty()) {
      const std::string name = std::string(group.sql) + (m_isCsv ? ".csv" : ".ndjson");
      place->second = std::make_unique<ReplacedFile>(m_folder + "/" + name);
    }
    if (isNew && m_isCsv) writeHeader(group, place->second.get());
    put(place->second.get(), row);
  }

  void finish() {
    for (const auto& [group, file] : m_files) {
      if (file) file->finish();
    }
  }

 private:
  void writeHeader(const Group& group, ReplacedFile* file) {
    std::string header;
    appendCsvHeader(header, group);
    put(file, header);
  }

  static void put(ReplacedFile* file, const std::string& text) {
    if (file != nullptr) {
      file->write(text);
    } else {
      writeOutput(text);
    }
  }

  std::string m_folder;
  bool m_isCsv;
  std::map<const Group*, std::unique_ptr<ReplacedFile>> m_files;
};

class RowCommand {
 public:
  explicit RowCommand(const CommandLine& options, std::vector<const Group*> groups)
      : m_options(options),
        m_groups(std::move(groups)),
        m_host(validUtf8(options.host)),
        m_output(options.splitFolder, options.isCsv) {}

  void write(const Document& document) {
    const RowHead head = RowHead::of(document, m_host);
    for (const Document::Row& row : document.rows()) {
      if (row.group != nullptr && isAmong(m_groups, *row.group)) writeRow(head, document, row);
    }
  }

  void finish() { m_output.finish(); }

 private:
  void writeRow(const RowHead& head, const Document& document, const Document::Row& row) {
    m_line.clear();
    if (m_options.isCsv) {
      appendCsv(m_line, head, document, row, m_options.isRaw);
    } else {
      appendNdjson(m_line, head, document, row);
    }
    m_output.write(*row.group, m_line);
  }

  const CommandLine& m_options;
  std::vector<const Group*> m_groups;
  std::string m_host;
  RowOutput m_output;
  std::string m_line;
};

}  // namespace

void runRows(Run& run) {
  const CommandLine& options = run.options();
  const std::vector<const Group*> groups = run.wantedGroups();
  // Each group has columns of its own.
  if (options.isCsv && options.splitFolder.empty() && groups.size() != 1) {
    throw UsageError("csv holds one group: name it with --group, or use --split");
  }
  RowCommand command(options, groups);
  readInputs(options.files, run.sinks([&](const Document& document, const std::string&) {
    command.write(document);
  }));
  command.finish();
}

}  // namespace quenlor::ctl
