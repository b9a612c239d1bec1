// The plain listing of -l with modern sources.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "listing/EntryBuilder.h"

namespace quenlor {

// Attributes of one row by their names.
using RowValues = std::map<std::string, std::string>;

// The rows of pairs that come row after row; each begins with the attribute `first`, which every
// row has.
std::vector<RowValues> rowsOf(const std::vector<NVPair>& pairs, const std::string& first);

// Sum of the drives that are built in, in 2^30 bytes, divided once; nothing when there is none.
std::optional<uint64_t> fixedDriveGigabytes(const std::vector<RowValues>& drives);

// The same entries as the classic listing, one address and host name for each card, and one line on
// standard error for each group that is not complete.
class ModernEntryBuilder : public EntryBuilder {
 public:
  int BuildAllEntries(int) override;

 private:
  void addCards();
  void addDrives();
};

}  // namespace quenlor
