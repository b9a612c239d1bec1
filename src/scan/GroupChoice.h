// Which groups a modern scan collects, and in which order.
#pragma once

#include <list>
#include <vector>

#include "base/String.h"
#include "catalogue/Catalogue.h"

namespace quenlor {

struct GroupChoice {
  std::list<String> groups;     // each once, in the order named; "Scan Result" last, always
  std::vector<String> unknown;  // names that the catalogue does not have
};

GroupChoice chooseModernGroups(const std::list<String>& named, const velGroupDef* catalogue);

}  // namespace quenlor
