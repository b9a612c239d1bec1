#include "scan/GroupChoice.h"

#include <set>
#include <string>

namespace quenlor {

GroupChoice chooseModernGroups(const std::list<String>& named, const velGroupDef* catalogue) {
  GroupChoice choice;
  std::set<uint32_t> seen{group::kScanResult};
  for (const String& name : named) {
    const velGroupDef* record = findGroup(catalogue, name.c_str());
    if (record == nullptr) {
      choice.unknown.push_back(name);
    } else if (seen.insert(record->id).second) {
      choice.groups.push_back(name);
    }
  }
  const velGroupDef* result = findGroup(catalogue, group::kScanResult);
  if (result != nullptr) choice.groups.emplace_back(result->name);
  return choice;
}

}  // namespace quenlor
