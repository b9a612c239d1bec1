#include "readers/cpuid/VtCommand.h"

#include <charconv>
#include <cstring>
#include <system_error>

#include "readers/cpuid/CpuidCommand.h"

namespace quenlor {

namespace {

struct Command {
  const char* name;
  std::unique_ptr<VtExecInfo> (*run)();
};

constexpr Command COMMANDS[] = {{"cpuid", runCpuidCommand}};

const std::string* findValue(const VtExecInfo* result, const char* section, const char* key) {
  if (result == nullptr || key == nullptr) return nullptr;
  const auto found = result->values.find({section == nullptr ? "" : section, key});
  return found == result->values.end() ? nullptr : &found->second;
}

}  // namespace

VtExecInfo* vtExecCommand(const char* command) {
  if (command == nullptr) return nullptr;
  for (const Command& known : COMMANDS) {
    if (std::strcmp(known.name, command) == 0) return known.run().release();
  }
  return nullptr;
}

void vtFreeExecInfo(VtExecInfo* result) { delete result; }

const char* vtGetValue(const VtExecInfo* result, const char* section, const char* key,
                       const char* defaultValue) {
  const std::string* text = findValue(result, section, key);
  return text == nullptr ? defaultValue : text->c_str();
}

int vtGetValue(const VtExecInfo* result, const char* section, const char* key, int defaultValue) {
  const std::string* text = findValue(result, section, key);
  if (text == nullptr) return defaultValue;
  int value = 0;
  const char* end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, value);
  return error == std::errc() && rest == end ? value : defaultValue;
}

}  // namespace quenlor
