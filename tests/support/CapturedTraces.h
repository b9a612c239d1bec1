// What the code under test traces while this lives.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "log/CcLogWrapper.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {

// The records of a trace file in order, without what changes from run to run: "KIND source function
// text", the source path without the start that all have in common.
inline std::vector<std::string> readTraces(const std::filesystem::path& path) {
  static const std::regex kRecord(
      R"(\S+ \S+ (MAX|MID entry|MID exit|MIN) \.\./\.\./\.\./src/invscan/(\S*):\d+ (\S+) (.*))");
  std::vector<std::string> records;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::smatch parts;
    if (std::regex_match(line, parts, kRecord)) {
      records.push_back(parts.str(1) + ' ' + parts.str(2) + ' ' + parts.str(3) + ' ' +
                        parts.str(4));
    } else if (!records.empty()) {
      records.back() += '\n' + line;  // a traced text with a newline in it
    }
  }
  return records;
}

// Traces into a directory of its own: everything, or from the given level on.
class CapturedTraces {
 public:
  explicit CapturedTraces(const std::string& level = "MAX") {
    const std::string properties =
        "trace.level = " + level + "\ntrace.file = trace\ntrace.size = 100000000\n";
    CcLogWrapper::initialize(m_directory.write("DovTrace.properties", properties).c_str());
  }
  ~CapturedTraces() { CcLogWrapper::initialize(nullptr); }
  CapturedTraces(const CapturedTraces&) = delete;
  CapturedTraces& operator=(const CapturedTraces&) = delete;

  // The trace file so far.
  std::string text() const {
    CcLogWrapper::cleanupInstances();
    return m_directory.read("trace");
  }

  // Its lines, in order: time, kind, source path, function and text in one line each.
  std::vector<std::string> records() const {
    std::istringstream file(text());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  // The records so far as readTraces() gives them.
  std::vector<std::string> texts() const {
    CcLogWrapper::cleanupInstances();
    return readTraces(m_directory.path("trace"));
  }

  // How many records end with the text.
  long count(const std::string& text) const {
    const std::vector<std::string> lines = records();
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.ends_with(text); });
  }

  // How many records hold the text.
  long countHolding(const std::string& text) const {
    const std::vector<std::string> lines = records();
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(text) != line.npos; });
  }

  // True when a record holds the text.
  bool contains(const std::string& text) const { return countHolding(text) > 0; }

  // The number of the first record that ends with the text, or -1.
  long position(const std::string& text) const {
    const std::vector<std::string> lines = records();
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const std::string& line) { return line.ends_with(text); });
    return found == lines.end() ? -1 : std::distance(lines.begin(), found);
  }

 private:
  TemporaryDirectory m_directory;
};

}  // namespace quenlor::test
