// Everything traced during its lifetime, at all levels.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "log/CcLogWrapper.h"

namespace quenlor::test {

class TraceCapture {
 public:
  TraceCapture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quenlor-XXXXXX").string();
    m_directory = mkdtemp(pattern.data());
    const std::string properties = m_directory + "/DovTrace.properties";
    std::ofstream(properties) << "trace.file = " << m_directory << "/trace\ntrace.level = MAX\n";
    CcLogWrapper::initialize(properties.c_str());
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;
  ~TraceCapture() {
    CcLogWrapper::initialize(nullptr);
    std::filesystem::remove_all(m_directory);
  }

  std::string text() const {
    CcLogWrapper::cleanupInstances();
    std::ostringstream content;
    content << std::ifstream(m_directory + "/trace", std::ios::binary).rdbuf();
    return content.str();
  }

 private:
  std::string m_directory;
};

}  // namespace quenlor::test
