// The trace of a scope as text.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "log/CcLogWrapper.h"

namespace quenlor::test {

class TraceCapture {
 public:
  explicit TraceCapture(const char* level = "MAX") {
    std::string pattern = (std::filesystem::temp_directory_path() / "trace-XXXXXX").string();
    m_directory = mkdtemp(pattern.data());
    const std::string properties = m_directory + "/DovTrace.properties";
    std::ofstream(properties) << "trace.file = " << file() << "\ntrace.level = " << level
                              << "\ntrace.size = 100000000\n";
    CcLogWrapper::initialize(properties.c_str());
  }
  ~TraceCapture() {
    CcLogWrapper::initialize(nullptr);
    std::filesystem::remove_all(m_directory);
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  std::string text() const {
    CcLogWrapper::cleanupInstances();
    std::ifstream stream(file());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

  // Records that hold a text.
  int count(const std::string& part) const {
    const std::string all = text();
    int found = 0;
    for (size_t at = all.find(part); at != std::string::npos; at = all.find(part, at + 1)) ++found;
    return found;
  }
  bool has(const std::string& part) const { return count(part) > 0; }

 private:
  std::string file() const { return m_directory + "/trace"; }

  std::string m_directory;
};

}  // namespace quenlor::test
