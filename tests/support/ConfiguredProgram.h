// A program whose quenlor.conf a test writes.
#pragma once

#include <string>

#include "config/DovCfg.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {

// Sets the configuration for its lifetime; afterwards it is that of the test program again.
class ConfiguredProgram {
 public:
  explicit ConfiguredProgram(const std::string& configuration) {
    m_directory.write("quenlor.conf", configuration);
    DovCfg::initialize(m_directory.write("quenlor", "").c_str());
  }
  ~ConfiguredProgram() { DovCfg::initialize(nullptr); }
  ConfiguredProgram(const ConfiguredProgram&) = delete;
  ConfiguredProgram& operator=(const ConfiguredProgram&) = delete;

 private:
  TemporaryDirectory m_directory;
};

}  // namespace quenlor::test
