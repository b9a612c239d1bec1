// Programs of a recorded machine: the few that a scan may start.
#include <cerrno>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "tests/support/RecordedHost.h"

namespace quenlor::test {
namespace {

constexpr const char* kArrow = " => ";

std::string callOf(const char* path, const std::vector<std::string>& arguments) {
  std::string call = path;
  for (size_t i = 1; i < arguments.size(); ++i) call += "|" + arguments[i];
  return call;
}

FILE* streamOf(const std::string& text) {
  FILE* stream = std::tmpfile();
  if (stream == nullptr) return nullptr;
  std::fwrite(text.data(), 1, text.size(), stream);
  std::rewind(stream);
  return stream;
}

}  // namespace

void RecordedHost::takeProgram(const std::string& line) {
  const size_t arrow = line.find(kArrow);
  if (arrow == std::string::npos) throw std::runtime_error("programs.txt, unknown line: " + line);
  std::istringstream result(line.substr(arrow + std::string(kArrow).size()));
  int exitCode = 0;
  std::string output;
  if (!(result >> exitCode)) throw std::runtime_error("programs.txt, no exit code: " + line);
  std::getline(result >> std::ws, output);
  m_programs[line.substr(0, arrow)] = {exitCode << 8, output.empty() ? "" : output + "\n"};
}

std::vector<std::string> RecordedHost::started() const {
  const std::lock_guard lock(m_mutex);
  return m_started;
}

FILE* RecordedHost::popen(const char* commandLine) {
  forbid(std::string("start ") + commandLine, ENOENT);
  return nullptr;
}

FILE* RecordedHost::startProgram(const char* path, const std::vector<std::string>& arguments) {
  const std::string call = callOf(path, arguments);
  const auto found = m_programs.find(call);
  FILE* stream = found == m_programs.end() ? nullptr : streamOf(found->second.output);
  if (stream == nullptr) {
    forbid("start " + call, ENOENT);
    return nullptr;
  }
  const std::lock_guard lock(m_mutex);
  m_started.push_back(call);
  m_running[stream] = found->second.waitStatus;
  return stream;
}

int RecordedHost::pclose(FILE* stream) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_running.find(stream);
  if (found == m_running.end()) return fail(ECHILD);
  const int status = found->second;
  m_running.erase(found);
  std::fclose(stream);
  return status;
}

}  // namespace quenlor::test
