// Pairs the rows of two tables by their identities.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quenlorctl/diff/DiffRules.h"

namespace quenlor::ctl {

// A row of each side, and what both are told apart by.
struct RowPair {
  PlacedRow before;
  PlacedRow after;
  std::string identity;
};

// Rows of one identity that only one side has, or has more of.
struct RowSurplus {
  std::string identity;
  uint32_t before = 0;  // rows of each side
  uint32_t after = 0;
};

struct RowMatch {
  std::vector<RowPair> pairs;
  std::vector<RowSurplus> surplus;
};

// An identity has ranks: rows are paired by the best that both have. A rank counts where every
// attribute that is of this rank alone is known; what no rank tells apart goes by the last. Equal
// identities are a multiset: equal rows are paired first, the rest in the order of their contents,
// so that the order of the rows never counts.
RowMatch matchRows(const Group& group, const std::vector<PlacedRow>& before,
                   const std::vector<PlacedRow>& after, const DiffTerms& terms);

}  // namespace quenlor::ctl
