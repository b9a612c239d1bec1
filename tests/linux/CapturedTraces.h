// What the code under test traces while this lives.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "log/CcLogWrapper.h"

namespace quenlor::test {

// Traces everything into a directory of its own.
class CapturedTraces {
 public:
  CapturedTraces() : m_directory(makeDirectory()) {
    const std::string properties = m_directory / "DovTrace.properties";
    std::ofstream(properties) << "trace.level = MAX\ntrace.file = trace\n";
    CcLogWrapper::initialize(properties.c_str());
  }
  ~CapturedTraces() {
    CcLogWrapper::initialize(nullptr);
    std::filesystem::remove_all(m_directory);
  }
  CapturedTraces(const CapturedTraces&) = delete;
  CapturedTraces& operator=(const CapturedTraces&) = delete;

  // The records so far, in order: time, kind, source path, function and text in one line each.
  std::vector<std::string> records() const {
    CcLogWrapper::cleanupInstances();
    std::ifstream file(m_directory / "trace");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  // How many records end with the text.
  long count(const std::string& text) const {
    const std::vector<std::string> lines = records();
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.ends_with(text); });
  }

  // The number of the first record that ends with the text, or -1.
  long position(const std::string& text) const {
    const std::vector<std::string> lines = records();
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const std::string& line) { return line.ends_with(text); });
    return found == lines.end() ? -1 : std::distance(lines.begin(), found);
  }

 private:
  static std::filesystem::path makeDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "quenlor-traces-XXXXXX";
    return ::mkdtemp(pattern.data());
  }

  std::filesystem::path m_directory;
};

}  // namespace quenlor::test
