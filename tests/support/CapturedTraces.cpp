#include "tests/support/CapturedTraces.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "log/CcLogWrapper.h"

namespace quenlor::test {

std::vector<std::string> readTraces(const std::filesystem::path& path) {
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

CapturedTraces::CapturedTraces(const std::string& level) {
  const std::string properties =
      "trace.level = " + level + "\ntrace.file = trace\ntrace.size = 100000000\n";
  CcLogWrapper::initialize(m_directory.write("DovTrace.properties", properties).c_str());
}

CapturedTraces::~CapturedTraces() { CcLogWrapper::initialize(nullptr); }

std::string CapturedTraces::text() const {
  CcLogWrapper::cleanupInstances();
  return m_directory.read("trace");
}

std::vector<std::string> CapturedTraces::records() const {
  std::istringstream file(text());
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> CapturedTraces::texts() const {
  CcLogWrapper::cleanupInstances();
  return readTraces(m_directory.path("trace"));
}

long CapturedTraces::count(const std::string& text) const {
  const std::vector<std::string> lines = records();
  return std::count_if(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.ends_with(text); });
}

long CapturedTraces::countHolding(const std::string& text) const {
  const std::vector<std::string> lines = records();
  return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
    return line.find(text) != std::string::npos;
  });
}

long CapturedTraces::position(const std::string& text) const {
  const std::vector<std::string> lines = records();
  const auto found = std::find_if(lines.begin(), lines.end(),
                                  [&](const std::string& line) { return line.ends_with(text); });
  return found == lines.end() ? -1 : std::distance(lines.begin(), found);
}

}  // namespace quenlor::test
