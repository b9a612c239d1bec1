// Prints what the catalogue says in forms that others read: the XML schema of the inventory
// document, the field reference in Markdown, and the list of groups.
//
//   describe_catalogue schema <fields.tsv>
//   describe_catalogue fields <fields.tsv>
//   describe_catalogue groups
#include <cstdio>
#include <cstring>
#include <iostream>

#include "tools/Describe.h"

namespace quenlor::describe {

// Id, name and element name of every group, for tests.
int printGroups() {
  forEachGroup([](const velGroupDef& group) {
    std::cout << group.id << '\t' << group.name << '\t' << elementName(group.name) << '\n';
  });
  return 0;
}

}  // namespace quenlor::describe

int main(int argc, char* argv[]) {
  using namespace quenlor::describe;
  const auto is = [&](int count, const char* form) {
    return argc == count && std::strcmp(argv[1], form) == 0;
  };
  if (is(2, "groups")) return printGroups();
  if (is(3, "schema")) return printSchema(readFieldTexts(argv[2]));
  if (is(3, "fields")) return printFields(readFieldTexts(argv[2]));
  std::fputs("usage: describe_catalogue schema <fields.tsv> | fields <fields.tsv> | groups\n",
             stderr);
  return 2;
}
