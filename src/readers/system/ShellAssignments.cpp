#include "readers/system/ShellAssignments.h"

#include <algorithm>

#include "base/Text.h"

namespace quenlor {
namespace {

bool isNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

bool isName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), isNameCharacter);
}

bool isEscapable(char c) { return c == '"' || c == '$' || c == '`' || c == '\\'; }

// The text up to the closing double quote, or to the end where that is missing.
std::string doubleQuoted(std::string_view text) {
  std::string value;
  for (size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && isEscapable(text[i + 1])) ++i;
    value += text[i];
  }
  return value;
}

// A bare value ends at a blank; a backslash takes the next character as it is.
std::string bare(std::string_view text) {
  std::string value;
  for (size_t i = 0; i < text.size() && text[i] != ' ' && text[i] != '\t'; ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) ++i;
    value += text[i];
  }
  return value;
}

std::string unquoted(std::string_view text) {
  if (text.empty()) return {};
  if (text[0] == '"') return doubleQuoted(text.substr(1));
  if (text[0] == '\'') return std::string(text.substr(1, text.find('\'', 1) - 1));
  return bare(text);
}

}  // namespace

std::map<std::string, std::string> parseAssignments(std::string_view text) {
  std::map<std::string, std::string> values;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.substr(0, 7) == "export ") line = trimmed(line.substr(7));
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || !isName(line.substr(0, equals))) continue;
    values[std::string(line.substr(0, equals))] = unquoted(line.substr(equals + 1));
  }
  return values;
}

}  // namespace quenlor
