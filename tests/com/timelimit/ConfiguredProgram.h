// A program whose quenlor.conf a test writes.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "config/DovCfg.h"

namespace quenlor::test {

// Sets the configuration for its lifetime; afterwards it is that of the test program again.
class ConfiguredProgram {
 public:
  explicit ConfiguredProgram(const std::string& configuration) {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/quenlor-test-XXXXXX";
    m_directory = ::mkdtemp(pattern.data());
    std::ofstream(m_directory + "/quenlor");
    std::ofstream(m_directory + "/quenlor.conf") << configuration;
    DovCfg::initialize((m_directory + "/quenlor").c_str());
  }
  ~ConfiguredProgram() {
    std::filesystem::remove_all(m_directory);
    DovCfg::initialize(nullptr);
  }
  ConfiguredProgram(const ConfiguredProgram&) = delete;
  ConfiguredProgram& operator=(const ConfiguredProgram&) = delete;

 private:
  std::string m_directory;
};

}  // namespace quenlor::test
