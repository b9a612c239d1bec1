#include "tests/recorded/RecordedScan.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>

#include "config/DovCfg.h"
#include "factory/GroupFactory.h"
#include "groups/createGroup.h"
#include "host/Host.h"
#include "scan/quenlor.h"
#include "tables/Render.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {
namespace {

constexpr const char* kBuildDate = "@BUILD@";

// The program as it is installed: its configuration beside it.
class Installation {
 public:
  explicit Installation(const std::string& configuration) {
    m_directory.write("quenlor.conf", "hwscanner.sources = modern\n" + configuration);
    m_directory.write("quenlor", "");
    std::filesystem::create_symlink(QUENLOR_SOURCE_DIR "/data/DovHWConfig.xml",
                                    m_directory.path("DovHWConfig.xml"));
    GroupFactory& factory = GroupFactory::getInstance();
    factory.setCreator(createGroup);
    factory.setModernCreator(modernGroups);
  }
  ~Installation() {
    GroupFactory& factory = GroupFactory::getInstance();
    factory.chooseSources(ScanSettings{});
    factory.setCreator(nullptr);
    factory.setModernCreator(nullptr);
    DovCfg::initialize(nullptr);
  }
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  int run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), m_directory.path("quenlor"));
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return quenlor(static_cast<int>(arguments.size()), pointers.data());
  }

 private:
  TemporaryDirectory m_directory;
};

void useZoneOfMachine() {
  const char* zone = host().getenv("TZ");
  ::setenv("TZ", zone == nullptr ? "UTC0" : zone, 1);
  ::tzset();
}

void maskBuildDate(std::string& document) {
  const std::string date = getBuildDate();
  if (const size_t at = document.find(date); at != std::string::npos) {
    document.replace(at, date.size(), kBuildDate);
  }
}

}  // namespace

ScanOutput scanHost(Document kind, const std::string& configuration) {
  const Installation installation(configuration);
  std::vector<std::string> arguments;
  if (kind == Document::kMif) arguments.emplace_back("-m");
  if (kind == Document::kList) arguments.emplace_back("-l");
  useZoneOfMachine();
  ScanOutput output;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  output.status = installation.run(std::move(arguments));
  std::fflush(stdout);
  output.errors = testing::internal::GetCapturedStderr();
  output.document = testing::internal::GetCapturedStdout();
  maskBuildDate(output.document);
  return output;
}

std::string schemaErrors(const std::vector<std::string>& documents) {
  const TemporaryDirectory directory;
  std::string files;
  for (const std::string& document : documents) {
    files += " '" + directory.write(std::to_string(files.size()) + ".xml", document) + "'";
  }
  const std::string command =
      "xmllint --noout --schema '" QUENLOR_BINARY_DIR "/tools/quenlor.xsd'" + files + " 2>&1";
  FILE* const lint = ::popen(command.c_str(), "r");
  if (lint == nullptr) return "xmllint cannot be started";
  std::string said;
  std::array<char, 4096> piece{};
  while (const size_t count = std::fread(piece.data(), 1, piece.size(), lint)) {
    said.append(piece.data(), count);
  }
  return ::pclose(lint) == 0 ? std::string() : said;
}

std::ostream& operator<<(std::ostream& stream, const DocumentRow& row) {
  stream << "\n" << row.group;
  for (const auto& [name, value] : row.values) stream << " " << name << "=" << value;
  return stream;
}

// A line each: the start tag of a row, one of its elements, the end tag.
std::vector<DocumentRow> rowsOfDocument(const std::string& xml) {
  std::vector<DocumentRow> rows;
  std::istringstream stream(xml);
  for (std::string line; std::getline(stream, line);) {
    const size_t name = line.find('<') + 1;
    const size_t nameEnd = line.find_first_of(" >", name);
    if (line.starts_with("\t\t<")) {
      const size_t text = line.find('>') + 1;
      rows.back().values[line.substr(name, nameEnd - name)] =
          line.substr(text, line.rfind("</") - text);
    } else if (line.starts_with("\t<") && line[name] != '/') {
      rows.push_back({line.substr(name, nameEnd - name), {}});
    }
  }
  return rows;
}

}  // namespace quenlor::test
