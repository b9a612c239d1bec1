#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "tools/Describe.h"
#include "writers/xmlUtil.h"

namespace quenlor::describe {
namespace {

// Ids and group ids from here on are those of modern sources.
constexpr uint32_t kFirstModernAttribute = 101;
constexpr uint32_t kFirstModernGroup = 1001;

std::vector<std::string> columnsOf(const std::string& line) {
  std::vector<std::string> columns;
  std::istringstream split(line);
  for (std::string column; std::getline(split, column, '\t');) columns.push_back(column);
  columns.resize(11);
  return columns;
}

}  // namespace

FieldTexts readFieldTexts(const char* path) {
  FieldTexts texts;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string> c = columnsOf(line);
    texts[{c[0], c[1]}] = {c[2], c[3], c[4], c[5], c[6], c[7], c[8], c[9], c[10]};
  }
  return texts;
}

std::string elementName(const char* name) {
  const std::unique_ptr<char, decltype(&std::free)> owned(spaceOut(name), &std::free);
  return owned.get();
}

bool isKey(const velGroupDef& group, uint32_t id) { return quenlor::isKey(&group, id) != 0; }

bool isModernGroup(const velGroupDef& group) { return group.id >= kFirstModernGroup; }

bool isModern(const velGroupDef& group, const velAttribDef& attrib) {
  return isModernGroup(group) || attrib.id >= kFirstModernAttribute;
}

}  // namespace quenlor::describe
